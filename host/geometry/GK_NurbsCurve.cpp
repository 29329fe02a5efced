#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_CurvePoints.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

// Knots follow the host's convention: the full clamped vector minus its first and last
// value. With degree p, a span index k (knot[k] < knot[k+1], p-1 <= k <= cvCount-2) is
// influenced by CVs k-p+1 .. k+1. Only dimensions 1 to 3 are supported, as every point
// in this interface is three-dimensional.

namespace {

constexpr int kMaxDimension = 3;
// Keeps order + cvCount and cvCount * CVSize() inside int.
constexpr int kMaxCount = 1 << 26;

struct HPoint {
    double x = 0.0, y = 0.0, z = 0.0, w = 1.0;
};

HPoint Lerp(const HPoint& a, const HPoint& b, double s) {
    const double r = 1.0 - s;
    return {r * a.x + s * b.x, r * a.y + s * b.y, r * a.z + s * b.z, r * a.w + s * b.w};
}

GK_3dPoint Euclidean(const HPoint& h) {
    if (h.w == 1.0)
        return {h.x, h.y, h.z};
    if (h.w == 0.0) {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan, nan};
    }
    const double s = 1.0 / h.w;
    return {h.x * s, h.y * s, h.z * s};
}

// Whether the CV array has the size the counts promise, so that indexing stays in bounds.
bool CVLayoutOk(const GK_NurbsCurve& c) {
    return c.m_dim >= 1 && c.m_dim <= kMaxDimension && c.m_cv_count >= 0 &&
           c.m_cv_count <= kMaxCount && c.m_cv.Count() == c.m_cv_count * c.CVSize();
}

// The same for the knots as well, as evaluation needs.
bool ConsistentLayout(const GK_NurbsCurve& c) {
    return CVLayoutOk(c) && c.m_order >= 2 && c.m_order <= c.m_cv_count &&
           c.m_knot.Count() == c.KnotCount();
}

HPoint ControlPoint(const GK_NurbsCurve& c, int i) {
    const double* cv = c.m_cv.Array() + static_cast<std::size_t>(i) * c.CVSize();
    HPoint h;
    h.x = cv[0];
    if (c.m_dim > 1)
        h.y = cv[1];
    if (c.m_dim > 2)
        h.z = cv[2];
    if (c.m_is_rat)
        h.w = cv[c.m_dim];
    return h;
}

// The span used for parameter t, always one of non-zero length; outside the domain the
// first or last span extends. Requires knot[p-1] < knot[cvCount-1].
int FindSpan(const GK_NurbsCurve& c, double t) {
    const int p = c.Degree();
    const int n = c.m_cv_count;
    const double* k = c.m_knot.Array();
    const int lo = p - 1;
    const int hi = n - 2;
    int span;
    if (t >= k[n - 1]) {
        span = hi;
        while (span > lo && !(k[span] < k[span + 1]))
            --span;
    } else if (t < k[lo]) {
        span = lo;
        while (span < hi && !(k[span] < k[span + 1]))
            ++span;
    } else {
        span = static_cast<int>(std::upper_bound(k + lo, k + n, t) - k) - 1;
        span = std::clamp(span, lo, hi);
    }
    return span;
}

// One span whose knots before it all equal its start and those after it all equal its end:
// a single Bezier. The knots each round of de Boor's algorithm reads are then the same for
// every point of the round, and so is the weight.
bool SingleBezierSpan(const GK_NurbsCurve& c) {
    const int p = c.Degree();
    if (c.m_cv_count != c.m_order || c.m_knot.Count() != 2 * p)
        return false;
    const double* k = c.m_knot.Array();
    for (int i = 0; i < p; ++i)
        if (k[i] != k[p - 1] || k[p + i] != k[p])
            return false;
    return true;
}

