// Stroking under a clip path: a segment is tested against the edges of the clip near its
// line, found through the clip's index, so the cost should grow little with the clip's
// vertex count. This shows how much, for a page-sized rectangle and for polygonal clips of
// 100, 1,000 and 10,000 vertices.
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "output/PDFToVelmo.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>

namespace {

void BM_StrokeUnderClip(benchmark::State& state) {
    const int vertices = static_cast<int>(state.range(0));
    CVelmoDoc doc;
    CVelmoFileReadOptions options;
    PDFToVelmo sink(&doc, &options);
    // A regular polygon of radius 500 about (500, 500), closed.
    for (int i = 0; i <= vertices; ++i) {
        const double angle = 2.0 * std::numbers::pi * (i % vertices) / vertices;
        sink.clipElements.push_back(
            {500.0 + 500.0 * std::cos(angle), 500.0 + 500.0 * std::sin(angle), i ? 'l' : 'm'});
    }
    constexpr int kPaths = 10000;
    constexpr int kPoints = 11; // ten segments each
    std::size_t segments = 0;
    for (auto _ : state) {
        for (int path = 0; path < kPaths; ++path) {
            const double y = 100.0 + 800.0 * path / kPaths;
            sink.pathElements.clear();
            for (int k = 0; k < kPoints; ++k)
                sink.pathElements.push_back({50.0 + 90.0 * k, y + (k % 2) * 3.0, k ? 'l' : 'm'});
            sink.Stroke();
            segments += kPoints - 1;
        }
        state.PauseTiming();
        sink.DiscardPendingObjects();
        sink.pendingObjects.clear();
        state.ResumeTiming();
    }
    state.counters["segments"] =
        benchmark::Counter(static_cast<double>(segments), benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(BM_StrokeUnderClip)
    ->Arg(4)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
