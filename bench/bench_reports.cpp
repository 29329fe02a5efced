// Writing the reports of a large document: the JSON, compact and indented, and the SVG, of
// 20,000 polylines of 50 points and 10,000 hatches with a hole. Both are written as they are
// produced, so the cost should follow the bytes.
#include "cli/DocumentJson.h"
#include "cli/DocumentSvg.h"
#include "cli/JsonWriter.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <sstream>

namespace {

GK_PolylineCurve* Ring(double cx, double cy, double r, int points) {
    GK_SimpleArray<GK_3dPoint> p;
    for (int i = 0; i <= points; ++i) {
        const double a = 6.283185307179586 * (i % points) / points;
        p.Append({cx + r * std::cos(a), cy + r * std::sin(a), 0.0});
    }
    return new GK_PolylineCurve(p);
}

const CVelmoDoc& LargeDocument() {
    static const std::unique_ptr<CVelmoDoc> doc = [] {
        auto d = std::make_unique<CVelmoDoc>();
        CVelmoObjectAttributes attributes;
        for (int i = 0; i < 20000; ++i) {
            auto* object = new CVelmoCurveObject(attributes);
            object->SetCurve(Ring(i % 200 * 10.0, i / 200 * 10.0, 4.0, 50));
            d->AddObject(object);
        }
        for (int i = 0; i < 10000; ++i) {
            auto* hatch = new GK_Hatch;
            hatch->AddLoop(new GK_HatchLoop(Ring(i % 100 * 10.0, -i / 100 * 10.0, 4.0, 30),
                                            GK_HatchLoop::ltOuter));
            hatch->AddLoop(new GK_HatchLoop(Ring(i % 100 * 10.0, -i / 100 * 10.0, 1.0, 12),
                                            GK_HatchLoop::ltInner));
            auto* object = new CVelmoHatch(attributes);
            object->SetHatch(hatch);
            d->AddObject(object);
        }
        return d;
    }();
    return *doc;
}

void WriteJson(benchmark::State& state) {
    const CVelmoDoc& doc = LargeDocument();
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::ostringstream out;
        JsonWriter writer(out, static_cast<int>(state.range(0)));
        WriteDocumentJson(writer, doc, 1, {});
        benchmark::DoNotOptimize(writer.Finish());
        bytes = out.str().size();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(WriteJson)->Arg(-1)->Arg(2)->Unit(benchmark::kMillisecond);

void WriteSvg(benchmark::State& state) {
    const CVelmoDoc& doc = LargeDocument();
    std::size_t bytes = 0;
    for (auto _ : state) {
        std::ostringstream out;
        benchmark::DoNotOptimize(WriteDocumentSvg(out, doc));
        bytes = out.str().size();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(WriteSvg)->Unit(benchmark::kMillisecond);

} // namespace