// de Boor's algorithm in homogeneous space for the blossom f(u[0], ..., u[p-1]) on the given
// span; with every u equal to t it is the point at t. `d` holds p+1 entries of scratch.
// `bezier` says that the curve is a SingleBezierSpan, whose weights need working out once a
// round: the same division the general case makes for each point gives the same value.
HPoint Blossom(const GK_NurbsCurve& c, int span, const double* u, HPoint* d, bool bezier) {
    const int p = c.Degree();
    const double* k = c.m_knot.Array();
    for (int j = 0; j <= p; ++j)
        d[j] = ControlPoint(c, span - p + 1 + j);
    for (int r = 1; r <= p; ++r) {
        const double ur = u[r - 1];
        double alpha = 0.0;
        for (int j = p; j >= r; --j) {
            if (j == p || !bezier) {
                const double a = k[span + j - p];
                const double b = k[span + j - r + 1];
                alpha = b > a ? (ur - a) / (b - a) : 0.0;
            }
            d[j] = Lerp(d[j - 1], d[j], alpha);
        }
    }
    return d[p];
}

// Small degrees evaluate without touching the heap.
class Scratch {
public:
    explicit Scratch(int order) {
        if (order > kInline) {
            m_heapPoints.resize(order);
            m_heapParams.resize(order);
        }
        m_points = order > kInline ? m_heapPoints.data() : m_inlinePoints;
        m_params = order > kInline ? m_heapParams.data() : m_inlineParams;
    }
    HPoint* Points() { return m_points; }
    double* Params() { return m_params; }

private:
    static constexpr int kInline = 16;
    HPoint m_inlinePoints[kInline];
    double m_inlineParams[kInline];
    std::vector<HPoint> m_heapPoints;
    std::vector<double> m_heapParams;
    HPoint* m_points;
    double* m_params;
};

// The Bezier form of one span: its control point i is the blossom with p-i arguments at
// the span's start and i at its end. False for an empty span.
bool BezierSpan(const GK_NurbsCurve& curve, int span, Scratch& scratch, std::vector<HPoint>& bezier,
                bool single) {
    const int p = curve.Degree();
    const double a = curve.m_knot[span];
    const double b = curve.m_knot[span + 1];
    if (!(a < b))
        return false;
    double* u = scratch.Params();
    for (int i = 0; i <= p; ++i) {
        for (int r = 0; r < p; ++r)
            u[r] = r < i ? b : a;
        bezier[i] = Blossom(curve, span, u, scratch.Points(), single);
    }
    return true;
}

GK_3dPoint NanPoint() {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    return {nan, nan, nan};
}

// Box of a sequence of Bezier pieces of one degree. Each piece is split by de Casteljau until
// its control box lies inside the box of points already evaluated on the curve (plus a
// tolerance); with positive weights a piece lies inside its control box, so the result is
// the curve's box to within that tolerance. Only pieces reaching past the box are split,
// which are those holding an extreme, so the work grows with the number of extremes.
class BezierBoxer {
public:
    BezierBoxer(int degree, double tolerance) : m_p(degree), m_tol(tolerance) {}

    void AddEnds(const HPoint* cv) {
        m_box.Set(Euclidean(cv[0]), true);
        m_box.Set(Euclidean(cv[m_p]), true);
    }

    void Refine(const HPoint* cv) {
        const std::size_t n = static_cast<std::size_t>(m_p) + 1;
        m_stack.assign(cv, cv + n);
        m_depth.assign(1, 0);
        m_left.resize(n);
        m_right.resize(n);
        std::vector<HPoint>& left = m_left;
        std::vector<HPoint>& right = m_right;
        while (!m_depth.empty()) {
            const int depth = m_depth.back();
            m_depth.pop_back();
            const HPoint* piece = m_stack.data() + m_stack.size() - n;
            GK_BoundingBox control;
            for (std::size_t i = 0; i < n; ++i)
                control.Set(Euclidean(piece[i]), true);
            if (Inside(control)) {
                m_stack.resize(m_stack.size() - n);
                continue;
            }
            if (depth >= kMaxDepth) {
                // Too small to matter: its control box is as good as the curve's here.
                m_box.Union(control);
                m_stack.resize(m_stack.size() - n);
                continue;
            }
            Split(piece, left.data(), right.data());
            m_stack.resize(m_stack.size() - n);
            m_box.Set(Euclidean(right[0]), true);
            m_stack.insert(m_stack.end(), left.begin(), left.end());
            m_depth.push_back(depth + 1);
            m_stack.insert(m_stack.end(), right.begin(), right.end());
            m_depth.push_back(depth + 1);
        }
    }

