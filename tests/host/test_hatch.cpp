#include "host/geometry/GK_Hatch.h"
#include "host/geometry/VelmoCreateHatches.h"
#include "support/Curves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

using Curves = std::vector<std::unique_ptr<GK_Curve>>;
using tarquil::test::Polyline;
using tarquil::test::Square;

GK_NurbsCurve* Bezier(const GK_3dPoint& a, const GK_3dPoint& b, const GK_3dPoint& c,
                      const GK_3dPoint& d) {
    auto* n = new GK_NurbsCurve(3, false, 4, 4);
    n->MakeClampedUniformKnotVector();
    const GK_3dPoint cv[4] = {a, b, c, d};
    for (int i = 0; i < 4; ++i)
        n->SetCV(i, cv[i]);
    return n;
}

// A circle as four cubic Beziers; `gap` shortens the last one so the ends miss by about it.
GK_PolyCurve* Circle(double cx, double cy, double r, double z, double gap = 0.0) {
    const double k = 0.5522847498 * r;
    auto* c = new GK_PolyCurve;
    const GK_3dPoint e{cx + r, cy, z}, n{cx, cy + r, z}, w{cx - r, cy, z}, s{cx, cy - r, z};
    c->Append(Bezier(e, {cx + r, cy + k, z}, {cx + k, cy + r, z}, n));
    c->Append(Bezier(n, {cx - k, cy + r, z}, {cx - r, cy + k, z}, w));
    c->Append(Bezier(w, {cx - r, cy - k, z}, {cx - k, cy - r, z}, s));
    c->Append(Bezier(s, {cx + k, cy - r, z}, {cx + r, cy - k, z}, {cx + r, cy - gap, z}));
    return c;
}

struct Result {
    bool ok = false;
    std::vector<std::unique_ptr<GK_Hatch>> hatches;
};

Result Make(const Curves& curves, double tol = 0.01) {
    CArgsVelmoHatch args;
    for (const auto& c : curves)
        args.CurveList().Append(c.get());
    args.SetPatternIndex(3);
    args.SetPatternRotation(0.5);
    args.SetPatternScale(2.0);
    GK_SimpleArray<GK_Hatch*> out;
    out.Append(nullptr); // stands for hatches the caller already has, which stay
    Result r;
    r.ok = VelmoCreateHatches(args, tol, out);
    EXPECT_EQ(out[0], nullptr);
    for (int i = 1; i < out.Count(); ++i)
        r.hatches.emplace_back(out[i]);
    return r;
}

Curves List(std::initializer_list<GK_Curve*> curves) {
    Curves list;
    for (GK_Curve* c : curves)
        list.emplace_back(c);
    return list;
}

// Loop types of a hatch, as a string of 'O' and 'I'.
std::string Types(const GK_Hatch& h) {
    std::string s;
    for (int i = 0; i < h.LoopCount(); ++i)
        s += h.Loop(i)->Type() == GK_HatchLoop::ltOuter ? 'O' : 'I';
    return s;
}

double MinX(const GK_Hatch& h, int loop) {
    return h.Loop(loop)->Curve()->BoundingBox().Min().x;
}

} // namespace

