#pragma once
// A planar region filled with a pattern: outer loops with their holes.
//
// The stand-in keeps each loop as a closed curve in world coordinates lying in the hatch's
// plane (the host keeps 2-D curves in the plane's frame); callers only ever see 3-D loops
// through LoopCurve3d, so the difference does not show.
#include "host/base/GK_Array.h"
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Plane.h"

class GK_HatchLoop {
public:
    enum eLoopType { ltOuter = 0, ltInner = 1 };

    GK_HatchLoop() = default;
    // Takes ownership of the curve.
    GK_HatchLoop(GK_Curve* curve, eLoopType type) : m_curve(curve), m_type(type) {}
    GK_HatchLoop(const GK_HatchLoop& other);
    GK_HatchLoop& operator=(const GK_HatchLoop&) = delete;
    ~GK_HatchLoop();

    eLoopType Type() const { return m_type; }
    const GK_Curve* Curve() const { return m_curve; }
    bool IsValid() const;

private:
    // Only the hatch that owns the loop changes its curve, so that it knows when what it
    // keeps about its loops goes stale.
    friend class GK_Hatch;
    GK_Curve* m_curve = nullptr; // owned, closed
    eLoopType m_type = ltOuter;
};

class GK_Hatch : public GK_Geometry {
public:
    GK_Hatch() = default;
    GK_Hatch(const GK_Hatch& other);
    GK_Hatch& operator=(const GK_Hatch&) = delete;
    ~GK_Hatch() override;

    // Takes ownership of the loop. Outer loops come first, each followed by its holes.
    void AddLoop(GK_HatchLoop* loop);
    int LoopCount() const { return m_loops.Count(); }
    const GK_HatchLoop* Loop(int index) const;
    // A new closed curve of loop `index` in world coordinates, owned by the caller; null for
    // a bad index.
    GK_Curve* LoopCurve3d(int index) const;

    const GK_Plane& Plane() const { return m_plane; }
    void SetPlane(const GK_Plane& plane) {
        m_plane = plane;
        Changed();
    }
    int PatternIndex() const { return m_pattern_index; }
    void SetPatternIndex(int index) { m_pattern_index = index; }
    double PatternRotation() const { return m_pattern_rotation; }
    void SetPatternRotation(double rotation) { m_pattern_rotation = rotation; }
    double PatternScale() const { return m_pattern_scale; }
    void SetPatternScale(double scale) { m_pattern_scale = scale; }

    // At least one loop, the first outer, every loop a valid closed curve in the plane.
    // Worked out once and kept until the hatch changes: a hatch is checked at every step on
    // its way to the document. (The box is asked for once before and once after placement,
    // so it is not worth the room.)
    bool IsValid(GK_TextLog* log = nullptr) const override;
    GK_BoundingBox BoundingBox() const override;
    // Transforms the plane and every loop; the pattern scale follows a uniform scale.
    bool Transform(const GK_Xform& xform) override;
    GK_Geometry* Duplicate() const override { return new GK_Hatch(*this); }

private:
    // The loops change only through the hatch, so these are the only places where what is
    // kept goes stale.
    void Changed() { m_validity = kUnknown; }

    GK_Plane m_plane;
    int m_pattern_index = -1;
    double m_pattern_rotation = 0.0;
    double m_pattern_scale = 1.0;
    GK_SimpleArray<GK_HatchLoop*> m_loops; // owned
    static constexpr signed char kUnknown = -1;
    mutable signed char m_validity = kUnknown; // else 0 or 1
};
