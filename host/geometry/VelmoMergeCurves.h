#pragma once
// Joining of curves end to end, as the host's join command does it.
#include "host/base/GK_Array.h"
#include "host/geometry/GK_Curve.h"

// Joins the input curves where ends meet within `tolerance`, reversing a curve where that
// is needed. Returns 1 when at least one join was made; `output` then holds every curve,
// joined chains as new GK_PolyCurve objects and lone curves as duplicates, all owned by the
// caller. Returns 0 when no two curves could be joined; `output` is then left empty. The
// input curves are never changed or taken over. `flags` is reserved and must be 0. When
// `indices` is given it receives, per output curve, the input index its chain started with.
int VelmoMergeCurves(const GK_SimpleArray<GK_Curve*>& input, GK_SimpleArray<GK_Curve*>& output,
                     double tolerance, int flags, GK_SimpleArray<int>* indices);