    const GK_BoundingBox& Box() const { return m_box; }

private:
    static constexpr int kMaxDepth = 60;

    bool Inside(const GK_BoundingBox& b) const {
        if (!b.IsValid() || !m_box.IsValid())
            return false;
        return b.m_min.x >= m_box.m_min.x - m_tol && b.m_max.x <= m_box.m_max.x + m_tol &&
               b.m_min.y >= m_box.m_min.y - m_tol && b.m_max.y <= m_box.m_max.y + m_tol &&
               b.m_min.z >= m_box.m_min.z - m_tol && b.m_max.z <= m_box.m_max.z + m_tol;
    }

    // Halves a piece at its parameter midpoint; both halves share right[0] == left[p].
    void Split(const HPoint* cv, HPoint* left, HPoint* right) {
        const int n = m_p + 1;
        m_work.assign(cv, cv + n);
        left[0] = m_work[0];
        right[m_p] = m_work[m_p];
        for (int r = 1; r <= m_p; ++r) {
            for (int j = 0; j + r <= m_p; ++j)
                m_work[j] = Lerp(m_work[j], m_work[j + 1], 0.5);
            left[r] = m_work[0];
            right[m_p - r] = m_work[m_p - r];
        }
    }

    int m_p;
    double m_tol;
    GK_BoundingBox m_box;
    // Working memory kept from box to box: a drawing has many small splines, and the heap
    // would cost more than the arithmetic. No box is worked out inside another.
    static thread_local inline std::vector<HPoint> m_stack, m_work, m_left, m_right;
    static thread_local inline std::vector<int> m_depth;
};

// Adds (or drops) coordinates of every CV, keeping rational CVs homogeneous.
void ChangeDimension(GK_NurbsCurve& c, int dim) {
    const int oldSize = c.CVSize();
    const int newSize = c.m_is_rat ? dim + 1 : dim;
    GK_SimpleArray<double> cv(c.m_cv_count * newSize);
    for (int i = 0; i < c.m_cv_count; ++i) {
        const double* src = c.m_cv.Array() + static_cast<std::size_t>(i) * oldSize;
        for (int k = 0; k < dim; ++k)
            cv.Append(k < c.m_dim ? src[k] : 0.0);
        if (c.m_is_rat)
            cv.Append(src[c.m_dim]);
    }
    c.m_cv = cv;
    c.m_dim = dim;
}

void MakeRational(GK_NurbsCurve& c) {
    if (c.m_is_rat)
        return;
    GK_SimpleArray<double> cv(c.m_cv_count * (c.m_dim + 1));
    for (int i = 0; i < c.m_cv_count; ++i) {
        const double* src = c.m_cv.Array() + static_cast<std::size_t>(i) * c.m_dim;
        for (int k = 0; k < c.m_dim; ++k)
            cv.Append(src[k]);
        cv.Append(1.0);
    }
    c.m_cv = cv;
    c.m_is_rat = true;
}

} // namespace

GK_NurbsCurve::GK_NurbsCurve(int dimension, bool isRational, int order, int cvCount) {
    Create(dimension, isRational, order, cvCount);
}

