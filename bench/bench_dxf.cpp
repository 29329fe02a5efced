// Writing a large document as DXF: 20,000 polylines of 50 vertices, 2,000 cubic splines,
// 2,000 hatches with a hole and 2,000 texts, into a stream that only counts the bytes. The
// writer holds one record at a time, so its memory does not grow with the document.
#include "cli/DocumentDxf.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace {

class CountingBuffer : public std::streambuf {
public:
    std::size_t count = 0;

protected:
    std::streamsize xsputn(const char*, std::streamsize n) override {
        count += static_cast<std::size_t>(n);
        return n;
    }
    int_type overflow(int_type c) override {
        ++count;
        return c;
    }
};

GK_PolylineCurve* Square(double x, double y, double size) {
    GK_SimpleArray<GK_3dPoint> points;
    for (const auto& [dx, dy] :
         {std::pair(0.0, 0.0), {size, 0.0}, {size, size}, {0.0, size}, {0.0, 0.0}})
        points.Append({x + dx, y + dy, 0.0});
    return new GK_PolylineCurve(points);
}

const CVelmoDoc& LargeDocument() {
    static CVelmoDoc doc;
    if (doc.ObjectCount() > 0)
        return doc;
    CVelmoObjectAttributes a;
    a.m_color = GK_Color(200, 10, 10);
    a.SetColorSource(GK_3dmObjectAttributes::color_from_object);
    for (int i = 0; i < 20000; ++i) {
        GK_SimpleArray<GK_3dPoint> points;
        for (int k = 0; k < 50; ++k)
            points.Append({i * 0.1 + k, std::sin(k * 0.3) * 7.0 + i / 3.0, 0.0});
        auto* object = new CVelmoCurveObject(a);
        object->SetCurve(new GK_PolylineCurve(points));
        doc.AddObject(object);
    }
    for (int i = 0; i < 2000; ++i) {
        auto* bezier = new GK_NurbsCurve(3, false, 4, 4);
        for (int k = 0; k < 4; ++k)
            bezier->SetCV(k, GK_3dPoint(i + k / 3.0, (k % 2) * 5.0 + i * 0.01, 0.0));
        bezier->MakeClampedUniformKnotVector();
        auto* object = new CVelmoCurveObject(a);
        object->SetCurve(bezier);
        doc.AddObject(object);
        auto* hatch = new GK_Hatch;
        hatch->AddLoop(new GK_HatchLoop(Square(i * 20.0, -50.0, 10.0), GK_HatchLoop::ltOuter));
        hatch->AddLoop(new GK_HatchLoop(Square(i * 20.0 + 2.0, -48.0, 3.0), GK_HatchLoop::ltInner));
        auto* hatchObject = new CVelmoHatch(a);
        hatchObject->SetHatch(hatch);
        doc.AddObject(hatchObject);
        GK_DimStyle style = doc.DimStyleTable().GetDefaultDimStyleProperties();
        style.SetTextHeight(2.5);
        const GK_Plane plane({i * 20.0, -80.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
        doc.AddTextObject(L"Room " + std::to_wstring(i), plane, plane.origin, style, a);
    }
    return doc;
}

void WriteLargeDocumentAsDxf(benchmark::State& state) {
    const CVelmoDoc& doc = LargeDocument();
    std::size_t bytes = 0;
    for (auto _ : state) {
        CountingBuffer buffer;
        std::ostream out(&buffer);
        std::vector<std::string> warnings;
        if (!WriteDocumentDxf(out, doc, warnings)) {
            state.SkipWithError("not written");
            return;
        }
        bytes = buffer.count;
    }
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}
BENCHMARK(WriteLargeDocumentAsDxf)->Unit(benchmark::kMillisecond);

} // namespace
