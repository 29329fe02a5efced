#include "cli/DxfEntities.h"

#include "cli/DxfValues.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

namespace {

constexpr double kDegrees = 180.0 / std::numbers::pi;

// TEXT holds slants up to this many degrees either way.
constexpr double kMaxSlant = 85.0;

void BeginEntity(DxfEntityContext& ctx, const char* kind, const DxfEntityStyle& style,
                 std::uint64_t handle) {
    DxfWriter& w = ctx.out;
    w.BeginRecord();
    w.Text(0, kind).Handle(5, handle).Handle(330, ctx.owner).Text(100, "AcDbEntity");
    w.Text(8, style.layer);
    if (!style.linetype.empty())
        w.Text(6, style.linetype);
    if (style.color)
        w.Int(62, DxfColorIndex(*style.color));
    if (style.lineweight)
        w.Int(370, *style.lineweight);
    if (style.color)
        w.Int(420, DxfTrueColor(*style.color));
}

bool EndEntity(DxfEntityContext& ctx, const DxfEntityStyle& style) {
    if (style.reference)
        ctx.out.Text(1001, kDxfAppName).Text(1000, "reference");
    if (ctx.out.EndRecord())
        return true;
    ++ctx.notes.notFinite;
    return false;
}

void Flatten(const GK_Curve& curve, std::vector<const GK_Curve*>& pieces) {
    if (const auto* poly = dynamic_cast<const GK_PolyCurve*>(&curve)) {
        for (int i = 0; i < poly->Count(); ++i)
            if (const GK_Curve* segment = poly->SegmentCurve(i))
                Flatten(*segment, pieces);
        return;
    }
    pieces.push_back(&curve);
}

// The vertices of a straight piece, appended; false for a piece that is not straight.
bool AppendStraight(const GK_Curve& piece, std::vector<GK_3dPoint>& points) {
    if (const auto* line = dynamic_cast<const GK_LineCurve*>(&piece)) {
        points.push_back(line->m_line.from);
        points.push_back(line->m_line.to);
        return true;
    }
    if (const auto* pline = dynamic_cast<const GK_PolylineCurve*>(&piece)) {
        points.insert(points.end(), pline->m_pline.begin(), pline->m_pline.end());
        return true;
    }
    return false;
}

// The straight pieces as one chain of vertices, when every piece is straight and each starts
// exactly where the one before it ends.
bool JoinStraight(const std::vector<const GK_Curve*>& pieces, std::vector<GK_3dPoint>& points) {
    points.clear();
    std::vector<GK_3dPoint> piece;
    for (const GK_Curve* c : pieces) {
        piece.clear();
        if (!AppendStraight(*c, piece) || piece.empty())
            return false;
        if (!points.empty()) {
            if (!(points.back() == piece.front()))
                return false;
            points.pop_back();
        }
        points.insert(points.end(), piece.begin(), piece.end());
    }
    return points.size() >= 2;
}

bool ConstantZ(const std::vector<GK_3dPoint>& points) {
    return std::all_of(points.begin(), points.end(),
                       [&](const GK_3dPoint& p) { return p.z == points.front().z; });
}

// A closed chain repeats its first vertex at the end; DXF polylines say "closed" instead.
bool DropClosingVertex(std::vector<GK_3dPoint>& points) {
    if (points.size() >= 4 && points.front() == points.back()) {
        points.pop_back();
        return true;
    }
    return false;
}

void WriteLwPolyline(DxfEntityContext& ctx, std::vector<GK_3dPoint> points,
                     const DxfEntityStyle& style, std::uint64_t handle) {
    const bool closed = DropClosingVertex(points);
    BeginEntity(ctx, "LWPOLYLINE", style, handle);
    DxfWriter& w = ctx.out;
    w.Text(100, "AcDbPolyline").Int(90, static_cast<int>(points.size())).Int(70, closed ? 1 : 0);
    if (points.front().z != 0.0)
        w.Real(38, points.front().z);
    for (const GK_3dPoint& p : points)
        w.Point2(10, p.x, p.y);
    EndEntity(ctx, style);
}

// A B-spline in DXF's terms: knots with the end knots that the document's convention leaves
// out, Euclidean control points, and weights when rational.
struct Spline {
    int degree = 1;
    bool rational = false;
    std::vector<double> knots;
    std::vector<GK_3dPoint> points;
    std::vector<double> weights;
};

Spline FromNurbs(const GK_NurbsCurve& nurbs) {
    Spline s;
    s.degree = nurbs.Degree();
    s.rational = nurbs.IsRational();
    const int knotCount = std::min(nurbs.KnotCount(), nurbs.m_knot.Count());
    if (knotCount > 0) {
        s.knots.push_back(nurbs.Knot(0));
        for (int i = 0; i < knotCount; ++i)
            s.knots.push_back(nurbs.Knot(i));
        s.knots.push_back(nurbs.Knot(knotCount - 1));
    }
    for (int i = 0; i < nurbs.CVCount(); ++i) {
        GK_3dPoint p;
        if (!nurbs.GetCV(i, p))
            p = {NAN, NAN, NAN}; // spoils the record rather than writing a wrong point
        s.points.push_back(p);
        if (s.rational)
            s.weights.push_back(nurbs.Weight(i));
    }
    return s;
}

// A chain of vertices as the degree-1 spline through them, which holds it exactly in any
// direction.
Spline FromPolyline(const std::vector<GK_3dPoint>& points) {
    Spline s;
    s.points = points;
    const int n = static_cast<int>(points.size());
    s.knots.push_back(0.0);
    for (int i = 0; i < n; ++i)
        s.knots.push_back(i);
    s.knots.push_back(n - 1);
    return s;
}

void WriteSpline(DxfEntityContext& ctx, const Spline& s, const DxfEntityStyle& style,
                 std::uint64_t handle) {
    const bool planar = ConstantZ(s.points);
    BeginEntity(ctx, "SPLINE", style, handle);
    DxfWriter& w = ctx.out;
    w.Text(100, "AcDbSpline");
    if (planar)
        w.Point(210, 0.0, 0.0, 1.0);
    w.Int(70, (s.rational ? 4 : 0) | (planar ? 8 : 0));
    w.Int(71, s.degree).Int(72, static_cast<int>(s.knots.size()));
    w.Int(73, static_cast<int>(s.points.size())).Int(74, 0);
    for (double k : s.knots)
        w.Real(40, k);
    for (double weight : s.weights)
        w.Real(41, weight);
    for (const GK_3dPoint& p : s.points)
        w.Point(10, p.x, p.y, p.z);
    EndEntity(ctx, style);
}

void WritePiece(DxfEntityContext& ctx, const GK_Curve& piece, const DxfEntityStyle& style,
                std::uint64_t handle) {
    if (const auto* line = dynamic_cast<const GK_LineCurve*>(&piece)) {
        BeginEntity(ctx, "LINE", style, handle);
        const GK_Line& l = line->m_line;
        ctx.out.Text(100, "AcDbLine").Point(10, l.from.x, l.from.y, l.from.z);
        ctx.out.Point(11, l.to.x, l.to.y, l.to.z);
        EndEntity(ctx, style);
        return;
    }
    if (const auto* pline = dynamic_cast<const GK_PolylineCurve*>(&piece)) {
        std::vector<GK_3dPoint> points(pline->m_pline.begin(), pline->m_pline.end());
        if (points.size() < 2) {
            ++ctx.notes.unknownCurves;
            return;
        }
        if (ConstantZ(points)) {
            WriteLwPolyline(ctx, std::move(points), style, handle);
        } else {
            ++ctx.notes.splinePolylines;
            WriteSpline(ctx, FromPolyline(points), style, handle);
        }
        return;
    }
    if (const auto* nurbs = dynamic_cast<const GK_NurbsCurve*>(&piece)) {
        WriteSpline(ctx, FromNurbs(*nurbs), style, handle);
        return;
    }
    ++ctx.notes.unknownCurves;
}

// One boundary path of a hatch in the hatch's coordinate system. A hatch loop is closed by
// nature: one whose ends meet only within the document's tolerance is closed by the path's
// flag, with a last segment as short as the gap.
void WritePolylinePath(DxfWriter& w, std::vector<GK_3dPoint> points, const DxfOcs& ocs, int flags) {
    DropClosingVertex(points);
    w.Int(92, flags | 2).Int(72, 0).Int(73, 1);
    w.Int(93, static_cast<int>(points.size()));
    for (const GK_3dPoint& p : points) {
        const GK_3dPoint q = ocs.ToOcs(p);
        w.Point2(10, q.x, q.y);
    }
    w.Int(97, 0);
}

int EdgeCount(const GK_Curve& piece) {
    if (const auto* pline = dynamic_cast<const GK_PolylineCurve*>(&piece))
        return std::max(pline->PointCount() - 1, 0);
    return 1;
}

void WriteLineEdge(DxfWriter& w, const GK_3dPoint& a, const GK_3dPoint& b, const DxfOcs& ocs) {
    const GK_3dPoint p = ocs.ToOcs(a), q = ocs.ToOcs(b);
    w.Int(72, 1).Point2(10, p.x, p.y).Point2(11, q.x, q.y);
}

void WriteSplineEdge(DxfWriter& w, const Spline& s, const DxfOcs& ocs) {
    w.Int(72, 4).Int(94, s.degree).Int(73, s.rational ? 1 : 0).Int(74, 0);
    w.Int(95, static_cast<int>(s.knots.size())).Int(96, static_cast<int>(s.points.size()));
    for (double k : s.knots)
        w.Real(40, k);
    for (std::size_t i = 0; i < s.points.size(); ++i) {
        const GK_3dPoint q = ocs.ToOcs(s.points[i]);
        w.Point2(10, q.x, q.y);
        if (s.rational)
            w.Real(42, s.weights[i]);
    }
    w.Int(97, 0); // no fit points
}

void WriteEdgePath(DxfWriter& w, const std::vector<const GK_Curve*>& pieces, const DxfOcs& ocs,
                   int flags) {
    int edges = 0;
    for (const GK_Curve* piece : pieces)
        edges += EdgeCount(*piece);
    w.Int(92, flags).Int(93, edges);
    for (const GK_Curve* piece : pieces) {
        if (const auto* line = dynamic_cast<const GK_LineCurve*>(piece)) {
            WriteLineEdge(w, line->m_line.from, line->m_line.to, ocs);
        } else if (const auto* pline = dynamic_cast<const GK_PolylineCurve*>(piece)) {
            for (int i = 1; i < pline->PointCount(); ++i)
                WriteLineEdge(w, pline->m_pline[i - 1], pline->m_pline[i], ocs);
        } else if (const auto* nurbs = dynamic_cast<const GK_NurbsCurve*>(piece)) {
            WriteSplineEdge(w, FromNurbs(*nurbs), ocs);
        }
    }
    w.Int(97, 0);
}

bool IsEdge(const GK_Curve* piece) {
    return dynamic_cast<const GK_LineCurve*>(piece) ||
           dynamic_cast<const GK_PolylineCurve*>(piece) ||
           dynamic_cast<const GK_NurbsCurve*>(piece);
}

} // namespace