TEST(CreateHatches, OuterLoopsTakeTheLoopsDirectlyInsideAsHoles) {
    {
        const Curves c = List({Square(0, 0, 1)});
        const Result r = Make(c);
        ASSERT_TRUE(r.ok);
        ASSERT_EQ(r.hatches.size(), 1u);
        const GK_Hatch& h = *r.hatches[0];
        EXPECT_TRUE(h.IsValid());
        EXPECT_EQ(Types(h), "O");
        EXPECT_NE(h.Loop(0)->Curve(), c[0].get()); // a copy, not the argument
        EXPECT_EQ(h.PatternIndex(), 3);
        EXPECT_EQ(h.PatternRotation(), 0.5);
        EXPECT_EQ(h.PatternScale(), 2.0);
    }
    {
        // Holes before their outer loop in the list; the outer still comes first.
        const Curves c = List({Square(1, 1, 2), Square(5, 5, 2), Square(0, 0, 10)});
        const Result r = Make(c);
        ASSERT_EQ(r.hatches.size(), 1u);
        EXPECT_EQ(Types(*r.hatches[0]), "OII");
        EXPECT_EQ(MinX(*r.hatches[0], 0), 0.0);
        EXPECT_EQ(MinX(*r.hatches[0], 1), 1.0);
        EXPECT_EQ(MinX(*r.hatches[0], 2), 5.0);
    }
    {
        // Square in a hole in a square, with a hole of its own; and a disjoint square.
        const Curves c = List({Square(0, 0, 10), Square(2, 2, 6), Square(3, 3, 4), Square(4, 4, 1),
                               Square(20, 0, 1)});
        const Result r = Make(c);
        ASSERT_EQ(r.hatches.size(), 3u);
        EXPECT_EQ(Types(*r.hatches[0]), "OI");
        EXPECT_EQ(MinX(*r.hatches[0], 1), 2.0);
        EXPECT_EQ(Types(*r.hatches[1]), "OI");
        EXPECT_EQ(MinX(*r.hatches[1], 0), 3.0);
        EXPECT_EQ(MinX(*r.hatches[1], 1), 4.0);
        EXPECT_EQ(Types(*r.hatches[2]), "O");
    }
}

TEST(CreateHatches, CurvedLoopsAreClassifiedByTheirShape) {
    // The small square at the corner is inside the circle's box but outside the circle.
    const Curves c = List({Circle(0, 0, 10, 2.0), Square(-1, -1, 2, 2.0), Square(8, 8, 1, 2.0)});
    const Result r = Make(c);
    ASSERT_EQ(r.hatches.size(), 2u);
    const GK_Hatch& h = *r.hatches[0];
    EXPECT_TRUE(h.IsValid());
    EXPECT_EQ(Types(h), "OI");
    EXPECT_NE(dynamic_cast<const GK_PolyCurve*>(h.Loop(0)->Curve()), nullptr);
    EXPECT_EQ(h.Plane().origin.z, 2.0);
    EXPECT_EQ(h.Plane().zaxis, GK_3dVector(0, 0, 1));
    EXPECT_EQ(Types(*r.hatches[1]), "O");
    EXPECT_EQ(MinX(*r.hatches[1], 0), 8.0);
}

TEST(CreateHatches, UnusableCurvesAreLeftOut) {
    auto refused = [](const Curves& c) {
        const Result r = Make(c);
        return !r.ok && r.hatches.empty();
    };
    EXPECT_TRUE(refused(List({Polyline({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}})})));
    EXPECT_TRUE(refused(List({Polyline({{0, 0, 0}, {1, 0, 0}, {1, 1, 1}, {0, 1, 0}, {0, 0, 0}})})));
    EXPECT_TRUE(refused(List({Polyline({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 0, 0}})})));
    EXPECT_TRUE(refused(List({nullptr})));
    EXPECT_TRUE(refused(List({})));

    // Ends 0.02 apart with a tolerance of 0.01: open. A square off the first one's plane
    // is left out, the rest go on.
    const Curves c = List({Polyline({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 0.02, 0}}),
                           Square(0, 0, 1, 0.0), Square(0, 0, 1, 0.5), Square(2, 0, 1, 0.005)});
    const Result r = Make(c);
    ASSERT_EQ(r.hatches.size(), 2u);
    EXPECT_EQ(MinX(*r.hatches[1], 0), 2.0);
    // Put into the plane.
    EXPECT_EQ(r.hatches[1]->BoundingBox().Max().z, 0.0);
}

TEST(CreateHatches, NearlyClosedLoopsAreClosedExactly) {
    const Curves c =
        List({Polyline({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0.004, 0.003, 0}}),
              Circle(10, 0, 2, 0, 0.008)});
    const Result r = Make(c);
    ASSERT_EQ(r.hatches.size(), 2u);
    for (const auto& h : r.hatches) {
        EXPECT_TRUE(h->IsValid());
        EXPECT_TRUE(h->Loop(0)->Curve()->IsClosed());
    }
    EXPECT_FALSE(c[1]->IsClosed()); // the arguments are left alone
}

