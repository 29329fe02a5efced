#include "host/geometry/GK_Curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

void ExpectNear(const GK_3dPoint& a, const GK_3dPoint& b, double tol) {
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

GK_NurbsCurve MakeNurbs(int order, const std::vector<double>& knots,
                        const std::vector<GK_4dPoint>& cvs, bool rational) {
    GK_NurbsCurve c(3, rational, order, static_cast<int>(cvs.size()));
    for (int i = 0; i < static_cast<int>(knots.size()); ++i)
        c.SetKnot(i, knots[i]);
    for (int i = 0; i < static_cast<int>(cvs.size()); ++i) {
        const GK_4dPoint& p = cvs[i]; // given as Euclidean point and weight
        c.SetCV(i, GK_4dPoint{p.x * p.w, p.y * p.w, p.z * p.w, p.w});
    }
    return c;
}

// Independent evaluation by the Cox-de Boor recursion on the full knot vector (the host's
// vector with its end knots repeated once more), for parameters inside the domain.
GK_3dPoint CoxDeBoor(const GK_NurbsCurve& c, double t) {
    std::vector<double> u{c.Knot(0)};
    for (int i = 0; i < c.KnotCount(); ++i)
        u.push_back(c.Knot(i));
    u.push_back(c.Knot(c.KnotCount() - 1));
    const int p = c.Degree();
    std::vector<double> n(u.size() - 1);
    for (std::size_t i = 0; i + 1 < u.size(); ++i)
        n[i] = (u[i] <= t && t < u[i + 1]) ? 1.0 : 0.0;
    for (int d = 1; d <= p; ++d)
        for (std::size_t i = 0; i + d + 1 < u.size(); ++i) {
            const double a = u[i + d] > u[i] ? (t - u[i]) / (u[i + d] - u[i]) * n[i] : 0.0;
            const double b = u[i + d + 1] > u[i + 1]
                                 ? (u[i + d + 1] - t) / (u[i + d + 1] - u[i + 1]) * n[i + 1]
                                 : 0.0;
            n[i] = a + b;
        }
    double x = 0, y = 0, z = 0, w = 0;
    for (int i = 0; i < c.CVCount(); ++i) {
        GK_4dPoint h;
        c.GetCV(i, h);
        x += n[i] * h.x;
        y += n[i] * h.y;
        z += n[i] * h.z;
        w += n[i] * h.w;
    }
    return {x / w, y / w, z / w};
}

// A non-uniform rational cubic with an interior double knot, in 3-D.
GK_NurbsCurve SampleSpline() {
    return MakeNurbs(4, {0, 0, 0, 1, 2.5, 2.5, 4, 4, 4},
                     {{0, 0, 0, 1},
                      {1, 3, 1, 2},
                      {3, -2, 0.5, 0.5},
                      {4, 4, -1, 1},
                      {6, 1, 2, 3},
                      {7, -3, 0, 1},
                      {9, 0, 1, 0.7}},
                     true);
}

void ExpectReversedShape(const GK_Curve& original) {
    std::unique_ptr<GK_Curve> r(original.DuplicateCurve());
    ASSERT_TRUE(r->Reverse());
    EXPECT_TRUE(r->IsValid());
    ExpectNear(r->PointAtStart(), original.PointAtEnd(), 1e-12);
    ExpectNear(r->PointAtEnd(), original.PointAtStart(), 1e-12);
    for (double s : {0.1, 0.37, 0.5, 0.81})
        ExpectNear(r->PointAt(r->Domain().ParameterAt(s)),
                   original.PointAt(original.Domain().ParameterAt(1.0 - s)), 1e-9);
}

} // namespace

