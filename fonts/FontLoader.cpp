#include "fonts/FontLoader.h"

#include "filters/FilterPipeline.h"
#include "fonts/Encodings.h"
#include "fonts/GlyphNames.h"
#include "fonts/StandardMetrics.h"
#include "fonts/ToUnicodeParser.h"
#include "pdf/token/PDFTokens.h"
#include "pdf/xref/PDFDocument.h"

#include <cstddef>
#include <cstdint>
#include <unordered_set>

namespace {

using Tokens = PDFParserTokens;

// A reference is loaded, anything else is its own value; null when there is nothing or the
// load fails. One step only: a reference to a reference is no object of any kind.
PDFToken* Resolved(PDFDocument* document, PDFToken* token) {
    if (!token || !token->IsType(kPdfKindRef))
        return token;
    PDFToken* object = nullptr;
    if (!document || document->ResolveToken(token, &object) != kPdfOk)
        return nullptr;
    return object;
}

PDFToken* AsKind(PDFDocument* document, PDFToken* token, int kind) {
    PDFToken* object = Resolved(document, token);
    return object && object->IsType(kind) ? object : nullptr;
}

Tokens::PDFArray* AsArray(PDFDocument* document, PDFToken* token) {
    return static_cast<Tokens::PDFArray*>(AsKind(document, token, kPdfKindArray));
}

Tokens::PDFDict* AsDict(PDFDocument* document, PDFToken* token) {
    return static_cast<Tokens::PDFDict*>(AsKind(document, token, kPdfKindDict));
}

void RaiseLargest(FontRecord& font, double width) {
    if (width > font.largestWidth)
        font.largestWidth = width;
}

// Keys of the width tables are 32-bit; a code counted past the end wraps around.
std::int32_t WidthKey(std::int64_t code) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(code));
}

EncodingMap EncodingFromDictionary(PDFDocument* document, const Tokens::PDFDict& encoding) {
    // A dictionary starts from two-byte Identity, not from the standard encoding.
    EncodingMap map = EncodingByName("Identity-H");
    PDFToken* base = encoding.Find("BaseEncoding");
    if (base && base->IsType(kPdfKindName))
        map = EncodingByName(base->GetString());
    const Tokens::PDFArray* differences = AsArray(document, encoding.Find("Differences"));
    if (!differences)
        return map;
    // Codes wrap at 256, so however large the numbers, at most 256 entries change.
    std::int32_t counter = 0;
    for (PDFToken* item : differences->items) {
        if (item->IsType(kPdfKindInteger)) {
            counter = item->GetInteger(0);
        } else if (item->IsType(kPdfKindName)) {
            const auto key = static_cast<std::uint8_t>(counter);
            counter = static_cast<std::uint8_t>(key + 1);
            map[key] = GlyphNameToUnicode(item->GetString());
        }
    }
    return map;
}

// Every code but 0 to itself: what a ToUnicode of /Identity-H or /Identity-V stands for.
CodeMap IdentityCodes() {
    CodeMap map;
    for (std::uint32_t code = 1; code < 65536; ++code)
        map.emplace_hint(map.end(), code, code);
    return map;
}

void ReadDescendant(PDFDocument* document, const Tokens::PDFDict& descendant, FontRecord& font) {
    if (PDFToken* descriptor = AsDict(document, descendant.Find("FontDescriptor")))
        ReadDescriptor(document, descriptor, font, false);
    if (PDFToken* dw = descendant.Find("DW"))
        font.missingWidth = dw->GetFloat(0.0);
    if (PDFToken* w = AsArray(document, descendant.Find("W")))
        ReadCidWidths(document, w, font);
    if (const Tokens::PDFDict* info = AsDict(document, descendant.Find("CIDSystemInfo"))) {
        const PDFToken* ordering = info->Find("Ordering");
        const PDFToken* registry = info->Find("Registry");
        font.fontRegistryOrdering = (registry ? registry->GetString() : std::string()) + "-" +
                                    (ordering ? ordering->GetString() : std::string());
    }
}

// Returns false when the loading of the font ends here.
bool ReadToUnicode(PDFDocument* document, PDFToken* entry, FontRecord& font) {
    PDFToken* toUnicode = Resolved(document, entry);
    if (!toUnicode)
        return true;
    if (toUnicode->IsType(kPdfKindName)) {
        const std::string name = toUnicode->GetString();
        if (name != "Identity-H" && name != "Identity-V")
            return true;
        // Such a font keeps no /Widths: it advances by its standard metrics or /W alone.
        font.toUnicode = IdentityCodes();
        return false;
    }
    if (!toUnicode->IsType(kPdfKindStream))
        return true;
    std::string bytes;
    if (DecodeStream(*static_cast<Tokens::PDFStream*>(toUnicode), bytes) != kPdfOk)
        return false;
    ToUnicodeParser parser(bytes);
    // A status that stops the program keeps what was read up to there.
    (void)parser.ParseUntil(nullptr);
    font.toUnicode = std::move(parser.codeMap);
    return true;
}

