#include "cli/SvgPathData.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>

namespace {

bool IsFinite(const GK_3dPoint& p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// Builds one path's data at the end of a string. A point that is not finite breaks the line
// there rather than spoiling the whole path, which a browser would then not draw at all.
class PathData {
public:
    // A filled loop must stay one subpath even where its pieces meet only within the
    // tolerance; a new subpath there would leave the region open. `out` is borrowed.
    PathData(std::string& out, bool joinPieces)
        : m_text(out), m_begin(out.size()), m_join(joinPieces) {}

    void StartAt(const GK_3dPoint& p) {
        if (m_hasPen && p.x == m_pen.x && p.y == m_pen.y)
            return;
        if (!IsFinite(p)) {
            m_hasPen = false;
            return;
        }
        if (m_join && m_hasPen) {
            LineTo(p);
            return;
        }
        Command('M', {p});
        m_start = p;
        m_drawn = 0;
    }
    void LineTo(const GK_3dPoint& p) { Segment('L', {p}); }
    void QuadTo(const GK_3dPoint& c, const GK_3dPoint& p) { Segment('Q', {c, p}); }
    void CubicTo(const GK_3dPoint& c1, const GK_3dPoint& c2, const GK_3dPoint& p) {
        Segment('C', {c1, c2, p});
    }
    // Closes the subpath when the pen is back at its start, so the corner there is joined.
    void CloseIfClosed() {
        if (m_hasPen && m_drawn > 1 && m_pen.x == m_start.x && m_pen.y == m_start.y) {
            m_text += " Z";
            m_hasPen = false;
        }
    }
    // Closes the subpath wherever the pen is, and makes the next piece start a new one even
    // when it begins where this one ended: the boundaries of a filled region stay apart.
    void Close() {
        if (m_hasPen && m_drawn > 0)
            m_text += " Z";
        m_hasPen = false;
    }

private:
    void Segment(char command, std::initializer_list<GK_3dPoint> points) {
        for (const GK_3dPoint& p : points) {
            if (!IsFinite(p)) {
                m_hasPen = false;
                return;
            }
        }
        if (!m_hasPen) {
            // Nothing to draw from: start where this piece ends.
            StartAt(*(points.end() - 1));
            return;
        }
        Command(command, points);
        ++m_drawn;
    }
    void Command(char command, std::initializer_list<GK_3dPoint> points) {
        if (m_text.size() > m_begin)
            m_text += ' ';
        m_text += command;
        for (const GK_3dPoint& p : points) {
            m_text += ' ';
            AppendNumber(p.x, m_text);
            m_text += ' ';
            AppendNumber(-p.y, m_text);
        }
        m_pen = *(points.end() - 1);
        m_hasPen = true;
    }

    std::string& m_text; // borrowed
    std::size_t m_begin;
    GK_3dPoint m_pen, m_start;
    bool m_join = false;
    bool m_hasPen = false;
    int m_drawn = 0;
};

// Knots in groups of `degree` equal values, rising from group to group: every span is then
// a Bezier curve whose control points are the NURBS control points themselves.
bool HasBezierKnots(const GK_NurbsCurve& nurbs) {
    const int degree = nurbs.Degree();
    const int knots = nurbs.KnotCount();
    if (degree < 1 || nurbs.CVCount() < nurbs.Order() || nurbs.m_knot.Count() < knots ||
        knots % degree != 0 || (nurbs.CVCount() - 1) % degree != 0)
        return false;
    for (int i = 0; i < knots; ++i) {
        const bool groupStart = i % degree == 0;
        if (!std::isfinite(nurbs.Knot(i)))
            return false;
        if (!groupStart && nurbs.Knot(i) != nurbs.Knot(i - 1))
            return false;
        if (groupStart && i > 0 && !(nurbs.Knot(i) > nurbs.Knot(i - 1)))
            return false;
    }
    return true;
}

void AppendBezierSpans(const GK_NurbsCurve& nurbs, PathData& path) {
    const int degree = nurbs.Degree();
    const auto cv = [&nurbs](int i) {
        GK_3dPoint p;
        nurbs.GetCV(i, p);
        return p;
    };
    path.StartAt(cv(0));
    for (int i = 0; i + degree < nurbs.CVCount(); i += degree) {
        if (degree == 1)
            path.LineTo(cv(i + 1));
        else if (degree == 2)
            path.QuadTo(cv(i + 1), cv(i + 2));
        else
            path.CubicTo(cv(i + 1), cv(i + 2), cv(i + 3));
    }
}

// Straight pieces between evaluated points. Every knot inside the domain is hit exactly,
// so corners at knots stay sharp.
void AppendSampled(const GK_Curve& curve, const GK_NurbsCurve* nurbs, PathData& path) {
    const GK_Interval domain = curve.Domain();
    std::vector<double> breaks{domain.t0};
    if (nurbs) {
        for (int i = 0; i < nurbs->KnotCount() && i < nurbs->m_knot.Count(); ++i) {
            const double k = nurbs->Knot(i);
            if (k > breaks.back() && k < domain.t1)
                breaks.push_back(k);
        }
    }
    breaks.push_back(domain.t1);

    const int spans = static_cast<int>(breaks.size()) - 1;
    const int degree = nurbs ? nurbs->Degree() : 3;
    int perSpan = nurbs ? std::max(16, 8 * degree) : 64;
    constexpr int kMaxPoints = 10000;
    if (spans * perSpan > kMaxPoints)
        perSpan = std::max(2, kMaxPoints / std::max(spans, 1));

    path.StartAt(curve.PointAt(breaks.front()));
    for (int s = 0; s < spans; ++s) {
        for (int j = 1; j <= perSpan; ++j) {
            const double t = j == perSpan ? breaks[s + 1]
                                          : breaks[s] + (breaks[s + 1] - breaks[s]) * j / perSpan;
            path.LineTo(curve.PointAt(t));
        }
    }
}

void AppendCurve(const GK_Curve& curve, PathData& path) {
    if (const auto* line = GK_CurveCast<GK_LineCurve>(&curve)) {
        path.StartAt(line->m_line.from);
        path.LineTo(line->m_line.to);
    } else if (const auto* pline = GK_CurveCast<GK_PolylineCurve>(&curve)) {
        if (pline->PointCount() == 0)
            return;
        path.StartAt(pline->m_pline[0]);
        for (int i = 1; i < pline->PointCount(); ++i)
            path.LineTo(pline->m_pline[i]);
    } else if (const auto* poly = GK_CurveCast<GK_PolyCurve>(&curve)) {
        for (int i = 0; i < poly->Count(); ++i)
            if (const GK_Curve* segment = poly->SegmentCurve(i))
                AppendCurve(*segment, path);
    } else if (const auto* nurbs = GK_CurveCast<GK_NurbsCurve>(&curve)) {
        if (!nurbs->IsRational() && nurbs->Degree() <= 3 && HasBezierKnots(*nurbs))
            AppendBezierSpans(*nurbs, path);
        else
            AppendSampled(curve, nurbs, path);
    } else {
        AppendSampled(curve, nullptr, path);
    }
}

} // namespace

void AppendNumber(double value, std::string& out) {
    value += 0.0; // no "-0" in the output
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value);
    out.append(text, result.ptr);
}