TEST(GeometryBasics, BoxesAndTransformations) {
    GK_BoundingBox box;
    EXPECT_FALSE(box.IsValid());
    EXPECT_FALSE(box.Union(GK_BoundingBox::EmptyBoundingBox));
    box.Set({kNan, 0, 0}, true);
    EXPECT_FALSE(box.IsValid());
    box.Set({1, 2, 3}, true);
    box.Set({-1, 5, 3}, true);
    EXPECT_EQ(box.Min(), GK_3dPoint(-1, 2, 3));
    EXPECT_EQ(box.Max(), GK_3dPoint(1, 5, 3));
    EXPECT_TRUE(box.IsPointIn({0, 5, 3}));
    EXPECT_FALSE(box.IsPointIn({0, 5.5, 3}));
    EXPECT_TRUE(box.IsPointIn({0, 5.5, 3}, 0.5));
    GK_BoundingBox other;
    EXPECT_TRUE(other.Union(box));
    EXPECT_EQ(other.Max(), box.Max());
    box.Set({7, 7, 7}, false);
    EXPECT_EQ(box.Min(), box.Max());

    const GK_Xform page = GK_Xform::Affine2d(2, 0, 0, 3, 5, 7);
    EXPECT_EQ(page * GK_3dPoint(1, 1, 4), GK_3dPoint(7, 10, 4));
    const GK_Xform turn = GK_Xform::Affine2d(0, 1, -1, 0, 0, 0); // quarter turn
    EXPECT_EQ(turn * GK_3dPoint(1, 2, 0), GK_3dPoint(-2, 1, 0));
    // A product applies its right-hand factor first.
    const GK_Xform both = GK_Xform::Translation({1, 0, 0}) * GK_Xform::Scale(2);
    EXPECT_EQ(both * GK_3dPoint(1, 1, 1), GK_3dPoint(3, 2, 2));
    const GK_4dPoint h = both * GK_4dPoint{1, 1, 1, 2};
    EXPECT_EQ(h.x, 4);
    EXPECT_EQ(h.w, 2);
    GK_Xform projective;
    projective.m_xform[3][0] = 1;
    EXPECT_EQ(projective * GK_3dPoint(1, 2, 4), GK_3dPoint(0.5, 1, 2));
    EXPECT_FALSE((projective * GK_3dPoint(-1, 0, 0)).IsValid());
}

TEST(NurbsCurve, EvaluationMatchesBasisFunctions) {
    GK_NurbsCurve bezier = MakeNurbs(
        4, {0, 0, 0, 1, 1, 1}, {{0, 0, 0, 1}, {0, 1, 0, 1}, {1, 1, 0, 1}, {1, 0, 0, 1}}, false);
    ExpectNear(bezier.PointAt(0.5), {0.5, 0.75, 0}, 1e-15);
    ExpectNear(bezier.PointAt(0.25), {0.15625, 0.5625, 0}, 1e-15);

    const GK_NurbsCurve spline = SampleSpline();
    ASSERT_TRUE(spline.IsValid());
    EXPECT_EQ(spline.Domain().t0, 0);
    EXPECT_EQ(spline.Domain().t1, 4);
    EXPECT_EQ(spline.PointAtStart(), GK_3dPoint(0, 0, 0));
    ExpectNear(spline.PointAtEnd(), {9, 0, 1}, 1e-14);
    for (int i = 0; i < 40; ++i) {
        const double t = 0.1 * i + 0.013;
        ExpectNear(spline.PointAt(t), CoxDeBoor(spline, t), 1e-12);
    }

    // Unclamped knots: the domain starts at knot[order-2] and the ends are not CVs.
    GK_NurbsCurve open(2, false, 4, 6);
    for (int i = 0; i < open.KnotCount(); ++i)
        open.SetKnot(i, i);
    const double ys[] = {0, 2, -1, 3, 0, 1};
    for (int i = 0; i < 6; ++i)
        open.SetCV(i, GK_3dPoint(i, ys[i], 0));
    ASSERT_TRUE(open.IsValid());
    EXPECT_EQ(open.Domain().t0, 2);
    EXPECT_EQ(open.Domain().t1, 5);
    for (double t : {2.0, 2.5, 3.0, 3.7, 4.99})
        ExpectNear(open.PointAt(t), CoxDeBoor(open, t), 1e-12);

    GK_NurbsCurve clamped(3, false, 3, 5);
    ASSERT_TRUE(clamped.MakeClampedUniformKnotVector(0.5));
    const double expected[] = {0, 0, 0.5, 1, 1.5, 1.5};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(clamped.Knot(i), expected[i]);
}

