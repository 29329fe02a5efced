#include "host/geometry/VelmoMergeCurves.h"
#include "support/Curves.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace {

using tarquil::test::Polyline;

struct Input {
    std::vector<std::unique_ptr<GK_Curve>> owned;
    GK_SimpleArray<GK_Curve*> curves;

    int Add(GK_Curve* c) {
        owned.emplace_back(c);
        curves.Append(c);
        return curves.Count() - 1;
    }
    int Line(GK_3dPoint a, GK_3dPoint b) { return Add(new GK_LineCurve(a, b)); }
};

struct Output {
    GK_SimpleArray<GK_Curve*> curves;
    GK_SimpleArray<int> indices;

    ~Output() { Clear(); }
    void Clear() {
        for (GK_Curve* c : curves)
            delete c;
        curves.Empty();
        indices.Empty();
    }
    int Merge(const Input& in, double tolerance, int flags = 0) {
        Clear();
        return VelmoMergeCurves(in.curves, curves, tolerance, flags, &indices);
    }
    std::vector<int> Indices() const { return {indices.begin(), indices.end()}; }
};

std::vector<GK_3dPoint> Vertices(const GK_Curve* c) {
    GK_SimpleArray<GK_3dPoint> pts;
    c->IsPolyline(&pts);
    return {pts.begin(), pts.end()};
}

} // namespace

TEST(MergeCurves, JoinsForwardAndBackwardReversingWhereNeeded) {
    Input in;
    in.Line({1, 0, 0}, {2, 0, 0});                           // seed
    in.Add(Polyline({{3, 0, 0}, {2.5, 0.5, 0}, {2, 0, 0}})); // after the seed, reversed
    in.Line({0, 0, 0}, {1, 0, 0});                           // before the seed, as it is
    in.Line({0, 0, 0}, {-1, 0, 0});                          // before that, reversed
    in.Line({10, 10, 0}, {11, 10, 0});                       // alone
    Output out;
    ASSERT_EQ(out.Merge(in, 1e-9), 1);
    ASSERT_EQ(out.curves.Count(), 2);
    EXPECT_EQ(out.Indices(), (std::vector<int>{0, 4}));
    auto* chain = dynamic_cast<GK_PolyCurve*>(out.curves[0]);
    ASSERT_NE(chain, nullptr);
    EXPECT_EQ(chain->Count(), 4);
    EXPECT_EQ(Vertices(chain),
              (std::vector<GK_3dPoint>{
                  {-1, 0, 0}, {0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2.5, 0.5, 0}, {3, 0, 0}}));
    EXPECT_TRUE(chain->IsValid());
    // The lone curve is a copy, and the input is left as it was.
    EXPECT_NE(out.curves[1], in.curves[4]);
    EXPECT_EQ(Vertices(out.curves[1]), Vertices(in.curves[4]));
    EXPECT_EQ(in.curves[1]->PointAtStart(), GK_3dPoint(3, 0, 0));
    EXPECT_EQ(in.curves[3]->PointAtStart(), GK_3dPoint(0, 0, 0));
}

TEST(MergeCurves, ToleranceIsEuclideanAndInclusive) {
    Input in;
    in.Line({0, 0, 0}, {1, 0, 0});
    in.Line({1.75, 1, 0}, {3, 1, 0}); // its start is 1.25 from the first line's end
    Output out;
    EXPECT_EQ(out.Merge(Input{}, 1.0), 0);
    EXPECT_EQ(out.Merge(in, 1.25), 1);
    EXPECT_EQ(out.curves.Count(), 1);
    EXPECT_EQ(out.Merge(in, 1.2499999), 0);
    EXPECT_EQ(out.curves.Count(), 0);
    EXPECT_EQ(out.indices.Count(), 0);
    EXPECT_EQ(out.Merge(in, 1.1), 0); // within 1.1 on each axis, but not in distance

    Input exact;
    exact.Line({0, 0, 0}, {1, 0, 0});
    exact.Line({1, 0, 0}, {2, 0, 0});
    exact.Line({2 + 1e-12, 0, 0}, {3, 0, 0});
    EXPECT_EQ(out.Merge(exact, 0.0), 1);
    EXPECT_EQ(out.curves.Count(), 2);
    EXPECT_EQ(out.Merge(exact, -1.0), 1); // no tolerance at all means exact too
    EXPECT_EQ(out.curves.Count(), 2);
    EXPECT_EQ(out.Merge(exact, 1e-9, 1), 0); // flags are reserved
    EXPECT_EQ(out.Merge(exact, 1e-9), 1);
    EXPECT_EQ(out.curves.Count(), 1);
}