void AppendCurvePathData(const GK_Curve& curve, std::string& out) {
    PathData path(out, /*joinPieces=*/false);
    AppendCurve(curve, path);
    path.CloseIfClosed();
}

void AppendHatchPathData(const GK_Hatch& hatch, std::string& out) {
    PathData path(out, /*joinPieces=*/true);
    for (int i = 0; i < hatch.LoopCount(); ++i) {
        // This host keeps loops in world coordinates, so the loop's own curve is what
        // LoopCurve3d would copy.
        const GK_HatchLoop* hatchLoop = hatch.Loop(i);
        const GK_Curve* loop = hatchLoop ? hatchLoop->Curve() : nullptr;
        if (!loop)
            continue;
        AppendCurve(*loop, path);
        path.Close();
    }
}

std::string CurvePathData(const GK_Curve& curve) {
    std::string text;
    AppendCurvePathData(curve, text);
    return text;
}

// SVG patterns alternate dash and gap and start with a dash, so runs of one kind are added
// up, and a leading gap is moved to the end with an offset that keeps the pattern where the
// linetype puts it.
std::pair<std::vector<double>, double> DashPattern(const GK_Linetype& linetype) {
    std::vector<double> runs; // dash and gap alternating
    bool startsWithGap = false, lastIsGap = false;
    for (int i = 0; i < linetype.SegmentCount(); ++i) {
        const GK_LinetypeSegment& s = linetype.Segment(i);
        const double length = std::abs(s.m_length);
        if (!std::isfinite(length))
            return {};
        const bool gap = s.m_seg_type == GK_LinetypeSegment::stSpace;
        if (runs.empty())
            startsWithGap = gap;
        if (!runs.empty() && gap == lastIsGap)
            runs.back() += length;
        else
            runs.push_back(length);
        lastIsGap = gap;
    }
    double offset = 0.0;
    if (startsWithGap) {
        if (runs.size() < 2)
            return {}; // all gap: drawn as a plain line rather than not at all
        offset = -runs.front();
        if (lastIsGap)
            runs.back() += runs.front();
        else
            runs.push_back(runs.front());
        runs.erase(runs.begin());
    }
    // A pattern that ends with a dash joins it to the first one.
    if (runs.size() % 2 == 1 && runs.size() > 1) {
        runs.front() += runs.back();
        offset += runs.back();
        runs.pop_back();
    }
    double total = 0.0;
    for (double v : runs)
        total += v;
    if (runs.size() < 2 || !(total > 0.0) || runs[1] == 0.0)
        return {}; // no gap at all: continuous
    offset = std::fmod(offset + total, total);
    return {runs, offset};
}