TEST(NurbsCurve, BoundingBoxIsTheCurvesNotTheControlPolygons) {
    const GK_NurbsCurve bezier = MakeNurbs(
        4, {0, 0, 0, 1, 1, 1}, {{0, 0, 0, 1}, {0, 1, 0, 1}, {1, 1, 0, 1}, {1, 0, 0, 1}}, false);
    GK_BoundingBox box = bezier.BoundingBox();
    ExpectNear(box.Min(), {0, 0, 0}, 1e-12);
    ExpectNear(box.Max(), {1, 0.75, 0}, 1e-12);

    // A quarter circle centred on the x axis: the middle CV sits at x = sqrt(2), the arc
    // only reaches x = 1.
    const double h = std::sqrt(0.5);
    const GK_NurbsCurve quarter =
        MakeNurbs(3, {0, 0, 1, 1}, {{h, -h, 0, 1}, {std::sqrt(2.0), 0, 0, h}, {h, h, 0, 1}}, true);
    for (double t : {0.1, 0.3, 0.5, 0.9})
        EXPECT_NEAR(quarter.PointAt(t).DistanceTo(GK_3dPoint::Origin), 1.0, 1e-14);
    box = quarter.BoundingBox();
    ExpectNear(box.Min(), {h, -h, 0}, 1e-12);
    ExpectNear(box.Max(), {1, h, 0}, 1e-12);

    // A 120-degree arc over the y axis, whose middle CV lies at y = 2.
    const double c30 = std::sqrt(3.0) / 2;
    const GK_NurbsCurve arc =
        MakeNurbs(3, {0, 0, 1, 1}, {{c30, 0.5, 0, 1}, {0, 2, 0, 0.5}, {-c30, 0.5, 0, 1}}, true);
    box = arc.BoundingBox();
    ExpectNear(box.Min(), {-c30, 0.5, 0}, 1e-12);
    ExpectNear(box.Max(), {c30, 1, 0}, 1e-12);

    // Multi-span rational 3-D spline against dense sampling: the box holds every sample and
    // no face lies further out than sampling can miss.
    const GK_NurbsCurve spline = SampleSpline();
    box = spline.BoundingBox();
    GK_BoundingBox sampled;
    for (int i = 0; i <= 200000; ++i)
        sampled.Set(spline.PointAt(i * 2e-5), true);
    for (const GK_3dPoint& p : {sampled.Min(), sampled.Max()})
        EXPECT_TRUE(box.IsPointIn(p, 1e-12));
    ExpectNear(box.Min(), sampled.Min(), 1e-7);
    ExpectNear(box.Max(), sampled.Max(), 1e-7);

    GK_NurbsCurve broken = spline;
    broken.SetKnot(3, kNan);
    EXPECT_FALSE(broken.BoundingBox().IsValid());
}

TEST(Curves, ReverseKeepsTheShape) {
    ExpectReversedShape(SampleSpline());
    GK_NurbsCurve twice = SampleSpline();
    twice.Reverse();
    twice.Reverse();
    const GK_NurbsCurve original = SampleSpline();
    for (int i = 0; i < original.KnotCount(); ++i)
        EXPECT_EQ(twice.Knot(i), original.Knot(i));
    for (int i = 0; i < original.CVCount(); ++i)
        EXPECT_EQ(twice.Weight(i), original.Weight(i));

    ExpectReversedShape(GK_LineCurve({0, 0, 0}, {2, 1, 0}));
    GK_SimpleArray<GK_3dPoint> pts;
    for (const GK_3dPoint& p : {GK_3dPoint(0, 0, 0), GK_3dPoint(1, 0, 0), GK_3dPoint(1, 3, 0)})
        pts.Append(p);
    GK_PolylineCurve pline(pts);
    pline.m_t[1] = 0.25; // uneven parameters must follow the points round
    ExpectReversedShape(pline);

    GK_PolyCurve poly;
    poly.Append(new GK_LineCurve({-1, 0, 0}, {0, 0, 0}));
    poly.Append(new GK_PolylineCurve(pline));
    poly.Append(SampleSpline().DuplicateCurve());
    ExpectReversedShape(poly);
}