TEST(MergeCurves, ClosedLoopsTakeNothingFurther) {
    Input in;
    in.Line({0, 0, 0}, {1, 0, 0});
    in.Line({1, 1, 0}, {1, 0, 0});
    in.Line({1, 1, 0}, {0, 1, 0});
    in.Line({0, 0, 0}, {0, 1, 0});
    in.Line({0, 0, 0}, {-1, -1, 0}); // leaves the loop where it closes
    Output out;
    ASSERT_EQ(out.Merge(in, 1e-6), 1);
    ASSERT_EQ(out.curves.Count(), 2);
    EXPECT_EQ(out.Indices(), (std::vector<int>{0, 4}));
    EXPECT_TRUE(out.curves[0]->IsClosed());
    EXPECT_EQ(Vertices(out.curves[0]).size(), 5u);
    EXPECT_EQ(Vertices(out.curves[1]), Vertices(in.curves[4]));

    // A curve that is closed already is complete; nothing joins onto it.
    Input loop;
    loop.Add(Polyline({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}}));
    loop.Line({0, 0, 0}, {-1, 0, 0});
    EXPECT_EQ(out.Merge(loop, 1e-6), 0);
}

TEST(MergeCurves, JunctionTakesTheNearestEndThenTheLowestIndex) {
    Input in;
    in.Line({0, 0, 0}, {1, 0, 0});
    in.Line({1.05, 0, 0}, {2, 5, 0});
    in.Line({1.02, 0, 0}, {2, -5, 0});
    Output out;
    ASSERT_EQ(out.Merge(in, 0.1), 1);
    ASSERT_EQ(out.curves.Count(), 2);
    EXPECT_EQ(out.curves[0]->PointAtEnd(), GK_3dPoint(2, -5, 0));
    EXPECT_EQ(out.Indices(), (std::vector<int>{0, 1}));

    Input tie;
    tie.Line({0, 0, 0}, {1, 0, 0});
    tie.Line({5, 5, 0}, {1, 0.5, 0});   // its end, 0.5 away
    tie.Line({1, -0.5, 0}, {5, -5, 0}); // its start, 0.5 away too
    ASSERT_EQ(out.Merge(tie, 0.6), 1);
    EXPECT_EQ(out.curves[0]->PointAtEnd(), GK_3dPoint(5, 5, 0));
    EXPECT_EQ(out.Indices(), (std::vector<int>{0, 2}));
}

TEST(MergeCurves, FanFromOnePointPairsByIndex) {
    Input in;
    const GK_3dPoint centre(2, 2, 0);
    for (int i = 0; i < 7; ++i) {
        const GK_3dPoint outer(2 + std::cos(i), 2 + std::sin(i), 0);
        if (i == 3)
            in.Line(outer, centre);
        else
            in.Line(centre, outer);
    }
    Output out;
    ASSERT_EQ(out.Merge(in, 1e-6), 1);
    EXPECT_EQ(out.Indices(), (std::vector<int>{0, 2, 4, 6}));
    ASSERT_EQ(out.curves.Count(), 4);
    EXPECT_EQ(out.curves[0]->PointAtStart(), in.curves[1]->PointAtEnd());
    EXPECT_EQ(out.curves[1]->PointAtStart(), in.curves[3]->PointAtStart());
    EXPECT_EQ(out.curves[2]->PointAtStart(), in.curves[5]->PointAtEnd());
    EXPECT_EQ(Vertices(out.curves[3]), Vertices(in.curves[6]));
}

TEST(MergeCurves, InvalidCurvesPassThroughAlone) {
    Input in;
    in.Line({0, 0, 0}, {1, 0, 0});
    in.Line({1, 0, 0}, {1, 0, 0}); // zero length, right on the joint
    const double nan = std::numeric_limits<double>::quiet_NaN();
    in.Add(Polyline({{1, 0, 0}, {nan, 0, 0}}));
    in.Add(nullptr);
    in.Line({1, 0, 0}, {2, 0, 0});
    Output out;
    ASSERT_EQ(out.Merge(in, 1e-6), 1);
    ASSERT_EQ(out.curves.Count(), 3);
    EXPECT_EQ(out.Indices(), (std::vector<int>{0, 1, 2}));
    const auto* chain = dynamic_cast<const GK_PolyCurve*>(out.curves[0]);
    ASSERT_NE(chain, nullptr);
    EXPECT_EQ(chain->Count(), 2);
    EXPECT_FALSE(out.curves[1]->IsValid());
    EXPECT_FALSE(out.curves[2]->IsValid());
}

