#include "host/geometry/VelmoCreateHatches.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

struct LoopSet {
    std::vector<std::unique_ptr<GK_Curve>> owned;
    CArgsVelmoHatch args;

    void Add(GK_Curve* c) {
        owned.emplace_back(c);
        args.CurveList().Append(c);
    }
    void AddSquare(double x, double y, double s) {
        GK_SimpleArray<GK_3dPoint> p;
        p.Append({x, y, 0});
        p.Append({x + s, y, 0});
        p.Append({x + s, y + s, 0});
        p.Append({x, y + s, 0});
        p.Append({x, y, 0});
        Add(new GK_PolylineCurve(p));
    }
    // A circle of four cubic Beziers.
    void AddCircle(double cx, double cy, double r) {
        const double k = 0.5522847498 * r;
        auto* c = new GK_PolyCurve;
        const GK_3dPoint pts[13] = {{cx + r, cy, 0}, {cx + r, cy + k, 0}, {cx + k, cy + r, 0},
                                    {cx, cy + r, 0}, {cx - k, cy + r, 0}, {cx - r, cy + k, 0},
                                    {cx - r, cy, 0}, {cx - r, cy - k, 0}, {cx - k, cy - r, 0},
                                    {cx, cy - r, 0}, {cx + k, cy - r, 0}, {cx + r, cy - k, 0},
                                    {cx + r, cy, 0}};
        for (int s = 0; s < 4; ++s) {
            auto* b = new GK_NurbsCurve(3, false, 4, 4);
            b->MakeClampedUniformKnotVector();
            for (int i = 0; i < 4; ++i)
                b->SetCV(i, pts[3 * s + i]);
            c->Append(b);
        }
        Add(c);
    }
};

void Run(benchmark::State& state, const LoopSet& set, int expected) {
    for (auto _ : state) {
        GK_SimpleArray<GK_Hatch*> hatches;
        const bool ok = VelmoCreateHatches(set.args, 0.001, hatches);
        if (!ok || hatches.Count() != expected)
            state.SkipWithError("unexpected hatch count");
        for (GK_Hatch* h : hatches)
            delete h;
    }
    state.SetItemsProcessed(state.iterations() * set.args.CurveList().Count());
}

// A page of separate filled squares: every loop its own hatch.
void BM_HatchesDisjointSquares(benchmark::State& state) {
    LoopSet set;
    for (int i = 0; i < 10000; ++i)
        set.AddSquare((i % 100) * 1.0, (i / 100) * 1.0, 0.8);
    Run(state, set, 10000);
}
BENCHMARK(BM_HatchesDisjointSquares)->Unit(benchmark::kMillisecond);

// One outer loop perforated by a 100 x 100 grid of holes: one hatch of 10,001 loops.
void BM_HatchesGridOfHoles(benchmark::State& state) {
    LoopSet set;
    set.AddSquare(-1.0, -1.0, 102.0);
    for (int i = 0; i < 10000; ++i)
        set.AddSquare((i % 100) * 1.0, (i / 100) * 1.0, 0.5);
    Run(state, set, 1);
}
BENCHMARK(BM_HatchesGridOfHoles)->Unit(benchmark::kMillisecond);

// Curved loops: 2,500 rings, each a circle of Beziers with a smaller one inside.
void BM_HatchesBezierRings(benchmark::State& state) {
    LoopSet set;
    for (int i = 0; i < 2500; ++i) {
        const double x = (i % 50) * 3.0, y = (i / 50) * 3.0;
        set.AddCircle(x, y, 1.2);
        set.AddCircle(x, y, 0.7);
    }
    Run(state, set, 2500);
}
BENCHMARK(BM_HatchesBezierRings)->Unit(benchmark::kMillisecond);

} // namespace