TEST(Curves, TransformMovesEveryPoint) {
    const GK_Xform x = GK_Xform::Translation({1, -2, 3}) * GK_Xform::Scale(0.5) *
                       GK_Xform::Affine2d(0.6, 0.8, -0.8, 0.6, 4, 1);
    const GK_NurbsCurve original = SampleSpline();
    GK_NurbsCurve moved = original;
    ASSERT_TRUE(moved.Transform(x));
    for (double t : {0.0, 0.4, 1.9, 2.5, 4.0})
        ExpectNear(moved.PointAt(t), x * original.PointAt(t), 1e-12);
    EXPECT_EQ(moved.Weight(1), 2.0); // affine maps leave weights alone

    // A projective map turns a non-rational curve rational and still maps its points.
    GK_NurbsCurve plain(2, false, 3, 3);
    plain.MakeClampedUniformKnotVector();
    plain.SetCV(0, GK_3dPoint(0, 0, 0));
    plain.SetCV(1, GK_3dPoint(1, 2, 0));
    plain.SetCV(2, GK_3dPoint(2, 0, 0));
    const GK_NurbsCurve flat = plain;
    GK_Xform proj = GK_Xform::Translation({0, 0, 5});
    proj.m_xform[3][0] = 0.25;
    ASSERT_TRUE(plain.Transform(proj));
    EXPECT_TRUE(plain.IsRational());
    EXPECT_EQ(plain.Dimension(), 3); // lifted out of its plane, it needs z
    for (double t : {0.0, 0.3, 0.5, 1.0})
        ExpectNear(plain.PointAt(t), proj * flat.PointAt(t), 1e-12);

    GK_LineCurve line({1, 1, 0}, {2, 3, 0});
    line.Transform(x);
    ExpectNear(line.PointAt(0.5), x * GK_3dPoint(1.5, 2, 0), 1e-12);
    GK_Xform bad;
    bad.m_xform[0][0] = kNan;
    GK_LineCurve kept = line;
    EXPECT_FALSE(kept.Transform(bad));
    EXPECT_EQ(kept.m_line.from, line.m_line.from);
}

TEST(Curves, ValidityRules) {
    EXPECT_TRUE(SampleSpline().IsValid());
    GK_NurbsCurve c;
    EXPECT_FALSE(c.Create(3, false, 1, 3));
    EXPECT_FALSE(c.Create(3, false, 4, 3));
    auto brokenBy = [](auto change) {
        GK_NurbsCurve s = SampleSpline();
        change(s);
        return !s.IsValid();
    };
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) { s.SetKnot(4, 0.5); }));  // decreasing
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) { s.SetKnot(3, kNan); })); // non-finite
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) { // a knot repeated order times breaks the curve
        s.SetKnot(3, 2.5);
        s.SetKnot(6, 2.5);
    }));
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) { s.m_knot.Append(5); })); // wrong count
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) {
        s.m_cv[4] = std::numeric_limits<double>::infinity();
    })); // non-finite CV
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) { s.SetCV(2, GK_4dPoint{1, 1, 1, 0}); }));
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) { s.SetCV(2, GK_4dPoint{1, 1, 1, -1}); }));
    EXPECT_TRUE(brokenBy([](GK_NurbsCurve& s) {
        for (int i = 0; i < s.KnotCount(); ++i)
            s.SetKnot(i, 1.0); // empty domain
    }));

    EXPECT_TRUE(GK_LineCurve({0, 0, 0}, {0, 0, 1}).IsValid());
    EXPECT_FALSE(GK_LineCurve({1, 2, 3}, {1, 2, 3}).IsValid());
    EXPECT_FALSE(GK_LineCurve({0, 0, 0}, {kNan, 0, 0}).IsValid());

    GK_SimpleArray<GK_3dPoint> pts;
    pts.Append({1, 1, 1});
    EXPECT_FALSE(GK_PolylineCurve(pts).IsValid());
    pts.Append({1, 1, 1});
    EXPECT_FALSE(GK_PolylineCurve(pts).IsValid()); // all points identical
    pts.Append({2, 1, 1});
    GK_PolylineCurve pline(pts);
    EXPECT_TRUE(pline.IsValid());
    pline.m_t[2] = 1.0;
    EXPECT_FALSE(pline.IsValid()); // parameters must increase
    pline.m_t.Remove(2);
    EXPECT_FALSE(pline.IsValid());
    pts.Append({kNan, 0, 0});
    EXPECT_FALSE(GK_PolylineCurve(pts).IsValid());

    GK_PolyCurve poly;
    EXPECT_FALSE(poly.IsValid());
    EXPECT_FALSE(poly.Append(nullptr));
    EXPECT_EQ(poly.Count(), 0);
    poly.Append(new GK_LineCurve({0, 0, 0}, {1, 0, 0}));
    EXPECT_TRUE(poly.IsValid());
    poly.Append(new GK_LineCurve({1, 0, 0}, {1, 0, 0}));
    EXPECT_FALSE(poly.IsValid());
}

