#pragma once
// What a font means to text handling when no glyph is drawn: its name, its code translation
// and its metrics. The loader fills one record per font resource; the interpreter copies it
// into the graphics state.
#include "fonts/EncodingMap.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

// A ToUnicode table as the CMap gives it: code to value, both 32 bits. A value of two UTF-16
// units (a surrogate pair, say) is one 32-bit number here.
using CodeMap = std::map<std::uint32_t, std::uint32_t>;

struct FontRecord {
    std::string fontFamily;
    std::string fontRegistryOrdering = "unknown";
    bool fontItalic = false;
    double fontHeightScale = 1.0; // cap height, in units of the font size
    double fontBoxHeight = 1.0;
    double fontDescent = 0.0;
    // The width of a code without one. A load leaves it as it was unless the font sets it,
    // so the caller seeds it with the value in force.
    double missingWidth = 0.0;
    std::map<std::int32_t, double> widths; // thousandths of the font size, by code
    double averageWidth = 0.0;
    double largestWidth = 0.0;
    std::optional<EncodingMap> encoding; // absent without /Encoding
    std::optional<CodeMap> toUnicode;    // absent without a usable /ToUnicode

    // Every field back to its start value, except missingWidth.
    void Reset() {
        const double keep = missingWidth;
        *this = FontRecord{};
        missingWidth = keep;
    }
};