void ReadSimpleWidths(PDFDocument* document, const Tokens::PDFDict& dict, FontRecord& font) {
    // /LastChar is not needed: the array says how many widths there are.
    const PDFToken* firstChar = dict.Find("FirstChar");
    const std::int64_t first = firstChar ? firstChar->GetInteger(0) : -1;
    const Tokens::PDFArray* widths = AsArray(document, dict.Find("Widths"));
    if (!widths)
        return;
    double sum = 0.0;
    std::int64_t count = 0;
    for (std::size_t i = 0; i < widths->items.size(); ++i) {
        const double w = widths->items[i]->GetFloat(0.0);
        font.widths[WidthKey(first + static_cast<std::int64_t>(i))] = w;
        RaiseLargest(font, w);
        if (w > 0.0) {
            sum += w;
            ++count;
        }
    }
    if (count > 0)
        font.averageWidth = sum / static_cast<double>(count);
}

} // namespace

void ReadDescriptor(PDFDocument* document, PDFToken* descriptor, FontRecord& font,
                    bool withMissingWidth) {
    // Each key sets a field of its own, so the order of the reads makes no difference.
    const auto& dict = *static_cast<Tokens::PDFDict*>(descriptor);
    if (withMissingWidth)
        if (const PDFToken* missing = dict.Find("MissingWidth"))
            font.missingWidth = missing->GetFloat(0.0);
    // Only the italic bit counts; boldness comes from the name, elsewhere.
    if (const PDFToken* flags = dict.Find("Flags"))
        font.fontItalic = (flags->GetInteger(0) & 64) != 0;
    if (const PDFToken* descent = dict.Find("Descent"))
        font.fontDescent = descent->GetFloat(0.0) / 1000.0;
    // A zero cap height falls back on the ascent; without /CapHeight the ascent is not read.
    if (const PDFToken* capHeight = dict.Find("CapHeight")) {
        const double c = capHeight->GetFloat(0.0);
        const PDFToken* ascent = dict.Find("Ascent");
        if (c > 0.0)
            font.fontHeightScale = c / 1000.0;
        else if (ascent && ascent->GetFloat(0.0) + c > 0.0)
            font.fontHeightScale = (ascent->GetFloat(0.0) + c) / 1000.0;
    }
    const Tokens::PDFArray* box = AsArray(document, dict.Find("FontBBox"));
    if (box && box->items.size() == 4)
        font.fontBoxHeight =
            box->items[3]->GetFloat(0.0) / 1000.0 - box->items[1]->GetFloat(0.0) / 1000.0;
}

void ReadCidWidths(PDFDocument* document, PDFToken* widthArray, FontRecord& font) {
    const auto& items = static_cast<Tokens::PDFArray*>(widthArray)->items;
    const std::size_t n = items.size();
    // Only a reference can bring the same inner array twice; a second visit is passed over,
    // so that a short /W cannot make many passes over one long array.
    std::unordered_set<const PDFToken*> visited;
    std::size_t i = 0;
    while (i + 1 < n) {
        if (!items[i]->IsType(kPdfKindInteger))
            return;
        std::int64_t c = items[i]->GetInteger(0);
        if (const Tokens::PDFArray* list = AsArray(document, items[i + 1])) {
            if (visited.insert(list).second) {
                for (PDFToken* item : list->items) {
                    const double w = item->GetFloat(0.0);
                    font.widths[WidthKey(c++)] = w;
                    RaiseLargest(font, w);
                }
            }
            i += 2;
            continue;
        }
        // The range form gives its width to its first code alone; the upper bound is never
        // used, and the codes after the first fall back on missingWidth.
        if (!items[i + 1]->IsType(kPdfKindInteger) || i + 2 >= n ||
            !items[i + 2]->IsType(kPdfKindNumber))
            return;
        const double w = items[i + 2]->GetFloat(0.0);
        font.widths[WidthKey(c)] = w;
        RaiseLargest(font, w);
        i += 3;
    }
}

void LoadFont(PDFDocument* document, PDFToken* fontDict, const std::string& name,
              FontRecord& font) {
    font.Reset();
    if (!fontDict || !fontDict->IsType(kPdfKindDict))
        return;
    const Tokens::PDFDict* dict =
        AsDict(document, static_cast<Tokens::PDFDict*>(fontDict)->Find(name));
    if (!dict)
        return;

    if (const PDFToken* baseFont = dict->Find("BaseFont")) {
        font.fontFamily = baseFont->GetString();
        ApplyStandardMetrics(font.fontFamily, font);
    }

    // A Type0 font is known by its descendant alone.
    if (const Tokens::PDFArray* descendants = AsArray(document, dict->Find("DescendantFonts")))
        if (!descendants->items.empty())
            if (const Tokens::PDFDict* descendant = AsDict(document, descendants->items[0]))
                ReadDescendant(document, *descendant, font);

    if (PDFToken* descriptor = AsDict(document, dict->Find("FontDescriptor")))
        ReadDescriptor(document, descriptor, font, true);

    if (PDFToken* encoding = Resolved(document, dict->Find("Encoding"))) {
        if (encoding->IsType(kPdfKindDict))
            font.encoding =
                EncodingFromDictionary(document, *static_cast<Tokens::PDFDict*>(encoding));
        else if (font.fontRegistryOrdering == "PDFAUTOCAD-Indentity0") // spelled so
            font.encoding = AutocadIdentityEncoding();
        else
            font.encoding = EncodingByName(encoding->GetString());
    }

    if (font.fontHeightScale <= 0.0)
        font.fontHeightScale = 1.0;

    if (!ReadToUnicode(document, dict->Find("ToUnicode"), font))
        return;
    ReadSimpleWidths(document, *dict, font);
}
