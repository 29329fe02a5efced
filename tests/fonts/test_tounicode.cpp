// The ToUnicode CMap reader: every section kind with its bounds, and hostile sizes.
#include "fonts/ToUnicodeParser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Parsed {
    PDFStatus status;
    CodeMap map;
};

Parsed Parse(const std::string& cmap) {
    ToUnicodeParser parser(cmap);
    const PDFStatus status = parser.ParseUntil(nullptr);
    return {status, parser.codeMap};
}

TEST(ToUnicode, ProgramWithEverySection) {
    const Parsed p = Parse("/CIDInit /ProcSet findresource begin 12 dict begin begincmap\n"
                           "/CMapName /Test def\n"
                           "1 begincodespacerange <0000> <FFFF> endcodespacerange\n"
                           // Popped from the top: of two entries for <0041> the first wins.
                           "4 beginbfchar <0041> <0061> <41> <0062> <0042> <D83DDE00>\n"
                           "<0043> <004400450046> endbfchar\n"
                           "3 beginbfrange <0100> <0102> <0030> <0200> <0201> [<0041> <0042>]\n"
                           "<0302> <0301> <0050> endbfrange\n"
                           "2 begincidrange <1000> <1003> 7 <2000> <2000> 9 endcidrange\n"
                           "1 beginnotdefrange <3000> <3001> 5 endnotdefrange\n"
                           "endcmap CMapName currentdict /CMap defineresource pop end end\n");
    EXPECT_EQ(p.status, kPdfEof);
    // The codespace fills identities up to, not including, its high code.
    EXPECT_EQ(p.map.at(0x0000), 0x0000u);
    EXPECT_EQ(p.map.at(0xFFFE), 0xFFFEu);
    EXPECT_EQ(p.map.count(0xFFFF), 0u);
    EXPECT_EQ(p.map.size(), 65535u);
    EXPECT_EQ(p.map.at(0x41), 0x61u);
    EXPECT_EQ(p.map.at(0x42), 0xD83DDE00u); // two units stay one 32-bit value here
    EXPECT_EQ(p.map.at(0x43), 0u);          // three units are too many
    // bfrange includes its high code; the array form counts from 0; low above high adds
    // nothing, leaving the identity.
    EXPECT_EQ(p.map.at(0x0100), 0x30u);
    EXPECT_EQ(p.map.at(0x0102), 0x32u);
    EXPECT_EQ(p.map.at(0x0200), 0u);
    EXPECT_EQ(p.map.at(0x0201), 1u);
    EXPECT_EQ(p.map.at(0x0301), 0x0301u);
    // cidrange leaves out its high code, so low equal to high adds nothing.
    EXPECT_EQ(p.map.at(0x1000), 7u);
    EXPECT_EQ(p.map.at(0x1002), 9u);
    EXPECT_EQ(p.map.at(0x1003), 0x1003u);
    EXPECT_EQ(p.map.at(0x2000), 0x2000u);
    // notdefrange includes its high code and gives one value.
    EXPECT_EQ(p.map.at(0x3000), 5u);
    EXPECT_EQ(p.map.at(0x3001), 5u);
}

TEST(ToUnicode, WrappingAndStops) {
    // Keys and values of bfrange and notdefrange are taken modulo 65536; of a range longer
    // than that, the last code of each key wins.
    Parsed p = Parse("1 beginbfrange <00000001> <00020000> <0010> endbfrange "
                     "1 beginnotdefrange <00012345> <00012345> 70000 endnotdefrange");
    EXPECT_EQ(p.map.size(), 65536u);
    EXPECT_EQ(p.map.at(0x0000), 0x000Fu); // code 0x20000: 0x10 + 0x1FFFF
    EXPECT_EQ(p.map.at(0x0001), 0x0010u); // code 0x10001: 0x10 + 0x10000
    EXPECT_EQ(p.map.at(0xFFFF), 0x000Eu); // code 0x1FFFF
    EXPECT_EQ(p.map.at(0x2345), 70000u - 65536u);

    // A 5-byte source is code 0; a count beyond the entries reads zeros; a count below 1
    // does nothing.
    p = Parse("2 beginbfchar <0102030405> <0041> endbfchar 0 beginbfchar <07> <08> endbfchar");
    EXPECT_EQ(p.map, (CodeMap{{0, 0}}));
    // An unknown word stops the program and keeps what was read.
    p = Parse("1 beginbfchar <01> <02> endbfchar /X usecmap 1 beginbfchar <03> <04> endbfchar");
    EXPECT_EQ(p.status, kPdfUnknownOp);
    EXPECT_EQ(p.map, (CodeMap{{1, 2}}));
}

TEST(ToUnicode, HostileSizesCostInProportionToTheCMap) {
    // A codespace of 2^32 codes and a count of 2^31 sections: the writes stop at the
    // budget, and the empty stack is not walked two billion times.
    const std::string cmap = "1 begincodespacerange <00000000> <FFFFFFFF> endcodespacerange "
                             "2147483647 begincidrange <00000000> <FFFFFFFF> 0 endcidrange";
    const Parsed p = Parse(cmap);
    EXPECT_EQ(p.map.size(), ToUnicodeParser::kRangeWriteFloor +
                                ToUnicodeParser::kRangeWritesPerByte * cmap.size());
    // The budget is shared: after many full two-byte ranges a last one is not written.
    std::string many;
    for (int i = 0; i < 200; ++i)
        many += "1 beginbfrange <0000> <FFFF> <0000> endbfrange ";
    EXPECT_EQ(Parse(many + "1 beginbfrange <05> <05> <99> endbfrange").map.at(5), 5u);
}

} // namespace
