// A whole file: Open (chain, trailers, the rescue scan), then the load of every table entry,
// the page count, every page and the optional content.
#include "pdf/xref/PDFDocument.h"

#include <cstdint>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
    PDFDocument doc(&input);
    if (doc.Open() != kPdfOk)
        return 0;
    for (std::size_t i = 0; i < doc.entries.size() && i < 10000; ++i) {
        PDFToken* object = nullptr;
        (void)doc.LoadObject(static_cast<std::int32_t>(i), doc.entries[i].generation, &object);
    }
    std::int32_t pages = 0;
    if (doc.PageCount(&pages) == kPdfOk)
        for (std::int32_t p = 0; p < pages && p < 64; ++p)
            (void)doc.LoadPageProperties(p);
    doc.LoadOptionalContent();
    return 0;
}
