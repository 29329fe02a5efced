// The page driver over arbitrary bytes with the plain graphics state: opening, every page's
// placement, content streams and annotation appearances through the interpreter.
#include "graphics/PageDriver.h"

#include <cstdint>
#include <cstdio>
#include <set>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    std::vector<char> bytes(data, data + size);
    std::FILE* file = fmemopen(bytes.data(), bytes.size(), "rb");
    if (!file)
        return 0;
    PDFGraphicsState state;
    // Every page, up to a bound that keeps one input quick.
    const PagePrompt allPages = [](int count, bool) {
        std::set<int> pages;
        for (int i = 0; i < count && i < 32; ++i)
            pages.insert(i);
        return pages;
    };
    (void)ReadDocument(file, state, true, allPages); // takes the file over and closes it
    return 0;
}
