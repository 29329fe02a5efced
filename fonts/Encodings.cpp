#include "fonts/Encodings.h"

#include "fonts/CodePageTables.h"

#include <cstdint>

namespace {

EncodingMap FromCodePage(const std::uint16_t (&values)[256]) {
    EncodingMap map;
    for (std::uint16_t code = 0; code < 256; ++code)
        map.emplace_hint(map.end(), code, values[code]);
    return map;
}

// Every 16-bit code to code + offset, modulo 65536.
EncodingMap Shifted(std::uint16_t offset) {
    EncodingMap map;
    for (std::uint32_t code = 0; code < 65536; ++code)
        map.emplace_hint(map.end(), static_cast<std::uint16_t>(code),
                         static_cast<std::uint16_t>(code + offset));
    return map;
}

} // namespace

EncodingMap EncodingByName(std::string_view name) {
    if (name == "MacRomanEncoding")
        return FromCodePage(kMacRomanCodePage);
    if (name == "WinAnsiEncoding")
        return FromCodePage(kWindows1252CodePage);
    if (name == "Identity-H")
        return Shifted(29);
    return Shifted(0);
}

EncodingMap AutocadIdentityEncoding() {
    EncodingMap map;
    for (std::uint32_t code = 0; code < 65536; ++code)
        map.emplace_hint(map.end(), static_cast<std::uint16_t>(code), 0);
    // The font's glyph indices: the printable ASCII range sits 29 below its characters.
    for (std::uint16_t code = 3; code <= 97; ++code)
        map[code] = static_cast<std::uint16_t>(code + 29);
    static const std::uint16_t kSingles[][2] = {
        {106, 224}, {112, 233}, {121, 243}, {123, 244}, {139, 169}, {145, 8709}, {146, 176},
        {147, 177}, {207, 211}, {224, 321}, {225, 322}, {252, 263}, {260, 260},  {261, 261},
        {265, 280}, {266, 281}, {276, 324}, {286, 347}, {297, 379}, {298, 380},
    };
    for (const auto& single : kSingles)
        map[single[0]] = single[1];
    return map;
}
