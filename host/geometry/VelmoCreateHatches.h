#pragma once
// Hatch creation from closed planar boundary curves, as the host's hatch command does it.
#include "host/base/GK_Array.h"
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Hatch.h"

// The arguments of VelmoCreateHatches. The curves are borrowed: the caller keeps them.
class CArgsVelmoHatch {
public:
    GK_SimpleArray<const GK_Curve*>& CurveList() { return m_curves; }
    const GK_SimpleArray<const GK_Curve*>& CurveList() const { return m_curves; }
    int PatternIndex() const { return m_pattern_index; }
    void SetPatternIndex(int index) { m_pattern_index = index; }
    double PatternRotation() const { return m_pattern_rotation; }
    void SetPatternRotation(double rotation) { m_pattern_rotation = rotation; }
    double PatternScale() const { return m_pattern_scale; }
    void SetPatternScale(double scale) { m_pattern_scale = scale; }
    // Where the boundary curves came from; 0: given as curves. Nothing else is used here.
    int BoundarySource() const { return m_boundary_source; }
    void SetBoundarySource(int source) { m_boundary_source = source; }

private:
    GK_SimpleArray<const GK_Curve*> m_curves;
    int m_pattern_index = -1;
    double m_pattern_rotation = 0.0;
    double m_pattern_scale = 1.0;
    int m_boundary_source = 0;
};

// Makes hatches from the closed planar curves of `args`, sorting loops itself: a loop inside
// an even number of others is an outer loop, and the loops directly inside it are its holes.
// Curves that are not closed within `tolerance`, not planar or not in the plane of the first
// usable curve are left out. Returns false, with `hatches` unchanged, when no hatch could be
// made; otherwise appends the new hatches (owned by the caller) and returns true.
bool VelmoCreateHatches(const CArgsVelmoHatch& args, double tolerance,
                        GK_SimpleArray<GK_Hatch*>& hatches);
