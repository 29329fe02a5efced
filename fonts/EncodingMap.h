#pragma once
// A font's encoding: 16-bit code to 16-bit value, ordered by code. The font layer fills it;
// the graphics state keeps a copy and looks only at its size (65536 entries mean Identity).
#include <cstdint>
#include <map>

using EncodingMap = std::map<std::uint16_t, std::uint16_t>;
