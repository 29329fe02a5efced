// Font loading for Tf: the fonts library reads the resource into a record, which lands in
// the state's font fields and in this page's maps under the resource name.
#include "fonts/FontLoader.h"
#include "graphics/PDFGraphics.h"

#include "pdf/token/PDFTokens.h"

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace {

CachedFont ReadFont(PDFDocument* document, PDFToken* fontDict, const std::string& name) {
    CachedFont cached;
    // Not a width any font gives: after the load it tells whether the font set one.
    cached.record.missingWidth = std::numeric_limits<double>::quiet_NaN();
    ::LoadFont(document, fontDict, name, cached.record);
    if (cached.record.encoding)
        cached.encoding = std::make_shared<const EncodingMap>(std::move(*cached.record.encoding));
    if (cached.record.toUnicode) {
        // Here the CMap's 32-bit values are cut to one UTF-16 unit, their low 16 bits: a
        // surrogate pair or two units keep only the last unit in the text.
        auto map = std::make_shared<ToUnicodeMap>();
        for (const auto& [code, value] : *cached.record.toUnicode)
            map->emplace_hint(map->end(), code, static_cast<char16_t>(value & 0xFFFF));
        cached.toUnicode = std::move(map);
    }
    cached.record.encoding.reset();
    cached.record.toUnicode.reset();
    return cached;
}

} // namespace

void PDFGraphics::LoadFont(const std::string& name) {
    // The font's own dictionary is the key; one that is not there is read uncached, which
    // resets the fields and nothing more.
    PDFToken* font = nullptr;
    if (fontCache && fontDict && fontDict->IsType(kPdfKindDict) &&
        Resolve(static_cast<PDFDict*>(fontDict)->Find(name), &font) != kPdfOk)
        font = nullptr;
    CachedFont uncached;
    const CachedFont* loaded = nullptr;
    if (fontCache && font && font->IsType(kPdfKindDict)) {
        auto found = fontCache->find(font);
        if (found == fontCache->end())
            found = fontCache->emplace(font, ReadFont(document, fontDict, name)).first;
        loaded = &found->second;
    } else {
        uncached = ReadFont(document, fontDict, name);
        loaded = &uncached;
    }

    const FontRecord& record = loaded->record;
    state->fontFamily = record.fontFamily;
    state->fontRegistryOrdering = record.fontRegistryOrdering;
    state->fontItalic = record.fontItalic;
    state->fontHeightScale = record.fontHeightScale;
    state->fontBoxHeight = record.fontBoxHeight;
    state->fontDescent = record.fontDescent;
    if (!std::isnan(record.missingWidth)) // kept unless the font sets its own
        state->missingWidth = record.missingWidth;
    state->widths = record.widths;
    state->averageWidth = record.averageWidth;
    state->largestWidth = record.largestWidth;

    // A name loaded again keeps nothing of what it stood for before.
    fontEncoding.erase(name);
    fontToUnicode.erase(name);
    if (loaded->encoding)
        fontEncoding[name] = loaded->encoding;
    if (loaded->toUnicode)
        fontToUnicode[name] = loaded->toUnicode;
}
