// The static knowledge: glyph names, encodings by name and the standard fonts' metrics.
#include "fonts/Encodings.h"
#include "fonts/GlyphNames.h"
#include "fonts/StandardMetrics.h"

#include <gtest/gtest.h>

namespace {

TEST(FontTables, GlyphNames) {
    EXPECT_EQ(GlyphNameToUnicode("hyphen"), 45);
    EXPECT_EQ(GlyphNameToUnicode("asciitilde"), 126);
    EXPECT_EQ(GlyphNameToUnicode("exclamdown"), 161);
    EXPECT_EQ(GlyphNameToUnicode("registered"), 174); // past the nameless 173
    EXPECT_EQ(GlyphNameToUnicode("mu"), 181);
    EXPECT_EQ(GlyphNameToUnicode("ydieresis"), 255);
    EXPECT_EQ(GlyphNameToUnicode("minus"), 8722);
    EXPECT_EQ(GlyphNameToUnicode("f_f_i"), GlyphNameToUnicode("ffi"));
    EXPECT_EQ(GlyphNameToUnicode("s_t"), 64262);
    // Names outside the table, and another case, have no value.
    for (const char* unknown : {".notdef", "uni0041", "g123", "Hyphen", "", "afii10017"})
        EXPECT_EQ(GlyphNameToUnicode(unknown), 0) << unknown;
}

TEST(FontTables, EncodingsByName) {
    const EncodingMap identityH = EncodingByName("Identity-H");
    ASSERT_EQ(identityH.size(), 65536u);
    EXPECT_EQ(identityH.at(3), 32);
    EXPECT_EQ(identityH.at(65535), 28);

    const EncodingMap win = EncodingByName("WinAnsiEncoding");
    ASSERT_EQ(win.size(), 256u);
    EXPECT_EQ(win.at(128), 8364);
    EXPECT_EQ(win.at(129), 0);
    EXPECT_EQ(win.at(233), 233);

    const EncodingMap mac = EncodingByName("MacRomanEncoding");
    ASSERT_EQ(mac.size(), 256u);
    EXPECT_EQ(mac.at(0x80), 0xC4);
    EXPECT_EQ(mac.at(0xCA), 0xA0);
    EXPECT_EQ(mac.at(0xDB), 0x20AC);
    EXPECT_EQ(mac.at(0xF0), 0xF8FF);

    // Unknown names, these three among them, are two-byte identity.
    for (const char* name : {"StandardEncoding", "Identity-V", ""}) {
        const EncodingMap map = EncodingByName(name);
        EXPECT_EQ(map.size(), 65536u) << name;
        EXPECT_EQ(map.at(200), 200) << name;
    }

    const EncodingMap autocad = AutocadIdentityEncoding();
    ASSERT_EQ(autocad.size(), 65536u);
    EXPECT_EQ(autocad.at(2), 0);
    EXPECT_EQ(autocad.at(97), 126);
    EXPECT_EQ(autocad.at(98), 0);
    EXPECT_EQ(autocad.at(145), 8709);
}

TEST(FontTables, StandardMetrics) {
    // Figures of the metrics files: widths by code, a doubled key (code 193 is grave,
    // Unicode 193 Aacute) keeping the larger width, and unencoded glyphs by their Unicode
    // value: commaaccent, and Symbol's apple.
    FontRecord helvetica;
    helvetica.missingWidth = 7;
    ApplyStandardMetrics("Helvetica", helvetica);
    EXPECT_EQ(helvetica.widths.at(32), 278);
    EXPECT_EQ(helvetica.widths.at(64), 1015);
    EXPECT_EQ(helvetica.widths.at(65), 667);
    EXPECT_EQ(helvetica.widths.at(193), 667);
    EXPECT_EQ(helvetica.widths.at(63171), 250);
    EXPECT_DOUBLE_EQ(helvetica.fontHeightScale, 0.718);
    EXPECT_EQ(helvetica.largestWidth, 1015);
    EXPECT_EQ(helvetica.missingWidth, 7);
    EXPECT_EQ(helvetica.averageWidth, 0);
    // 315 glyphs, 34 of whose keys are taken twice.
    EXPECT_EQ(FindStandardFont("Helvetica")->pairCount, 315);
    EXPECT_EQ(helvetica.widths.size(), 315u - 34u);

    FontRecord symbol;
    ApplyStandardMetrics("Symbol", symbol);
    EXPECT_EQ(symbol.fontHeightScale, 1.0);
    EXPECT_EQ(symbol.widths.size(), 190u);
    EXPECT_EQ(symbol.widths.at(63743), 790);
    EXPECT_EQ(symbol.largestWidth, 1042);

    // Exact names only.
    for (const char* other : {"ABCDEF+Helvetica", "Helvetica,Bold", "Arial", "helvetica"}) {
        FontRecord none;
        ApplyStandardMetrics(other, none);
        EXPECT_TRUE(none.widths.empty()) << other;
        EXPECT_EQ(none.fontHeightScale, 1.0) << other;
    }
    EXPECT_EQ(FindStandardFont("Times-BoldItalic")->capHeight, 669);
}

} // namespace