std::string DxfTextValue(std::wstring_view text) {
    // "%%" followed by a letter or digits is a control code in TEXT ("%%d" a degree sign);
    // "%%%" is a percent sign itself, so a run of two or more percent signs is written as
    // that many of those.
    std::wstring escaped;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t run = 0;
        while (i + run < text.size() && text[i + run] == L'%')
            ++run;
        if (run >= 2) {
            for (std::size_t k = 0; k < run; ++k)
                escaped += L"%%%";
            i += run;
        } else {
            escaped += text[i++];
        }
    }
    return DxfText(escaped);
}

DxfCurvePlan PlanCurve(const GK_Curve& curve) {
    DxfCurvePlan plan;
    Flatten(curve, plan.pieces);
    // A lone line or polyline is written by its own case; the join is for polycurves.
    if (plan.pieces.size() > 1 && JoinStraight(plan.pieces, plan.points) && ConstantZ(plan.points))
        plan.onePolyline = true;
    else
        plan.points.clear();
    return plan;
}

void WriteCurveEntities(DxfEntityContext& ctx, const DxfCurvePlan& plan,
                        const DxfEntityStyle& style, std::uint64_t handle) {
    if (plan.onePolyline) {
        WriteLwPolyline(ctx, plan.points, style, handle);
        return;
    }
    for (const GK_Curve* piece : plan.pieces)
        WritePiece(ctx, *piece, style, handle++);
}

