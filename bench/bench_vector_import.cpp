// A whole PDF import of a large vector drawing: one page of stroked paths, dashed lines drawn
// as rows of separate two-point subpaths, and filled regions, read through the plug-in's own
// entry on a fresh headless document each time.
//
// The drawing is generated here and written once to a temporary file: a classic
// cross-reference table and one page whose content stream is Flate-compressed, as producers
// write it. The full variant holds 100,000 strokes, 20,000 dash rows and 10,000 fills; the
// small one a tenth of each, so that the time ratio of the two shows how the import scales.
#include "shell/CQuillonPlugIn.h"

#include "host/base/GK_String.h"
#include "host/doc/CVelmoDoc.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include "BenchImport.h"
#include "BenchSupport.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>
#include <zlib.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <numbers>
#include <string>

namespace {

// A fixed generator, so that every run and every machine draws the same picture.
class Lcg {
public:
    std::uint32_t Next() {
        m_state = m_state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<std::uint32_t>(m_state >> 33);
    }
    int Int(int lo, int hi) { return lo + static_cast<int>(Next() % (hi - lo + 1)); } // [lo, hi]
    double Real(double lo, double hi) { return lo + (hi - lo) * (Next() / 2147483648.0); }
    // A multiple of a quarter in [lo, hi]: exact in both the file and in binary.
    double Quarter(double lo, double hi) {
        return lo + 0.25 * Int(0, static_cast<int>((hi - lo) * 4));
    }

private:
    std::uint64_t m_state = 0x2545F4914F6CDD1Dull;
};

constexpr double kPageWidth = 3000.0;
constexpr double kPageHeight = 2000.0;

// What a drawing holds, to set beside what reached the document.
struct DrawingCounts {
    int strokes = 0;
    int dashRows = 0;
    int slantedRows = 0;
    int dashSubpaths = 0;
    int fills = 0;
};

class ContentWriter {
public:
    std::string text;

    void Num(double v, int decimals = 2) {
        char buf[64];
        const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, decimals);
        // Trailing zeros only make the stream longer.
        char* end = r.ptr;
        if (decimals > 0) {
            while (end[-1] == '0')
                --end;
            if (end[-1] == '.')
                --end;
        }
        text.append(buf, end).push_back(' ');
    }
    void Point(double x, double y, const char* op, int decimals = 2) {
        Num(x, decimals);
        Num(y, decimals);
        if (*op)
            text.append(op).push_back('\n');
    }
    void Op(const char* op) { text.append(op).push_back('\n'); }
    void Colour(Lcg& rnd, const char* op) {
        Num(rnd.Real(0, 1), 3);
        Num(rnd.Real(0, 1), 3);
        Num(rnd.Real(0, 1), 3);
        Op(op);
    }
};

// Strokes: half single lines, a third short polylines, the rest Béziers, with the width and
// the colour changing now and then.
void WriteStrokes(ContentWriter& w, Lcg& rnd, int count) {
    for (int i = 0; i < count; ++i) {
        if (i % 53 == 0) {
            w.Num(rnd.Quarter(0.25, 3.0));
            w.Op("w");
        }
        if (i % 37 == 0)
            w.Colour(rnd, "RG");
        double x = rnd.Real(50, kPageWidth - 50), y = rnd.Real(50, kPageHeight - 50);
        w.Point(x, y, "m");
        const int kind = rnd.Int(0, 9);
        if (kind < 5) {
            w.Point(x + rnd.Real(-40, 40), y + rnd.Real(5, 40), "l");
        } else if (kind < 8) {
            for (int k = rnd.Int(2, 5); k > 0; --k) {
                x += rnd.Real(5, 40);
                y += rnd.Real(-30, 30);
                w.Point(x, y, "l");
            }
        } else {
            for (int k = rnd.Int(1, 2); k > 0; --k) {
                const double dx = rnd.Real(10, 40), dy = rnd.Real(-30, 30);
                w.Point(x + dx * 0.3, y + dy + 15, "");
                w.Point(x + dx * 0.7, y + dy - 15, "");
                x += dx;
                y += dy;
                w.Point(x, y, "c");
            }
        }
        w.Op("S");
    }
}

// Dash rows: N equal dashes with equal gaps along one line, each dash its own subpath, one
// stroke per row. Horizontal and vertical rows sit on quarter units; slanted rows have any
// angle and four decimals, as a producer that computes them would write.
void WriteDashRows(ContentWriter& w, Lcg& rnd, int count, DrawingCounts& counts) {
    for (int i = 0; i < count; ++i) {
        if (i % 41 == 0) {
            w.Num(rnd.Quarter(0.25, 1.5));
            w.Op("w");
        }
        if (i % 29 == 0)
            w.Colour(rnd, "RG");
        const int n = rnd.Int(4, 30);
        const double dash = rnd.Quarter(1.0, 6.0), gap = rnd.Quarter(0.5, 4.0);
        const double x0 = rnd.Quarter(400, kPageWidth - 400);
        const double y0 = rnd.Quarter(400, kPageHeight - 400);
        double ux = 1.0, uy = 0.0;
        int decimals = 2;
        switch (i % 3) {
        case 0:
            break;
        case 1:
            ux = 0.0;
            uy = 1.0;
            break;
        default: {
            const double angle = rnd.Real(10, 170) * std::numbers::pi / 180.0;
            ux = std::cos(angle);
            uy = std::sin(angle);
            decimals = 4;
            ++counts.slantedRows;
        }
        }
        for (int k = 0; k < n; ++k) {
            const double s = k * (dash + gap);
            w.Point(x0 + ux * s, y0 + uy * s, "m", decimals);
            w.Point(x0 + ux * (s + dash), y0 + uy * (s + dash), "l", decimals);
        }
        w.Op("S");
        counts.dashSubpaths += n;
    }
    counts.dashRows += count;
}

