#pragma once
// Metrics of the 14 standard fonts, which a PDF may use without /Widths. The data are
// generated from their metrics files (tools/make_font_tables.py); see
// StandardFontTables.cpp for how the pairs are keyed.
#include <cstddef>
#include <cstdint>

struct StandardWidthPair {
    std::int32_t key;   // a character code, or a Unicode value for an unencoded glyph
    std::int32_t width; // thousandths of the font size
};

struct StandardFontRecord {
    const char* name;
    std::int32_t capHeight; // 0 for the symbol fonts, which have none
    std::int32_t largestWidth;
    std::int32_t pairCount;
    const StandardWidthPair* pairs; // pairCount pairs sorted by key, then width
};

constexpr std::size_t kStandardFontCount = 14;
// In the order of search.
extern const StandardFontRecord kStandardFontTable[kStandardFontCount];
