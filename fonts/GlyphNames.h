#pragma once
// Glyph names to Unicode: the small table of names that /Differences arrays use in practice
// (ASCII, Latin-1, the Windows extras and the common ligatures), not the whole glyph list.
#include <cstdint>
#include <string_view>

// The Unicode value of a glyph name, compared byte for byte; 0 for a name the table lacks
// (uni0041, g123 and the like are not interpreted).
std::uint16_t GlyphNameToUnicode(std::string_view name);
