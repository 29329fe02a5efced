// The font loader over fonts written by the input. The input's pieces, separated by
// "endobj", become objects 2, 3, ... of a well-formed file that this target writes around
// them, so that references between them work without the fuzzer having to keep a
// cross-reference table right. Object 2 is taken as the Font resource dictionary, and every
// one of its names is loaded.
#include "fonts/FontLoader.h"
#include "pdf/token/PDFTokens.h"
#include "pdf/xref/PDFDocument.h"

#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::string WriteFile(std::string_view input) {
    std::string text = "%PDF-1.7\n";
    std::vector<std::size_t> offsets{text.size()};
    text += "1 0 obj\n<< /Type /Catalog >>\nendobj\n";
    constexpr std::string_view kSeparator = "endobj";
    while (offsets.size() < 64) {
        const std::size_t end = input.find(kSeparator);
        offsets.push_back(text.size());
        text += std::to_string(offsets.size()) + " 0 obj\n";
        text += input.substr(0, end);
        text += "\nendobj\n";
        if (end == std::string_view::npos)
            break;
        input.remove_prefix(end + kSeparator.size());
    }
    const std::size_t xref = text.size();
    text += "xref\n0 " + std::to_string(offsets.size() + 1) + "\n0000000000 65535 f \n";
    char line[32];
    for (const std::size_t offset : offsets) {
        std::snprintf(line, sizeof line, "%010zu 00000 n \n", offset);
        text += line;
    }
    text += "trailer\n<< /Size " + std::to_string(offsets.size() + 1) +
            " /Root 1 0 R >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n";
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream input(
        WriteFile(std::string_view(reinterpret_cast<const char*>(data), size)));
    PDFDocument doc(&input);
    PDFToken* fonts = nullptr;
    if (doc.Open() != kPdfOk || doc.LoadObject(2, 0, &fonts) != kPdfOk || !fonts ||
        !fonts->IsType(kPdfKindDict))
        return 0;
    FontRecord font;
    for (const auto& entry : static_cast<PDFParserTokens::PDFDict*>(fonts)->entries)
        LoadFont(&doc, fonts, entry.first, font);
    return 0;
}