TEST(PolyCurve, DomainEvaluationAndOwnership) {
    GK_PolyCurve poly;
    GK_LineCurve* first = new GK_LineCurve({0, 0, 0}, {1, 0, 0});
    first->m_t = GK_Interval(2, 3); // the chain starts where its first segment does
    poly.Append(first);
    GK_SimpleArray<GK_3dPoint> pts;
    for (const GK_3dPoint& p : {GK_3dPoint(1, 0, 0), GK_3dPoint(1, 1, 0), GK_3dPoint(3, 1, 0)})
        pts.Append(p);
    poly.Append(new GK_PolylineCurve(pts));
    EXPECT_EQ(poly.Domain().t0, 2);
    EXPECT_EQ(poly.Domain().t1, 5);
    EXPECT_EQ(poly.SegmentParameter(1), 3);
    ExpectNear(poly.PointAt(2.5), {0.5, 0, 0}, 1e-15);
    EXPECT_EQ(poly.PointAt(3), GK_3dPoint(1, 0, 0));
    ExpectNear(poly.PointAt(3.5), {1, 0.5, 0}, 1e-15);
    ExpectNear(poly.PointAt(4.75), {2.5, 1, 0}, 1e-15);
    EXPECT_EQ(poly.PointAtEnd(), GK_3dPoint(3, 1, 0));

    GK_SimpleArray<GK_3dPoint> verts;
    ASSERT_EQ(poly.IsPolyline(&verts), 4); // the joint is listed once
    EXPECT_EQ(verts[3], GK_3dPoint(3, 1, 0));

    GK_PolyCurve copy(poly);
    EXPECT_NE(copy.SegmentCurve(0), poly.SegmentCurve(0));
    copy.Translate({0, 0, 1});
    EXPECT_EQ(poly.PointAt(2.5).z, 0);
    EXPECT_EQ(copy.PointAt(2.5).z, 1);

    GK_NurbsCurve steps(3, false, 2, 3); // degree 1: a polyline in disguise
    steps.MakeClampedUniformKnotVector();
    steps.SetCV(0, GK_3dPoint(3, 1, 0));
    steps.SetCV(1, GK_3dPoint(4, 1, 0));
    steps.SetCV(2, GK_3dPoint(4, 2, 0));
    EXPECT_EQ(steps.IsPolyline(), 3);
    poly.Append(steps.DuplicateCurve());
    EXPECT_EQ(poly.IsPolyline(&verts), 6);
    poly.Append(SampleSpline().DuplicateCurve());
    EXPECT_EQ(poly.IsPolyline(), 0);

    pts.Append(GK_3dPoint(1, 0, 0));
    EXPECT_TRUE(GK_PolylineCurve(pts).IsClosed());
    EXPECT_FALSE(copy.IsClosed());
    GK_NurbsCurve dot(3, false, 3, 3);
    dot.MakeClampedUniformKnotVector();
    EXPECT_TRUE(dot.IsValid());
    EXPECT_FALSE(dot.IsClosed()); // every CV at the origin: a point, not a loop
    // A loop whose only vertex is its start is told from a point by its bulge; so is a chain
    // of such loops.
    dot.SetCV(1, GK_3dPoint(0, 1, 0));
    EXPECT_TRUE(dot.IsClosed());
    GK_PolyCurve loops;
    loops.Append(dot.DuplicateCurve());
    loops.Append(dot.DuplicateCurve());
    EXPECT_TRUE(loops.IsClosed());
}