void Rectangle(ContentWriter& w, double x, double y, double width, double height, bool clockwise) {
    w.Point(x, y, "m");
    if (clockwise) {
        w.Point(x, y + height, "l");
        w.Point(x + width, y + height, "l");
        w.Point(x + width, y, "l");
    } else {
        w.Point(x + width, y, "l");
        w.Point(x + width, y + height, "l");
        w.Point(x, y + height, "l");
    }
    w.Op("h");
}

// Fills: rectangles (drawn and as `re`), triangles, rectangles with a rectangular hole under
// either rule, and some filled and stroked at once.
void WriteFills(ContentWriter& w, Lcg& rnd, int count) {
    for (int i = 0; i < count; ++i) {
        if (i % 17 == 0)
            w.Colour(rnd, "rg");
        const double x = rnd.Real(20, kPageWidth - 120), y = rnd.Real(20, kPageHeight - 120);
        const double width = rnd.Real(10, 80), height = rnd.Real(10, 80);
        const int kind = rnd.Int(0, 9);
        if (kind < 2) {
            w.Num(x);
            w.Num(y);
            w.Num(width);
            w.Num(height);
            w.Op("re f");
        } else if (kind < 4) {
            Rectangle(w, x, y, width, height, false);
            w.Op("f");
        } else if (kind < 7) {
            w.Point(x, y, "m");
            w.Point(x + width, y + rnd.Real(0, height / 2), "l");
            w.Point(x + rnd.Real(0, width), y + height, "l");
            w.Op(kind == 6 ? "h f*" : "h f");
        } else if (kind < 9) {
            // The hole is the second subpath: under the even-odd rule any direction, under
            // the nonzero rule drawn the other way round.
            Rectangle(w, x, y, width, height, false);
            Rectangle(w, x + width / 4, y + height / 4, width / 2, height / 2, kind == 8);
            w.Op(kind == 7 ? "f*" : "f");
        } else {
            Rectangle(w, x, y, width, height, false);
            w.Op("B");
        }
    }
}

using tarquil::bench::Deflate;

std::string DrawingFile(int strokes, int dashRows, int fills, DrawingCounts& counts) {
    Lcg rnd;
    ContentWriter w;
    w.Op("1 J 1 j");
    WriteStrokes(w, rnd, strokes);
    WriteDashRows(w, rnd, dashRows, counts);
    WriteFills(w, rnd, fills);
    counts.strokes = strokes;
    counts.fills = fills;
    const std::string data = Deflate(w.text);

    return tarquil::bench::AssemblePdf(
        {"<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
         "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 3000 2000] /Resources << >> "
         "/Contents 4 0 R >>",
         "<< /Filter /FlateDecode /Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
             "\nendstream"});
}

// The file of one size, written on first use and removed at exit.
struct DrawingOnDisk {
    DrawingCounts counts;
    tarquil::bench::FileOnDisk file;

    explicit DrawingOnDisk(int tenths)
        : file("tarquil-bench-" + std::to_string(tenths), "drawing.pdf",
               DrawingFile(10000 * tenths, 2000 * tenths, 1000 * tenths, counts)) {}
};

const DrawingOnDisk& Drawing(int tenths) {
    static std::map<int, std::unique_ptr<DrawingOnDisk>> files;
    auto& slot = files[tenths];
    if (!slot)
        slot = std::make_unique<DrawingOnDisk>(tenths);
    return *slot;
}

// Argument: the size in tenths of the full drawing.
void VectorImport(benchmark::State& state) {
    const DrawingOnDisk& drawing = Drawing(static_cast<int>(state.range(0)));
    tarquil::bench::QuietHost();
    int curves = 0, dashed = 0, hatches = 0;
    tarquil::bench::TimeImports(state, drawing.file.path, [&](const CVelmoDoc& doc) {
        curves = dashed = hatches = 0;
        for (int i = 0; i < doc.ObjectCount(); ++i) {
            const CVelmoObject& object = doc.Object(i);
            if (object.ObjectKind() == CVelmoObject::curve_object) {
                ++curves;
                dashed += object.Attributes().m_linetype_index >= 0;
            } else if (object.ObjectKind() == CVelmoObject::hatch_object) {
                ++hatches;
            }
        }
    });
    const DrawingCounts& in = drawing.counts;
    state.counters["in_strokes"] = in.strokes;
    state.counters["in_dash_rows"] = in.dashRows;
    state.counters["in_slanted_rows"] = in.slantedRows;
    state.counters["in_dash_subpaths"] = in.dashSubpaths;
    state.counters["in_fills"] = in.fills;
    state.counters["file_MB"] = drawing.file.megabytes;
    state.counters["curves"] = curves;
    state.counters["dashed_curves"] = dashed; // curves that carry a linetype
    state.counters["hatches"] = hatches;
}
BENCHMARK(VectorImport)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

} // namespace