void WriteHatchEntity(DxfEntityContext& ctx, const GK_Hatch& hatch, const GK_HatchPattern* pattern,
                      const DxfEntityStyle& style, std::uint64_t handle) {
    const DxfOcs ocs = DxfOcs::FromNormal(hatch.Plane().zaxis).value_or(DxfOcs());
    struct Loop {
        std::unique_ptr<GK_Curve> curve;
        std::vector<const GK_Curve*> pieces;
        std::vector<GK_3dPoint> points; // when the loop is one chain of straight pieces
        bool outer = true;
    };
    std::vector<Loop> loops;
    for (int i = 0; i < hatch.LoopCount(); ++i) {
        Loop loop;
        loop.curve.reset(hatch.LoopCurve3d(i));
        const GK_HatchLoop* source = hatch.Loop(i);
        if (!loop.curve || !source) {
            ++ctx.notes.lostLoops;
            continue;
        }
        loop.outer = source->Type() != GK_HatchLoop::ltInner;
        Flatten(*loop.curve, loop.pieces);
        const bool straight = JoinStraight(loop.pieces, loop.points);
        if (!straight)
            loop.points.clear();
        if (!straight &&
            (loop.pieces.empty() || !std::all_of(loop.pieces.begin(), loop.pieces.end(), IsEdge))) {
            ++ctx.notes.lostLoops;
            continue;
        }
        loops.push_back(std::move(loop));
    }
    if (loops.empty()) {
        ++ctx.notes.emptyHatches;
        return;
    }
    const bool solid = !pattern || pattern->FillType() == GK_HatchPattern::HatchFillType::Solid;
    const double elevation = ocs.ToOcs(hatch.Plane().origin).z;
    BeginEntity(ctx, "HATCH", style, handle);
    DxfWriter& w = ctx.out;
    w.Text(100, "AcDbHatch").Point(10, 0.0, 0.0, elevation);
    w.Point(210, ocs.normal.x, ocs.normal.y, ocs.normal.z);
    // The document's patterns other than solid have no line definitions to pass on; a single
    // family of lines at the pattern's angle and scale is the nearest that DXF can say.
    w.Text(2, solid ? "SOLID" : "_USER").Int(70, solid ? 1 : 0).Int(71, 0);
    w.Int(91, static_cast<int>(loops.size()));
    for (const Loop& loop : loops) {
        // Outer loops are "external"; with the odd-parity style each hole inside one stays
        // open.
        const int flags = loop.outer ? 1 : 0;
        if (!loop.points.empty())
            WritePolylinePath(w, loop.points, ocs, flags);
        else
            WriteEdgePath(w, loop.pieces, ocs, flags);
    }
    w.Int(75, 0).Int(76, solid ? 1 : 0);
    if (!solid) {
        ++ctx.notes.linePatterns;
        const double angle = hatch.PatternRotation() * kDegrees;
        const double spacing = hatch.PatternScale();
        w.Real(52, angle).Real(41, spacing).Int(77, 0).Int(78, 1);
        w.Real(53, angle).Point2(43, 0.0, 0.0);
        w.Point2(45, -spacing * std::sin(hatch.PatternRotation()),
                 spacing * std::cos(hatch.PatternRotation()));
        w.Int(79, 0);
    }
    w.Int(98, 0);
    EndEntity(ctx, style);
}

