#pragma once
// Single-byte code pages, byte to Unicode, 0 where a code page defines no character.
// Generated: see tools/make_font_tables.py.
#include <cstdint>

extern const std::uint16_t kMacRomanCodePage[256];
extern const std::uint16_t kWindows1252CodePage[256];