TEST(MergeCurves, LongShuffledChainsAreRebuilt) {
    constexpr int kChains = 3, kSegments = 3000;
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> wiggle(-0.02, 0.02);
    std::vector<std::pair<GK_3dPoint, GK_3dPoint>> segs;
    for (int c = 0; c < kChains; ++c) {
        GK_3dPoint p(0, c, 0);
        for (int s = 0; s < kSegments; ++s) {
            const GK_3dPoint q(p.x + 0.1, c + wiggle(rng), 0);
            segs.emplace_back(p, q);
            p = q;
        }
    }
    std::shuffle(segs.begin(), segs.end(), rng);
    Input in;
    std::vector<int> firstOfRow(kChains, -1); // the seed each row's chain must start from
    for (const auto& [a, b] : segs) {
        const int i = rng() % 3 == 0 ? in.Line(b, a) : in.Line(a, b);
        const int row = static_cast<int>(std::lround(a.y));
        if (firstOfRow[row] < 0)
            firstOfRow[row] = i;
    }

    Output out;
    ASSERT_EQ(out.Merge(in, 1e-9), 1);
    ASSERT_EQ(out.curves.Count(), kChains);
    for (int k = 0; k < kChains; ++k) {
        const auto* chain = dynamic_cast<const GK_PolyCurve*>(out.curves[k]);
        ASSERT_NE(chain, nullptr);
        ASSERT_EQ(chain->Count(), kSegments);
        for (int s = 1; s < kSegments; ++s)
            ASSERT_EQ(chain->SegmentCurve(s - 1)->PointAtEnd(),
                      chain->SegmentCurve(s)->PointAtStart());
        EXPECT_EQ(out.indices[k], firstOfRow[std::lround(chain->PointAtStart().y)]);
    }
}

TEST(MergeCurves, GapsInEveryDirectionJoin) {
    // Pairs whose gap is just under the tolerance, in random directions: wherever the spatial
    // index draws its cell boundaries, some pairs straddle them.
    constexpr int kPairs = 2000;
    constexpr double kTol = 0.01;
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    Input in;
    for (int i = 0; i < kPairs; ++i) {
        const GK_3dPoint p(i * 1.0 + 0.123, (i % 7) * 0.37, (i % 3) * 0.11);
        GK_3dVector gap(unit(rng), unit(rng), unit(rng));
        gap = gap * (0.95 * kTol / gap.Length());
        in.Line(p - GK_3dVector(0.3, 0.1, 0), p);
        in.Line(p + gap, p + gap + GK_3dVector(0.2, 0.3, 0));
    }
    Output out;
    ASSERT_EQ(out.Merge(in, kTol), 1);
    EXPECT_EQ(out.curves.Count(), kPairs);
    int joined = 0;
    for (const GK_Curve* c : out.curves)
        if (const auto* chain = dynamic_cast<const GK_PolyCurve*>(c); chain && chain->Count() == 2)
            ++joined;
    EXPECT_EQ(joined, kPairs);
}

TEST(MergeCurves, ExtremeCoordinatesAndTolerances) {
    // Distances whose squares overflow or underflow are still measured and ranked.
    Input huge;
    huge.Line({0, 0, 0}, {1e200, 0, 0});
    huge.Line({1e200 + 6e199, 0, 0}, {3e200, 0, 0});
    huge.Line({1e200, 3e199, 0}, {1e200, 2e200, 0});
    Output big;
    ASSERT_EQ(big.Merge(huge, 1e200), 1);
    EXPECT_EQ(big.curves[0]->PointAtEnd(), GK_3dPoint(1e200, 2e200, 0));
    Input tiny;
    tiny.Line({0, 1, 0}, {0, 0, 0});
    tiny.Line({6e-201, 0, 0}, {5, 0, 0});
    tiny.Line({0, 3e-201, 0}, {0, -5, 0});
    Output small;
    ASSERT_EQ(small.Merge(tiny, 1e-200), 1);
    EXPECT_EQ(small.curves[0]->PointAtEnd(), GK_3dPoint(0, -5, 0));

    Input in;
    in.Line({-1e308, 0, 0}, {0, 0, 0});
    in.Line({0, 0, 0}, {1e308, 1e308, -1e308});
    in.Line({1e-300, 0, 5}, {1, 1, 5});
    in.Line({1e-300, 0, 5}, {-1, 1, 5});
    Output out;
    ASSERT_EQ(out.Merge(in, 0.0), 1);
    EXPECT_EQ(out.curves.Count(), 2);
    ASSERT_EQ(out.Merge(in, std::numeric_limits<double>::quiet_NaN()), 1);
    EXPECT_EQ(out.curves.Count(), 2);
    // Even a vast tolerance keeps the two groups apart, as their gap overflows it.
    ASSERT_EQ(out.Merge(in, 1e300), 1);
    EXPECT_EQ(out.curves.Count(), 2);
    ASSERT_EQ(out.Merge(in, std::numeric_limits<double>::infinity()), 1);
    EXPECT_EQ(out.curves.Count(), 2);
}