bool GK_NurbsCurve::Create(int dimension, bool isRational, int order, int cvCount) {
    if (dimension < 1 || dimension > kMaxDimension || order < 2 || cvCount < order ||
        cvCount > kMaxCount) {
        *this = GK_NurbsCurve();
        return false;
    }
    m_dim = dimension;
    m_is_rat = isRational;
    m_order = order;
    m_cv_count = cvCount;
    m_knot.Empty();
    m_knot.SetCount(KnotCount());
    m_cv.Empty();
    m_cv.SetCount(cvCount * CVSize());
    if (isRational)
        for (int i = 0; i < cvCount; ++i)
            m_cv[i * CVSize() + dimension] = 1.0;
    return true;
}

bool GK_NurbsCurve::SetKnot(int index, double value) {
    if (index < 0 || index >= m_knot.Count())
        return false;
    m_knot[index] = value;
    return true;
}

bool GK_NurbsCurve::SetCV(int index, const GK_3dPoint& point) {
    return SetCV(index, GK_4dPoint{point.x, point.y, point.z, 1.0});
}

bool GK_NurbsCurve::SetCV(int index, const GK_4dPoint& point) {
    if (index < 0 || index >= m_cv_count || !CVLayoutOk(*this))
        return false;
    double* cv = m_cv.Array() + static_cast<std::size_t>(index) * CVSize();
    const double xyz[3] = {point.x, point.y, point.z};
    if (m_is_rat) {
        for (int k = 0; k < m_dim; ++k)
            cv[k] = xyz[k];
        cv[m_dim] = point.w;
        return true;
    }
    // A non-rational curve stores the Euclidean point.
    if (point.w == 0.0)
        return false;
    const double s = point.w == 1.0 ? 1.0 : 1.0 / point.w;
    for (int k = 0; k < m_dim; ++k)
        cv[k] = xyz[k] * s;
    return true;
}

bool GK_NurbsCurve::GetCV(int index, GK_3dPoint& point) const {
    GK_4dPoint h;
    if (!GetCV(index, h) || h.w == 0.0)
        return false;
    point = Euclidean(HPoint{h.x, h.y, h.z, h.w});
    return true;
}

bool GK_NurbsCurve::GetCV(int index, GK_4dPoint& point) const {
    if (index < 0 || index >= m_cv_count || !CVLayoutOk(*this))
        return false;
    const HPoint h = ControlPoint(*this, index);
    point = GK_4dPoint{h.x, h.y, h.z, h.w};
    return true;
}

double GK_NurbsCurve::Weight(int index) const {
    if (!m_is_rat)
        return 1.0;
    if (index < 0 || index >= m_cv_count || !CVLayoutOk(*this))
        return 1.0;
    return m_cv[index * CVSize() + m_dim];
}

bool GK_NurbsCurve::MakeClampedUniformKnotVector(double delta) {
    if (!(delta > 0.0) || !std::isfinite(delta) || m_order < 2 || m_cv_count < m_order ||
        m_cv_count > kMaxCount || m_knot.Count() != KnotCount())
        return false;
    const int top = m_cv_count - m_order + 1; // number of spans
    for (int i = 0; i < KnotCount(); ++i)
        m_knot[i] = std::clamp(i - (m_order - 2), 0, top) * delta;
    return true;
}

bool GK_NurbsCurve::IsValid(GK_TextLog*) const {
    if (!ConsistentLayout(*this))
        return false;
    const int kc = KnotCount();
    for (int i = 0; i < kc; ++i) {
        if (!std::isfinite(m_knot[i]))
            return false;
        if (i > 0 && m_knot[i] < m_knot[i - 1])
            return false;
    }
    if (!(m_knot[m_order - 2] < m_knot[m_cv_count - 1]))
        return false;
    // No knot may repeat more than degree times: the curve would break apart there.
    for (int i = 0; i + m_order - 1 < kc; ++i)
        if (!(m_knot[i] < m_knot[i + m_order - 1]))
            return false;
    for (double v : m_cv)
        if (!std::isfinite(v))
            return false;
    if (m_is_rat)
        for (int i = 0; i < m_cv_count; ++i)
            if (!(m_cv[i * CVSize() + m_dim] > 0.0))
                return false;
    return true;
}

