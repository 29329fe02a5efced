// The clip index against the walk over every edge, which is the reference: random clips and
// segments on a coarse grid, so that vertices fall on segments, edges run along them and
// horizontal edges meet the winding rays, and points strewn along a segment's line with
// rounding, so that crossings whose parameters cannot be computed occur as well.
#include "output/PathClip.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

struct Case {
    std::vector<PathElement> clip;
    double ax, ay, bx, by;
};

std::vector<std::uint64_t> Bits(const std::vector<double>& values) {
    std::vector<std::uint64_t> bits;
    for (double v : values)
        bits.push_back(std::bit_cast<std::uint64_t>(v));
    return bits;
}

// What the cases hit, counted the way the walk sees them, so that the test shows it reached
// the degenerate cases it is about.
struct Coverage {
    int vertexOnSegment = 0;  // a vertex exactly on the segment's line, inside its box
    int collinearEdge = 0;    // an edge with both ends exactly on the line
    int standing = 0;         // a crossing whose parameters cannot be computed
    int pieces = 0;           // segments cut into more than one inside piece
    int onHorizontalEdge = 0; // winding queries on a horizontal edge
    int banded = 0, unbanded = 0;

    void Note(const Case& c, const std::vector<double>& pairs) {
        const double dx = c.bx - c.ax, dy = c.by - c.ay;
        const auto side = [&](const PathElement& p) {
            const double cross = dx * (p.y - c.ay) - dy * (p.x - c.ax);
            return (cross > 0.0) - (cross < 0.0);
        };
        for (std::size_t i = 0; i < c.clip.size(); ++i) {
            const PathElement& p = c.clip[i];
            if (side(p) == 0 && p.x >= std::min(c.ax, c.bx) && p.x <= std::max(c.ax, c.bx) &&
                p.y >= std::min(c.ay, c.by) && p.y <= std::max(c.ay, c.by))
                ++vertexOnSegment;
            if (i == 0)
                continue;
            const PathElement& q = c.clip[i - 1];
            if (side(p) == 0 && side(q) == 0 && !(p.x == q.x && p.y == q.y))
                ++collinearEdge;
            if (side(p) != side(q) && (p.x - q.x) * dy - (p.y - q.y) * dx == 0.0)
                ++standing;
        }
        pieces += pairs.size() > 2;
    }
};

class ClipCases {
public:
    explicit ClipCases(std::uint64_t seed) : m_random(seed) {}

    Case Next() {
        Case c;
        const double scale = Pick({1.0, 1.0, 1.0, 1e-3, 7.0 / 3.0, 1e9});
        // The segment first, so that the clip can be strewn along its line.
        c.ax = Grid() * scale;
        c.ay = Grid() * scale;
        c.bx = Grid() * scale;
        c.by = Grid() * scale;
        // Now and then a direction no grid holds, along which points round off the line, and
        // with it a clip that runs along the line far from the segment, where rounding alone
        // decides the crossings.
        const bool alongLine = Chance(3);
        double along = 30.0;
        if (alongLine || Chance(8)) {
            c.bx = c.ax + Real() * scale;
            c.by = c.ay + Real() * scale;
        }
        // Now and then a long zigzag of many heights, too many bands to list.
        const bool zigzag = !alongLine && Chance(20);
        const int vertices = zigzag ? 700 : 33 + static_cast<int>(m_random() % 120);
        for (int i = 0; i < vertices; ++i) {
            double x = Grid() * scale, y = (zigzag ? Real() + 40.0 * (i % 2) : Grid()) * scale;
            if (alongLine && !Chance(5)) {
                // Some edges far shorter than any other, along the line too.
                const double s = along =
                    Chance(4) ? along + Real() * 1e-12 : 3.0 * Real() + (Chance(2) ? 30.0 : -30.0);
                x = c.ax + s * (c.bx - c.ax);
                y = c.ay + s * (c.by - c.ay);
            } else if (Chance(4)) {
                // On the segment's line, within it or far beyond it, rounded as it falls.
                const double s = Pick({0.0, 1.0, 0.5, 0.3, -7.0, 11.0, Real()});
                x = c.ax + s * (c.bx - c.ax);
                y = c.ay + s * (c.by - c.ay);
            } else if (Chance(6) && !c.clip.empty()) {
                y = c.clip.back().y; // a horizontal edge
            } else if (Chance(10) && !c.clip.empty()) {
                x = c.clip.back().x;
                y = c.clip.back().y; // a repeated vertex
                if (Chance(2)) {     // or nearly: an edge far shorter than any other
                    x += Real() * 1e-13 * scale;
                    y += Real() * 1e-13 * scale;
                }
            }
            c.clip.push_back({x, y, i == 0 ? 'm' : 'l'});
        }
        if (Chance(2))
            c.clip.push_back(c.clip.front()); // closed
        return c;
    }