TEST(CreateHatches, TiltedLoopsGetTheirOwnPlane) {
    // A square with a hole, turned 30 degrees about the x axis, slightly off plane.
    const double cs = std::cos(0.5235987755982988), sn = std::sin(0.5235987755982988);
    auto tilted = [&](double x, double y, double s, double off) {
        auto at = [&](double u, double v) { return GK_3dPoint(u, v * cs, v * sn + off); };
        return Polyline({at(x, y), at(x + s, y), at(x + s, y + s), at(x, y + s), at(x, y)});
    };
    const Curves c = List({tilted(0, 0, 10, 0.0), tilted(2, 2, 2, 0.004)});
    const Result r = Make(c);
    ASSERT_EQ(r.hatches.size(), 1u);
    const GK_Hatch& h = *r.hatches[0];
    EXPECT_TRUE(h.IsValid());
    EXPECT_EQ(Types(h), "OI");
    EXPECT_NEAR(h.Plane().zaxis.y, -sn, 1e-12);
    EXPECT_NEAR(h.Plane().zaxis.z, cs, 1e-12);
}

TEST(Hatch, TransformBoxCopyAndLoops) {
    const Curves c = List({Square(0, 0, 2), Circle(1, 1, 0.5, 0)});
    Result r = Make(c);
    ASSERT_EQ(r.hatches.size(), 1u);
    GK_Hatch& h = *r.hatches[0];
    EXPECT_EQ(h.BoundingBox().Min(), GK_3dPoint(0, 0, 0));
    EXPECT_EQ(h.BoundingBox().Max(), GK_3dPoint(2, 2, 0));

    std::unique_ptr<GK_Hatch> copy(static_cast<GK_Hatch*>(h.Duplicate()));
    EXPECT_NE(copy->Loop(0)->Curve(), h.Loop(0)->Curve());

    ASSERT_TRUE(h.Scale(3.0));
    ASSERT_TRUE(h.Translate({1, 0, 5}));
    EXPECT_TRUE(h.IsValid());
    EXPECT_EQ(h.PatternScale(), 6.0);
    EXPECT_EQ(h.Plane().origin, GK_3dPoint(1, 0, 5));
    EXPECT_EQ(h.BoundingBox().Max(), GK_3dPoint(7, 6, 5));
    EXPECT_EQ(copy->BoundingBox().Max(), GK_3dPoint(2, 2, 0)); // deep copy untouched
    EXPECT_EQ(copy->PatternScale(), 2.0);

    // A stretch would need a sheared pattern: refused, nothing changed.
    EXPECT_FALSE(h.Transform(GK_Xform::Affine2d(2, 0, 0, 1, 0, 0)));
    EXPECT_EQ(h.BoundingBox().Max(), GK_3dPoint(7, 6, 5));

    std::unique_ptr<GK_Curve> loop(h.LoopCurve3d(1));
    ASSERT_TRUE(loop);
    EXPECT_TRUE(loop->IsClosed());
    EXPECT_NEAR(loop->BoundingBox().Min().x, 2.5, 1e-9);
    EXPECT_EQ(h.LoopCurve3d(2), nullptr);
    EXPECT_EQ(h.LoopCurve3d(-1), nullptr);

    // What a hatch keeps of its validity and box goes when a loop comes.
    GK_Hatch grown;
    EXPECT_FALSE(grown.IsValid());
    EXPECT_FALSE(grown.BoundingBox().IsValid());
    grown.AddLoop(new GK_HatchLoop(Square(0, 0, 1), GK_HatchLoop::ltOuter));
    EXPECT_TRUE(grown.IsValid());
    EXPECT_EQ(grown.BoundingBox().Max(), GK_3dPoint(1, 1, 0));
    GK_Hatch holeFirst;
    holeFirst.AddLoop(new GK_HatchLoop(Square(0, 0, 1), GK_HatchLoop::ltInner));
    EXPECT_FALSE(holeFirst.IsValid());
    GK_Hatch offPlane;
    offPlane.AddLoop(new GK_HatchLoop(Square(0, 0, 1, 0.001), GK_HatchLoop::ltOuter));
    EXPECT_FALSE(offPlane.IsValid());
    offPlane.SetPlane(GK_Plane({0, 0, 0.001}, {0, 0, 1}));
    EXPECT_TRUE(offPlane.IsValid());
}