GK_Interval GK_NurbsCurve::Domain() const {
    if (m_order < 2 || m_cv_count < m_order || m_cv_count > kMaxCount ||
        m_knot.Count() != KnotCount())
        return {0.0, 0.0};
    return {m_knot[m_order - 2], m_knot[m_cv_count - 1]};
}

GK_3dPoint GK_NurbsCurve::PointAt(double t) const {
    if (!ConsistentLayout(*this) || !std::isfinite(t) ||
        !(m_knot[m_order - 2] < m_knot[m_cv_count - 1]))
        return NanPoint();
    const int span = FindSpan(*this, t);
    Scratch scratch(m_order);
    double* u = scratch.Params();
    std::fill(u, u + Degree(), t);
    return Euclidean(Blossom(*this, span, u, scratch.Points(), SingleBezierSpan(*this)));
}

GK_BoundingBox GK_NurbsCurve::BoundingBox() const {
    if (!IsValid())
        return GK_BoundingBox();
    const int p = Degree();
    const int n = m_cv_count;

    // Tolerance relative to the size of the control polygon, with a few units in the last
    // place of its coordinates so rounding cannot keep a piece from ever fitting.
    GK_BoundingBox hull;
    double maxAbs = 0.0;
    for (int i = 0; i < n; ++i) {
        const GK_3dPoint q = Euclidean(ControlPoint(*this, i));
        hull.Set(q, true);
        maxAbs = std::max({maxAbs, std::fabs(q.x), std::fabs(q.y), std::fabs(q.z)});
    }
    const GK_3dVector diag = hull.Diagonal();
    const double extent = std::max({diag.x, diag.y, diag.z});
    const double tol = 1e-12 * extent + 8.0 * DBL_EPSILON * maxAbs;

    // The Bezier form of every span, one after the other, each p+1 points.
    static thread_local std::vector<HPoint> bezier, pieces;
    const std::size_t size = static_cast<std::size_t>(p) + 1;
    bezier.resize(size);
    pieces.clear();
    Scratch scratch(m_order);
    const bool single = SingleBezierSpan(*this);
    BezierBoxer boxer(p, tol);
    for (int span = p - 1; span <= n - 2; ++span) {
        if (!BezierSpan(*this, span, scratch, bezier, single))
            continue;
        boxer.AddEnds(bezier.data());
        pieces.insert(pieces.end(), bezier.begin(), bezier.end());
    }
    for (std::size_t at = 0; at < pieces.size(); at += size)
        boxer.Refine(pieces.data() + at);
    return boxer.Box();
}

bool GK_NurbsCurve::Transform(const GK_Xform& xform) {
    if (!xform.IsFinite() || !CVLayoutOk(*this))
        return false;
    const auto& m = xform.m_xform;
    if ((m[3][0] != 0.0 || m[3][1] != 0.0 || m[3][2] != 0.0 || m[3][3] != 1.0) && !m_is_rat)
        MakeRational(*this); // a projective map gives the CVs weights
    std::vector<GK_4dPoint> moved(static_cast<std::size_t>(m_cv_count));
    bool leavesPlane = false;
    for (int i = 0; i < m_cv_count; ++i) {
        GK_4dPoint h;
        GetCV(i, h);
        moved[i] = xform * h;
        if ((m_dim < 2 && moved[i].y != 0.0) || (m_dim < 3 && moved[i].z != 0.0))
            leavesPlane = true;
    }
    // A planar curve moved out of its plane needs the coordinate it did not have.
    if (leavesPlane)
        ChangeDimension(*this, kMaxDimension);
    bool ok = true;
    for (int i = 0; i < m_cv_count; ++i) {
        SetCV(i, moved[i]);
        ok = ok && std::isfinite(moved[i].x) && std::isfinite(moved[i].y) &&
             std::isfinite(moved[i].z) && std::isfinite(moved[i].w);
    }
    return ok;
}

