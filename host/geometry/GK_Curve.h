#pragma once
// Geometry with a bounding box and transformations, and the curve classes built on it.
#include "host/base/GK_Array.h"
#include "host/geometry/GK_Object.h"
#include "host/geometry/GK_Point.h"

class GK_Geometry : public GK_Object {
public:
    ~GK_Geometry() override;
    // Box of the geometry itself (for curves: of the curve, not of its control points).
    virtual GK_BoundingBox BoundingBox() const = 0;
    virtual bool Transform(const GK_Xform& xform) = 0;
    virtual GK_Geometry* Duplicate() const = 0;
    virtual int Dimension() const { return 3; }

    bool Translate(const GK_3dVector& delta) { return Transform(GK_Xform::Translation(delta)); }
    // Uniform scale about the origin.
    bool Scale(double scale) { return Transform(GK_Xform::Scale(scale)); }
};

class GK_Curve : public GK_Geometry {
public:
    // The host's curve classes, so that code which treats them alike can tell them apart
    // without a search of the class tree. A class derived from one of them answers as it does.
    enum class Type { Line, Polyline, PolyCurve, Nurbs, Other };
    virtual Type CurveType() const { return Type::Other; }

    virtual GK_Interval Domain() const = 0;
    virtual GK_3dPoint PointAt(double t) const = 0;
    virtual bool Reverse() = 0; // same shape, opposite direction
    // When the curve is a chain of straight segments, fills `points` (when given) with its
    // vertices and returns their count; otherwise returns 0.
    virtual int IsPolyline(GK_SimpleArray<GK_3dPoint>* points = nullptr) const = 0;
    virtual GK_Curve* DuplicateCurve() const = 0;
    GK_Geometry* Duplicate() const override { return DuplicateCurve(); }

    GK_3dPoint PointAtStart() const { return PointAt(Domain().t0); }
    GK_3dPoint PointAtEnd() const { return PointAt(Domain().t1); }
    // Closed when start and end coincide (and the curve is not a degenerate point).
    virtual bool IsClosed() const;
    // Whether every point of the curve lies within `tolerance` of the line through its
    // start and end. A curve whose ends meet is linear only when it stays within
    // `tolerance` of its start.
    virtual bool IsLinear(double tolerance) const;
    // Whether every point of the curve lies within `tolerance` of the line through `from`
    // and `to`, or of `from` alone when the two are within `tolerance` of each other. May
    // answer false for a curve it cannot bound (a conservative test), never true wrongly.
    virtual bool StaysNearLine(const GK_3dPoint& from, const GK_3dPoint& to,
                               double tolerance) const;
    // Gives back memory a finished curve does not need (capacity grown while it was built),
    // leaving its points, domain and evaluation as they are.
    virtual void Compact() {}
};

struct GK_Line {
    GK_3dPoint from, to;
};

class GK_LineCurve : public GK_Curve {
public:
    static constexpr Type kType = Type::Line;
    Type CurveType() const override { return kType; }

    GK_Line m_line;
    GK_Interval m_t{0.0, 1.0};

    GK_LineCurve() = default;
    GK_LineCurve(const GK_3dPoint& from, const GK_3dPoint& to) : m_line{from, to} {}

    bool IsValid(GK_TextLog* log = nullptr) const override;
    GK_BoundingBox BoundingBox() const override;
    bool Transform(const GK_Xform& xform) override;
    GK_Interval Domain() const override { return m_t; }
    GK_3dPoint PointAt(double t) const override;
    bool Reverse() override;
    int IsPolyline(GK_SimpleArray<GK_3dPoint>* points = nullptr) const override;
    GK_Curve* DuplicateCurve() const override { return new GK_LineCurve(*this); }
    bool IsClosed() const override { return false; }
    bool IsLinear(double tolerance) const override;
};

class GK_PolylineCurve : public GK_Curve {
public:
    static constexpr Type kType = Type::Polyline;
    Type CurveType() const override { return kType; }

    GK_SimpleArray<GK_3dPoint> m_pline;
    GK_SimpleArray<double> m_t; // one parameter per point, 0, 1, 2, ... by default

    GK_PolylineCurve() = default;
    explicit GK_PolylineCurve(const GK_SimpleArray<GK_3dPoint>& points);

    int PointCount() const { return m_pline.Count(); }
    bool IsValid(GK_TextLog* log = nullptr) const override;
    GK_BoundingBox BoundingBox() const override;
    bool Transform(const GK_Xform& xform) override;
    GK_Interval Domain() const override;
    GK_3dPoint PointAt(double t) const override;
    bool Reverse() override;
    int IsPolyline(GK_SimpleArray<GK_3dPoint>* points = nullptr) const override;
    GK_Curve* DuplicateCurve() const override { return new GK_PolylineCurve(*this); }
    // Removes vertices so that no segment is shorter than `tolerance`, keeping both ends
    // (the last kept interior vertex gives way to the end point). Returns the number of
    // points removed.
    int RemoveShortSegments(double tolerance);
    // Also lets go of the parameters when they are the point indices 0, 1, 2, ... that an
    // empty m_t stands for. Reverse and RemoveShortSegments treat the two forms differently,
    // hence only for a finished curve.
    void Compact() override;
};