int TextEntityCount(const GK_Text& text) {
    const int length = text.Text().Length();
    return std::max(1, (length + kDxfTextPiece - 1) / kDxfTextPiece);
}

void WriteTextEntities(DxfEntityContext& ctx, const GK_Text& text, const std::string& textStyle,
                       const DxfEntityStyle& style, std::uint64_t handle) {
    const GK_Plane& plane = text.Plane();
    const GK_3dVector u = plane.xaxis, v = plane.yaxis;
    // Text in a plane parallel to the ground keeps the ground's system, so that a mirrored
    // run is told by the upside-down flag rather than by a normal pointing down, which many
    // readers ignore. Text in any other plane takes the system of its own normal.
    const bool flat = u.z == 0.0 && v.z == 0.0;
    const GK_3dVector normal = flat ? GK_3dVector(0.0, 0.0, 1.0) : Cross(u, v);
    const std::optional<DxfOcs> found = DxfOcs::FromNormal(normal);
    if (!found) {
        ++ctx.notes.notFinite;
        return;
    }
    const DxfOcs& ocs = *found;
    const double det = Dot(Cross(u, v), ocs.normal);
    const bool mirrored = det < 0.0;
    const double rotation = std::atan2(Dot(u, ocs.yaxis), Dot(u, ocs.xaxis)) * kDegrees;
    // The slant is the angle of the letters' up direction from the baseline's perpendicular,
    // measured in the letters' own frame, which the mirror turns over.
    const GK_3dVector up = Cross(ocs.normal, u);
    double slant = std::atan2(Dot(v, u), (mirrored ? -1.0 : 1.0) * Dot(v, up)) * kDegrees;
    if (std::abs(slant) > kMaxSlant) {
        ++ctx.notes.clampedSlants;
        slant = std::clamp(slant, -kMaxSlant, kMaxSlant);
    }
    const std::wstring& all = text.Text().str();
    const int pieces = TextEntityCount(text);
    if (pieces > 1)
        ++ctx.notes.splitTexts;
    for (int k = 0; k < pieces; ++k) {
        // Pieces after the first stand where the host's own estimate of the width puts them.
        const double advance = k * kDxfTextPiece * GK_Text::kCharacterWidth * text.Height();
        const GK_3dPoint at = ocs.ToOcs(plane.origin + u * advance);
        BeginEntity(ctx, "TEXT", style, handle + k);
        DxfWriter& w = ctx.out;
        w.Text(100, "AcDbText").Point(10, at.x, at.y, at.z).Real(40, text.Height());
        w.Text(1, DxfTextValue(std::wstring_view(all).substr(k * kDxfTextPiece, kDxfTextPiece)));
        if (rotation != 0.0)
            w.Real(50, rotation < 0.0 ? rotation + 360.0 : rotation);
        if (slant != 0.0)
            w.Real(51, slant);
        w.Text(7, textStyle);
        if (mirrored)
            w.Int(71, 4);
        if (!ocs.IsWorld())
            w.Point(210, ocs.normal.x, ocs.normal.y, ocs.normal.z);
        w.Text(100, "AcDbText");
        EndEntity(ctx, style);
    }
}

