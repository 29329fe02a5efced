// The lexical parser over arbitrary bytes: once without a document, as for content, and
// once with a document over the same bytes whose table points into them, so that indirect
// stream lengths load (and nest) through the object loader.
#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"
#include "pdf/xref/PDFDocument.h"

#include <cstdint>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    {
        auto input = MakeMemoryInput(bytes.data(), bytes.size());
        PDFParser parser(bytes.empty() ? nullptr : input.get(), nullptr);
        (void)parser.ParseUntil("");
        std::size_t total = 0;
        for (PDFToken* t : parser.operandStack)
            total += t->ToString().size();
        (void)total;
    }
    {
        std::istringstream input(bytes);
        PDFDocument document(&input);
        // Object i starts at every 16th byte, generation 0.
        document.entries.resize(size / 16 + 1);
        for (std::size_t i = 0; i < document.entries.size(); ++i) {
            document.entries[i].type = 1;
            document.entries[i].generation = 0;
            document.entries[i].offset = static_cast<std::int64_t>(i * 16);
        }
        PDFParser parser(&input, &document);
        (void)parser.ParseUntil("");
        PDFToken* out = nullptr;
        (void)document.LoadObject(static_cast<std::int32_t>(size % document.entries.size()), 0,
                                  &out);
    }
    return 0;
}