TEST(Curves, IsLinear) {
    EXPECT_TRUE(GK_LineCurve({0, 0, 0}, {5, 1, 0}).IsLinear(0.0));
    std::unique_ptr<GK_Curve> bump(Polyline({{0, 0, 0}, {1, 0.1, 0}, {2, 0, 0}}));
    EXPECT_TRUE(bump->IsLinear(0.1));
    EXPECT_FALSE(bump->IsLinear(0.09));
    // Ends that meet: linear only as a point.
    std::unique_ptr<GK_Curve> speck(Polyline({{0, 0, 0}, {1e-11, 0, 0}, {0, 0, 0}}));
    EXPECT_TRUE(speck->IsLinear(2.3283064365386963e-10));
    std::unique_ptr<GK_Curve> square(Square(0, 0, 1));
    EXPECT_FALSE(square->IsLinear(0.5));
    EXPECT_TRUE(square->IsLinear(1.5));
    // Control points off the line by 1, the curve by 0.2887 at most.
    std::unique_ptr<GK_Curve> wave(Bezier({0, 0, 0}, {1, 1, 0}, {2, -1, 0}, {3, 0, 0}));
    EXPECT_TRUE(wave->IsLinear(0.29));
    EXPECT_FALSE(wave->IsLinear(0.28));
    // A chain is measured against its own chord, not segment by segment.
    GK_PolyCurve kink;
    kink.Append(new GK_LineCurve({0, 0, 0}, {1, 0, 0}));
    kink.Append(new GK_LineCurve({1, 0, 0}, {2, 0.5, 0}));
    EXPECT_TRUE(kink.IsLinear(0.25));
    EXPECT_FALSE(kink.IsLinear(0.2));
}

TEST(Curves, RemoveShortSegments) {
    GK_PolylineCurve p;
    for (double x : {0.0, 0.1, 1.0, 1.05, 2.0, 2.02})
        p.m_pline.Append({x, 0, 0});
    for (int i = 0; i < 6; ++i)
        p.m_t.Append(i);
    GK_PolylineCurve q = p;
    EXPECT_EQ(p.RemoveShortSegments(0.5), 3);
    ASSERT_EQ(p.PointCount(), 3);
    EXPECT_EQ(p.m_pline[1].x, 1.0);
    EXPECT_EQ(p.m_pline[2].x, 2.02);
    EXPECT_EQ(p.Domain().t1, 5.0);
    EXPECT_EQ(p.PointAt(2.0), GK_3dPoint(1, 0, 0)); // kept points keep their parameters
    EXPECT_TRUE(p.IsValid());

    EXPECT_EQ(q.RemoveShortSegments(10.0), 4); // never fewer than the two ends
    EXPECT_EQ(q.PointCount(), 2);
    EXPECT_EQ(q.RemoveShortSegments(0.0), 0);

    std::unique_ptr<GK_PolylineCurve> sq(Polyline(
        {{0, 0, 0}, {1, 0, 0}, {1, 1e-6, 0}, {1, 1, 0}, {0, 1, 0}, {0, 1e-7, 0}, {0, 0, 0}}));
    sq->m_t.Empty(); // parameters by index
    EXPECT_EQ(sq->RemoveShortSegments(1e-3), 2);
    EXPECT_EQ(sq->PointCount(), 5);
    EXPECT_TRUE(sq->m_t.IsEmpty());
    EXPECT_TRUE(sq->IsClosed());
}
