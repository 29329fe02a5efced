#include "host/geometry/VelmoMergeCurves.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

namespace {

struct CurveSet {
    std::vector<std::unique_ptr<GK_Curve>> owned;
    GK_SimpleArray<GK_Curve*> curves;

    void Add(GK_Curve* c) {
        owned.emplace_back(c);
        curves.Append(c);
    }
};

// `count` short segments forming `chains` long wavy chains, shuffled, a third reversed:
// what a drawing's outlines look like after the path parser split them.
CurveSet Chains(int count, int chains) {
    std::vector<std::pair<GK_3dPoint, GK_3dPoint>> segs;
    segs.reserve(count);
    const int perChain = count / chains;
    for (int c = 0; c < chains; ++c) {
        auto at = [c](int i) {
            const double x = 0.01 * i;
            return GK_3dPoint(x, 10.0 * c + std::sin(x), 0.0);
        };
        for (int i = 0; i < perChain; ++i)
            segs.emplace_back(at(i), at(i + 1));
    }
    std::mt19937 rng(42);
    std::shuffle(segs.begin(), segs.end(), rng);
    CurveSet set;
    for (const auto& [a, b] : segs) {
        if (rng() % 3 == 0)
            set.Add(new GK_LineCurve(b, a));
        else
            set.Add(new GK_LineCurve(a, b));
    }
    return set;
}

// `count` segments on a grid, none within tolerance of another: a hatch pattern.
CurveSet Disjoint(int count) {
    CurveSet set;
    for (int i = 0; i < count; ++i) {
        const double x = (i % 500) * 1.0, y = (i / 500) * 1.0;
        set.Add(new GK_LineCurve({x, y, 0.0}, {x + 0.5, y + 0.25, 0.0}));
    }
    return set;
}

// `count` segments fanning out from one centre: every end meets there.
CurveSet Fan(int count) {
    CurveSet set;
    for (int i = 0; i < count; ++i) {
        const double a = 6.283185307179586 * i / count;
        set.Add(new GK_LineCurve({0.0, 0.0, 0.0}, {std::cos(a), std::sin(a), 0.0}));
    }
    return set;
}

void RunMerge(benchmark::State& state, const CurveSet& set, int expected) {
    for (auto _ : state) {
        GK_SimpleArray<GK_Curve*> out;
        const int joined = VelmoMergeCurves(set.curves, out, 1e-6, 0, nullptr);
        benchmark::DoNotOptimize(joined);
        state.PauseTiming();
        const int produced = out.Count();
        for (GK_Curve* c : out)
            delete c;
        state.ResumeTiming();
        if (produced != expected) {
            state.SkipWithError("unexpected number of merged curves");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * set.curves.Count());
}

void BM_MergeLongChains(benchmark::State& state) {
    constexpr int kChains = 4;
    const CurveSet set = Chains(static_cast<int>(state.range(0)), kChains);
    RunMerge(state, set, kChains);
}

void BM_MergeDisjoint(benchmark::State& state) {
    const CurveSet set = Disjoint(static_cast<int>(state.range(0)));
    RunMerge(state, set, 0); // nothing joins, so nothing is output
}

void BM_MergeFan(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const CurveSet set = Fan(count);
    RunMerge(state, set, count / 2); // joined in pairs through the centre
}

} // namespace

BENCHMARK(BM_MergeLongChains)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MergeDisjoint)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MergeFan)->Arg(200000)->Unit(benchmark::kMillisecond);
