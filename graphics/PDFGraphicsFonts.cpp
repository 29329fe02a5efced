// Font loading for Tf: the fonts library reads the resource into a record, which lands in
// the state's font fields and in this page's maps under the resource name.
#include "fonts/FontLoader.h"
#include "graphics/PDFGraphics.h"

#include <memory>
#include <utility>

void PDFGraphics::LoadFont(const std::string& name) {
    FontRecord font;
    font.missingWidth = state->missingWidth; // kept unless the font sets its own
    ::LoadFont(document, fontDict, name, font);

    state->fontFamily = std::move(font.fontFamily);
    state->fontRegistryOrdering = std::move(font.fontRegistryOrdering);
    state->fontItalic = font.fontItalic;
    state->fontHeightScale = font.fontHeightScale;
    state->fontBoxHeight = font.fontBoxHeight;
    state->fontDescent = font.fontDescent;
    state->missingWidth = font.missingWidth;
    state->widths = std::move(font.widths);
    state->averageWidth = font.averageWidth;
    state->largestWidth = font.largestWidth;

    // A name loaded again keeps nothing of what it stood for before.
    fontEncoding.erase(name);
    fontToUnicode.erase(name);
    if (font.encoding)
        fontEncoding[name] = std::make_shared<const EncodingMap>(std::move(*font.encoding));
    if (font.toUnicode) {
        // Here the CMap's 32-bit values are cut to one UTF-16 unit, their low 16 bits: a
        // surrogate pair or two units keep only the last unit in the text.
        auto map = std::make_shared<ToUnicodeMap>();
        for (const auto& [code, value] : *font.toUnicode)
            map->emplace_hint(map->end(), code, static_cast<char16_t>(value & 0xFFFF));
        fontToUnicode[name] = std::move(map);
    }
}