    double Grid() { return static_cast<double>(static_cast<int>(m_random() % 13) - 6); }
    double Real() { return std::uniform_real_distribution<double>(-6.0, 6.0)(m_random); }
    std::size_t Index(std::size_t size) { return m_random() % size; }
    bool Chance(int oneIn) { return m_random() % static_cast<std::uint64_t>(oneIn) == 0; }
    double Pick(std::initializer_list<double> values) {
        return *(values.begin() + m_random() % values.size());
    }

private:
    std::mt19937_64 m_random;
};

TEST(PathClip, IndexGivesTheAnswersOfTheFullWalk) {
    ClipCases cases(20240611);
    Coverage coverage;
    std::vector<double> indexed, walked;
    for (int n = 0; n < 3000; ++n) {
        const Case c = cases.Next();
        const PathClip clip(&c.clip);
        ++(clip.HasBands() ? coverage.banded : coverage.unbanded);
        clip.ClipSegment(c.ax, c.ay, c.bx, c.by, indexed);
        clip.ClipSegmentByScan(c.ax, c.ay, c.bx, c.by, walked);
        ASSERT_EQ(Bits(indexed), Bits(walked)) << "case " << n;
        coverage.Note(c, walked);
        // Winding at vertices, on edges and on the segment, where the half-open rule decides.
        for (int k = 0; k < 8; ++k) {
            const PathElement& v = c.clip[cases.Index(c.clip.size())];
            const double s = cases.Pick({0.0, 0.5, 1.0, 0.25});
            const double points[][2] = {{v.x, v.y},
                                        {c.ax + s * (c.bx - c.ax), c.ay + s * (c.by - c.ay)},
                                        {cases.Grid(), v.y}};
            for (const auto& [x, y] : points) {
                ASSERT_EQ(clip.WindingNumber(x, y), clip.WindingNumberByScan(x, y))
                    << "case " << n << " at " << x << ", " << y;
                for (std::size_t i = 1; i < c.clip.size(); ++i)
                    coverage.onHorizontalEdge += c.clip[i].y == y && c.clip[i - 1].y == y;
            }
        }
    }

    EXPECT_GT(coverage.vertexOnSegment, 1000);
    EXPECT_GT(coverage.collinearEdge, 1000);
    EXPECT_GT(coverage.standing, 100);
    EXPECT_GT(coverage.pieces, 1000);
    EXPECT_GT(coverage.onHorizontalEdge, 1000);
    EXPECT_GT(coverage.unbanded, 50);
    EXPECT_GT(coverage.banded, 2000);

    // A clip with a point that is no number, and a segment from infinity, take the full walk.
    Case odd = cases.Next();
    const double inf = std::numeric_limits<double>::infinity();
    for (const double x : {odd.clip[5].x, std::numeric_limits<double>::quiet_NaN()}) {
        odd.clip[5].x = x;
        const PathClip clip(&odd.clip);
        clip.ClipSegment(inf, odd.ay, odd.bx, odd.by, indexed);
        clip.ClipSegmentByScan(inf, odd.ay, odd.bx, odd.by, walked);
        EXPECT_EQ(Bits(indexed), Bits(walked));
        EXPECT_EQ(clip.WindingNumber(odd.ax, odd.ay), clip.WindingNumberByScan(odd.ax, odd.ay));
    }
}

} // namespace
