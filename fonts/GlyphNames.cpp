#include "fonts/GlyphNames.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>

namespace {

// Values 32 to 126 in order, separated by spaces.
constexpr std::string_view kAsciiNames =
    "space exclam quotedbl numbersign dollar percent ampersand quotesingle parenleft "
    "parenright asterisk plus comma hyphen period slash zero one two three four five six "
    "seven eight nine colon semicolon less equal greater question at A B C D E F G H I J K L "
    "M N O P Q R S T U V W X Y Z bracketleft backslash bracketright asciicircum underscore "
    "grave a b c d e f g h i j k l m n o p q r s t u v w x y z braceleft bar braceright "
    "asciitilde";

// Values 161 to 255 in order, leaving out 173 (the soft hyphen has no name of its own).
constexpr std::string_view kLatin1Names =
    "exclamdown cent sterling currency yen brokenbar section dieresis copyright ordfeminine "
    "guillemotleft logicalnot registered macron degree plusminus twosuperior threesuperior "
    "acute mu paragraph periodcentered cedilla onesuperior ordmasculine guillemotright "
    "onequarter onehalf threequarters questiondown Agrave Aacute Acircumflex Atilde "
    "Adieresis Aring AE Ccedilla Egrave Eacute Ecircumflex Edieresis Igrave Iacute "
    "Icircumflex Idieresis Eth Ntilde Ograve Oacute Ocircumflex Otilde Odieresis multiply "
    "Oslash Ugrave Uacute Ucircumflex Udieresis Yacute Thorn germandbls agrave aacute "
    "acircumflex atilde adieresis aring ae ccedilla egrave eacute ecircumflex edieresis "
    "igrave iacute icircumflex idieresis eth ntilde ograve oacute ocircumflex otilde "
    "odieresis divide oslash ugrave uacute ucircumflex udieresis yacute thorn ydieresis";

struct NamedValue {
    std::uint16_t value;
    const char* name;
};

// The rest, in the order of their values; ligatures under both of their usual names.
// clang-format off
const NamedValue kOtherNames[] = {
    {305, "dotlessi"}, {321, "Lslash"}, {322, "lslash"}, {338, "OE"}, {339, "oe"}, {352, "Scaron"},
    {353, "scaron"}, {376, "Ydieresis"}, {381, "Zcaron"}, {382, "zcaron"}, {402, "florin"},
    {710, "circumflex"}, {711, "caron"}, {728, "breve"}, {729, "dotaccent"}, {730, "ring"},
    {731, "ogonek"}, {732, "tilde"}, {733, "hungarumlaut"}, {8211, "endash"}, {8212, "emdash"},
    {8216, "quoteleft"}, {8217, "quoteright"}, {8218, "quotesinglbase"}, {8220, "quotedblleft"},
    {8221, "quotedblright"}, {8222, "quotedblbase"}, {8224, "dagger"}, {8225, "daggerdbl"},
    {8226, "bullet"}, {8230, "ellipsis"}, {8240, "perthousand"}, {8249, "guilsinglleft"},
    {8250, "guilsinglright"}, {8260, "fraction"}, {8364, "Euro"}, {8482, "trademark"},
    {8722, "minus"}, {64256, "ff"}, {64256, "f_f"}, {64257, "fi"}, {64257, "f_i"}, {64258, "fl"},
    {64258, "f_l"}, {64259, "ffi"}, {64259, "f_f_i"}, {64260, "ffl"}, {64260, "f_f_l"},
    {64261, "ft"}, {64261, "f_t"}, {64262, "st"}, {64262, "s_t"},
};
// clang-format on

using GlyphNameTable = std::map<std::string, std::uint16_t, std::less<>>;

// Gives the names of a space-separated list consecutive values from `value` on, passing
// over `skip`.
void AddRun(GlyphNameTable& table, std::string_view names, std::uint16_t value,
            std::uint16_t skip = 0) {
    while (!names.empty()) {
        const std::size_t space = std::min(names.find(' '), names.size());
        if (value == skip)
            ++value;
        table.emplace(std::string(names.substr(0, space)), value++);
        names.remove_prefix(std::min(space + 1, names.size()));
    }
}

GlyphNameTable BuildTable() {
    GlyphNameTable table{{".notdef", 0}};
    AddRun(table, kAsciiNames, 32);
    AddRun(table, kLatin1Names, 161, 173);
    for (const NamedValue& entry : kOtherNames)
        table.emplace(entry.name, entry.value);
    return table;
}

} // namespace

std::uint16_t GlyphNameToUnicode(std::string_view name) {
    // Built at the first lookup and kept for the life of the process.
    static const GlyphNameTable table = BuildTable();
    const auto found = table.find(name);
    return found == table.end() ? 0 : found->second;
}
