// Opening a large file and loading every object: 100,000 objects in the file and 100,000
// in 1,000 deflated object streams, found through a cross-reference stream.
#include "pdf/xref/PDFDocument.h"

#include "BenchSupport.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using tarquil::bench::Deflate;

std::string LargeFile(int plain, int streams, int perStream) {
    struct Row {
        int type;
        std::size_t second;
        int third;
    };
    std::vector<Row> rows(1, Row{0, 0, 0});
    std::string out = "%PDF-1.7\n";
    auto object = [&](const std::string& body) {
        rows.push_back({1, out.size(), 0});
        out.append(std::to_string(rows.size() - 1)).append(" 0 obj\n");
        out.append(body).append("\nendobj\n");
    };
    object("<< /Type /Catalog /Pages 2 0 R >>");
    object("<< /Type /Pages /Kids [] /Count 0 >>");
    for (int i = 0; i < plain; ++i)
        object("<< /Type /Annot /Rect [" + std::to_string(i) + " 0 10 10] /Contents (note " +
               std::to_string(i) + ") /Border [0 0 1] >>");
    for (int s = 0; s < streams; ++s) {
        const int container = static_cast<int>(rows.size());
        std::string head, body;
        for (int m = 0; m < perStream; ++m) {
            head.append(std::to_string(container + 1 + m)).append(" ");
            head.append(std::to_string(body.size())).append(" ");
            body.append("[").append(std::to_string(m)).append(" 1.5 (member) /Name << /K ");
            body.append(std::to_string(s)).append(" >>]\n");
        }
        const std::string data = Deflate(head + body);
        object("<< /Type /ObjStm /N " + std::to_string(perStream) + " /First " +
               std::to_string(head.size()) + " /Filter /FlateDecode /Length " +
               std::to_string(data.size()) + " >>\nstream\n" + data + "\nendstream");
        for (int m = 0; m < perStream; ++m)
            rows.push_back({2, static_cast<std::size_t>(container), m});
    }
    const std::size_t xref = out.size();
    rows.push_back({1, xref, 0});
    std::string table;
    for (const Row& r : rows) {
        table += static_cast<char>(r.type);
        for (int b = 3; b >= 0; --b)
            table += static_cast<char>((r.second >> (8 * b)) & 0xFF);
        table += static_cast<char>((r.third >> 8) & 0xFF);
        table += static_cast<char>(r.third & 0xFF);
    }
    out += std::to_string(rows.size() - 1) + " 0 obj\n<< /Type /XRef /Size " +
           std::to_string(rows.size()) + " /W [1 4 2] /Root 1 0 R /Length " +
           std::to_string(table.size()) + " >>\nstream\n" + table + "\nendstream\nendobj\n";
    out += "startxref\n" + std::to_string(xref) + "\n%%EOF\n";
    return out;
}

void OpenAndLoadEverything(benchmark::State& state) {
    static const std::string file = LargeFile(100000, 1000, 100);
    std::size_t loaded = 0;
    for (auto _ : state) {
        std::istringstream input(file);
        PDFDocument doc(&input);
        if (doc.Open() != kPdfOk) {
            state.SkipWithError("does not open");
            return;
        }
        loaded = 0;
        for (std::size_t i = 0; i < doc.entries.size(); ++i) {
            PDFToken* object = nullptr;
            loaded += doc.LoadObject(static_cast<std::int32_t>(i), doc.entries[i].generation,
                                     &object) == kPdfOk;
        }
    }
    state.counters["objects"] = static_cast<double>(loaded);
    state.counters["MB"] = static_cast<double>(file.size()) / 1e6;
}
BENCHMARK(OpenAndLoadEverything)->Unit(benchmark::kMillisecond);

} // namespace