// A chain of curves joined end to end. Owns its segments.
class GK_PolyCurve : public GK_Curve {
public:
    static constexpr Type kType = Type::PolyCurve;
    Type CurveType() const override { return kType; }

    GK_PolyCurve() = default;
    GK_PolyCurve(const GK_PolyCurve& other);
    GK_PolyCurve& operator=(const GK_PolyCurve&) = delete;
    ~GK_PolyCurve() override;

    // Takes ownership of the segment; the domain grows by the segment's own length.
    bool Append(GK_Curve* segment);
    int Count() const { return m_segment.Count(); }
    GK_Curve* SegmentCurve(int index) const;
    double SegmentParameter(int index) const { return m_t[index]; } // index 0..Count()

    bool IsValid(GK_TextLog* log = nullptr) const override;
    GK_BoundingBox BoundingBox() const override;
    bool Transform(const GK_Xform& xform) override;
    GK_Interval Domain() const override;
    GK_3dPoint PointAt(double t) const override;
    bool Reverse() override;
    int IsPolyline(GK_SimpleArray<GK_3dPoint>* points = nullptr) const override;
    GK_Curve* DuplicateCurve() const override { return new GK_PolyCurve(*this); }
    bool StaysNearLine(const GK_3dPoint& from, const GK_3dPoint& to,
                       double tolerance) const override;
    void Compact() override;

private:
    GK_SimpleArray<GK_Curve*> m_segment;
    GK_SimpleArray<double> m_t; // Count()+1 parameters once a segment is in
};

// A non-uniform rational B-spline. Knots follow the host's convention of
// order + cvCount - 2 values (no superfluous end knots), so a single cubic Bezier has
// the knot vector 0, 0, 0, 1, 1, 1.
class GK_NurbsCurve : public GK_Curve {
public:
    static constexpr Type kType = Type::Nurbs;
    Type CurveType() const override { return kType; }

    int m_dim = 0;
    bool m_is_rat = false;
    int m_order = 0;
    int m_cv_count = 0;
    GK_SimpleArray<double> m_knot;
    GK_SimpleArray<double> m_cv; // m_cv_count * CVSize() values; rational CVs are homogeneous

    GK_NurbsCurve() = default;
    GK_NurbsCurve(int dimension, bool isRational, int order, int cvCount);
    bool Create(int dimension, bool isRational, int order, int cvCount);

    int Order() const { return m_order; }
    int Degree() const { return m_order - 1; }
    int CVCount() const { return m_cv_count; }
    int KnotCount() const { return m_order + m_cv_count - 2; }
    bool IsRational() const { return m_is_rat; }
    int Dimension() const override { return m_dim; }
    int CVSize() const { return m_is_rat ? m_dim + 1 : m_dim; }

    bool SetKnot(int index, double value);
    double Knot(int index) const { return m_knot[index]; }
    bool SetCV(int index, const GK_3dPoint& point); // weight 1
    bool SetCV(int index, const GK_4dPoint& point); // homogeneous
    bool GetCV(int index, GK_3dPoint& point) const; // Euclidean
    bool GetCV(int index, GK_4dPoint& point) const; // homogeneous
    double Weight(int index) const;
    // Sets knots 0..order-2 to 0, then 1, 2, ... and the last order-1 to the top value.
    bool MakeClampedUniformKnotVector(double delta = 1.0);

    bool IsValid(GK_TextLog* log = nullptr) const override;
    GK_BoundingBox BoundingBox() const override;
    bool Transform(const GK_Xform& xform) override;
    GK_Interval Domain() const override;
    GK_3dPoint PointAt(double t) const override;
    bool Reverse() override;
    int IsPolyline(GK_SimpleArray<GK_3dPoint>* points = nullptr) const override;
    GK_Curve* DuplicateCurve() const override { return new GK_NurbsCurve(*this); }
    bool StaysNearLine(const GK_3dPoint& from, const GK_3dPoint& to,
                       double tolerance) const override;
};

// What dynamic_cast gives for the host's curve classes, found by their type: the curve as a
// `T`, or null.
template <class T> const T* GK_CurveCast(const GK_Curve* curve) {
    return curve && curve->CurveType() == T::kType ? static_cast<const T*>(curve) : nullptr;
}
template <class T> T* GK_CurveCast(GK_Curve* curve) {
    return curve && curve->CurveType() == T::kType ? static_cast<T*>(curve) : nullptr;
}
