// A whole PDF import of a page of text: 50,000 runs in four fonts, read through the plug-in's
// own entry on a fresh headless document each time, with a fixed list of installed families
// so that every machine matches the same way.
//
// The fonts are what producers write: a standard font without widths, a TrueType font with
// /Widths and a descriptor, a simple font with a /Differences encoding, and a Type0 font with
// Identity-H and a ToUnicode CMap of 4,096 codes. The font changes before every run, so a
// page that copied font tables at each Tf would show it here. The small variant holds a tenth
// of the runs, so that the ratio of the two times shows how the import scales.
#include "shell/CQuillonPlugIn.h"

#include "host/base/GK_String.h"
#include "host/base/VmFontList.h"
#include "host/doc/CVelmoDoc.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include "BenchImport.h"
#include "BenchSupport.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using tarquil::bench::Deflate;

constexpr int kFonts = 4;

// The content: rows of runs down a tall page, each run in the next font. Simple fonts show
// words of Latin text, the Type0 font two-byte codes from its CMap; every tenth run is a TJ.
std::string Content(int runs) {
    static const char* const words[] = {"Section",     "A-A",    "Scale 1:50", "Drawn", "Checked",
                                        "Title block", "Rev. 3", "Level 2",    "North", "Detail"};
    std::string text;
    char line[160];
    for (int i = 0; i < runs; ++i) {
        const int font = i % kFonts;
        const double x = 20 + (i % 8) * 70.0, y = 20 + (i / 8) * 12.0;
        std::snprintf(line, sizeof line, "BT /F%d 9 Tf %g %g Td ", font + 1, x, y);
        text += line;
        if (font == 3) {
            std::snprintf(line, sizeof line, "<%04X%04X%04X> Tj ET\n", 1 + i % 4000, 2 + i % 4000,
                          3 + i % 4000);
            text += line;
        } else if (i % 10 == 0) {
            text +=
                std::string("[(") + words[i % 10] + ") -250 (" + words[(i + 3) % 10] + ")] TJ ET\n";
        } else {
            text += std::string("(") + words[i % 10] + ") Tj ET\n";
        }
    }
    return text;
}

std::string ToUnicodeCMap() {
    std::string cmap = "/CIDInit /ProcSet findresource begin 12 dict begin begincmap\n"
                       "1 begincodespacerange <0000> <FFFF> endcodespacerange\n";
    char line[64];
    for (int block = 0; block < 41; ++block) {
        cmap += "100 beginbfrange\n";
        for (int k = 0; k < 100; ++k) {
            const int code = 1 + block * 100 + k;
            std::snprintf(line, sizeof line, "<%04X> <%04X> <%04X>\n", code, code, 0x4E00 + code);
            cmap += line;
        }
        cmap += "endbfrange\n";
    }
    return cmap + "endcmap CMapName currentdict /CMap defineresource pop end end\n";
}

std::string TextFile(int runs) {
    const std::string content = Deflate(Content(runs));
    const std::string cmap = Deflate(ToUnicodeCMap());
    std::string widths;
    for (int c = 32; c < 127; ++c)
        widths += std::to_string(400 + (c * 37) % 300) + " ";
    const double height = 40 + (runs / 8 + 1) * 12.0;
    const std::vector<std::string> bodies = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 600 " + std::to_string(height) +
            "] /Resources << /Font << /F1 5 0 R /F2 6 0 R /F3 7 0 R /F4 8 0 R >> >> "
            "/Contents 4 0 R >>",
        "<< /Filter /FlateDecode /Length " + std::to_string(content.size()) + " >>\nstream\n" +
            content + "\nendstream",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
        "<< /Type /Font /Subtype /TrueType /BaseFont /ABCDEF+ArialMT /FirstChar 32 "
        "/LastChar 126 /Widths [" +
            widths +
            "] /FontDescriptor << /Type /FontDescriptor /FontName /ABCDEF+ArialMT /Flags 32 "
            "/CapHeight 716 /Ascent 905 /Descent -212 /FontBBox [-665 -325 2000 1006] >> >>",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Times-Bold /Encoding << /BaseEncoding "
        "/WinAnsiEncoding /Differences [65 /Aring /Ccedilla /Eacute 120 /multiply] >> >>",
        "<< /Type /Font /Subtype /Type0 /BaseFont /GHIJKL+SimSun /Encoding /Identity-H "
        "/ToUnicode 9 0 R /DescendantFonts [<< /Type /Font /Subtype /CIDFontType2 "
        "/BaseFont /GHIJKL+SimSun /CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) "
        "/Supplement 0 >> /DW 1000 /W [1 [500 500 500] 100 200 600] /FontDescriptor "
        "<< /Flags 4 /CapHeight 700 >> >>] >>",
        "<< /Filter /FlateDecode /Length " + std::to_string(cmap.size()) + " >>\nstream\n" + cmap +
            "\nendstream"};
    return tarquil::bench::AssemblePdf(bodies);
}

// The file of one size, written on first use and removed at exit.
struct TextOnDisk {
    int runs = 0;
    tarquil::bench::FileOnDisk file;

    explicit TextOnDisk(int tenths)
        : runs(5000 * tenths),
          file("tarquil-bench-text-" + std::to_string(tenths), "text.pdf", TextFile(runs)) {}
};

const TextOnDisk& TextPage(int tenths) {
    static std::map<int, std::unique_ptr<TextOnDisk>> files;
    auto& slot = files[tenths];
    if (!slot)
        slot = std::make_unique<TextOnDisk>(tenths);
    return *slot;
}

// Argument: the number of runs in tenths of 50,000.
void TextImport(benchmark::State& state) {
    const TextOnDisk& page = TextPage(static_cast<int>(state.range(0)));
    tarquil::bench::QuietHost();
    // Three of the four fonts find a family; the Type0 font is reported missing once.
    VmSetFontFamilies(std::vector<std::wstring>{L"Arial", L"Helvetica", L"Times New Roman"});
    int texts = 0;
    tarquil::bench::TimeImports(state, page.file.path,
                                [&](const CVelmoDoc& doc) { texts = doc.ObjectCount(); });
    VmSetFontFamilies(std::nullopt);
    state.counters["in_runs"] = page.runs;
    state.counters["texts"] = texts;
    state.counters["file_MB"] = page.file.megabytes;
}
BENCHMARK(TextImport)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

} // namespace