bool GK_NurbsCurve::Reverse() {
    if (m_cv_count < 1 || !CVLayoutOk(*this))
        return false;
    const int size = CVSize();
    double* cv = m_cv.Array();
    for (int i = 0, j = m_cv_count - 1; i < j; ++i, --j)
        std::swap_ranges(cv + static_cast<std::size_t>(i) * size,
                         cv + static_cast<std::size_t>(i + 1) * size,
                         cv + static_cast<std::size_t>(j) * size);
    // Reflected knots: the reversed curve at -t is the original at t.
    m_knot.Reverse();
    for (double& k : m_knot)
        k = -k;
    return true;
}

int GK_NurbsCurve::IsPolyline(GK_SimpleArray<GK_3dPoint>* points) const {
    if (m_order != 2 || m_cv_count < 2 || !CVLayoutOk(*this))
        return 0;
    if (points) {
        points->Empty();
        points->Reserve(m_cv_count);
        for (int i = 0; i < m_cv_count; ++i)
            points->Append(Euclidean(ControlPoint(*this, i)));
    }
    return m_cv_count;
}

namespace {

// Whether a Bezier piece stays within `tol` of the line. With positive weights the piece
// lies in the hull of its control points, so control points within reach settle it; a
// point of the curve out of reach refutes it; otherwise the piece is halved. Pieces still
// undecided at the depth limit count as out of reach, so the answer errs only towards false.
bool BezierNearLine(const std::vector<HPoint>& cv, const GK_3dPoint& a, const GK_3dPoint& b,
                    double tol) {
    const int p = static_cast<int>(cv.size()) - 1;
    constexpr int kMaxDepth = 40;
    std::vector<std::vector<HPoint>> stack{cv};
    std::vector<int> depth{0};
    std::vector<HPoint> work;
    while (!stack.empty()) {
        const std::vector<HPoint> piece = std::move(stack.back());
        const int d = depth.back();
        stack.pop_back();
        depth.pop_back();
        bool inside = true;
        for (const HPoint& h : piece)
            if (!(GK_DistanceFromLine(Euclidean(h), a, b, tol) <= tol)) {
                inside = false;
                break;
            }
        if (inside)
            continue;
        if (!(GK_DistanceFromLine(Euclidean(piece[0]), a, b, tol) <= tol) ||
            !(GK_DistanceFromLine(Euclidean(piece[p]), a, b, tol) <= tol) || d >= kMaxDepth)
            return false;
        std::vector<HPoint> left(piece.size()), right(piece.size());
        work = piece;
        left[0] = work[0];
        right[p] = work[p];
        for (int r = 1; r <= p; ++r) {
            for (int j = 0; j + r <= p; ++j)
                work[j] = Lerp(work[j], work[j + 1], 0.5);
            left[r] = work[0];
            right[p - r] = work[p - r];
        }
        stack.push_back(std::move(left));
        depth.push_back(d + 1);
        stack.push_back(std::move(right));
        depth.push_back(d + 1);
    }
    return true;
}

} // namespace

bool GK_NurbsCurve::StaysNearLine(const GK_3dPoint& from, const GK_3dPoint& to,
                                  double tolerance) const {
    if (!(tolerance >= 0.0) || !from.IsValid() || !to.IsValid() || !IsValid())
        return false;
    // Control points within reach are enough, and the usual case.
    bool all = true;
    for (int i = 0; i < m_cv_count && all; ++i)
        all = GK_DistanceFromLine(Euclidean(ControlPoint(*this, i)), from, to, tolerance) <=
              tolerance;
    if (all)
        return true;
    // Otherwise span by span in Bezier form, as the box is computed.
    const int p = Degree();
    std::vector<HPoint> bezier(static_cast<std::size_t>(p) + 1);
    Scratch scratch(m_order);
    const bool single = SingleBezierSpan(*this);
    for (int span = p - 1; span <= m_cv_count - 2; ++span) {
        if (!BezierSpan(*this, span, scratch, bezier, single))
            continue;
        if (!BezierNearLine(bezier, from, to, tolerance))
            return false;
    }
    return true;
}