bool WriteImageEntity(DxfEntityContext& ctx, const GK_PictureFrame& frame,
                      std::pair<int, int> pixels, std::uint64_t imageDef,
                      const DxfEntityStyle& style, std::uint64_t handle) {
    const GK_Plane& plane = frame.Plane();
    const auto [w, h] = pixels;
    // The vectors are those of one pixel, along the picture's bottom row and up its left
    // edge from the corner where its first pixel of the bottom row lies.
    const GK_3dVector du = plane.xaxis * (frame.Width() / w);
    const GK_3dVector dv = plane.yaxis * (frame.Height() / h);
    BeginEntity(ctx, "IMAGE", style, handle);
    DxfWriter& out = ctx.out;
    out.Text(100, "AcDbRasterImage").Int(90, 0);
    out.Point(10, plane.origin.x, plane.origin.y, plane.origin.z);
    out.Point(11, du.x, du.y, du.z).Point(12, dv.x, dv.y, dv.z);
    out.Point2(13, w, h).Handle(340, imageDef);
    // Shown, also when not aligned with the screen; no clipping; normal brightness and
    // contrast, no fade; the clip boundary is the whole picture.
    out.Int(70, 3).Int(280, 0).Int(281, 50).Int(282, 50).Int(283, 0);
    out.Handle(360, handle + 1).Int(71, 1).Int(91, 2);
    out.Point2(14, -0.5, -0.5).Point2(14, w - 0.5, h - 0.5).Int(290, 0);
    return EndEntity(ctx, style);
}
