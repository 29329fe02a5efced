#include "filters/Filters.h"

#include "FilterTestSupport.h"

using namespace filtertest;

namespace {

std::string Filter(FilterFunction f, const std::string& input, PDFStatus expected = kPdfOk,
                   PDFToken* parms = nullptr) {
    std::string out = "stale";
    EXPECT_EQ(f(input, out, parms), expected) << input;
    return out;
}

TEST(AsciiHex, DecodeForms) {
    EXPECT_EQ(Filter(ASCIIHexDecode, "4a 4B>zz"), "JK");
    EXPECT_EQ(Filter(ASCIIHexDecode, "4"), "\x40");
    EXPECT_EQ(Filter(ASCIIHexDecode, " 6\n1\t62 63"), "abc"); // no ">" is needed
    EXPECT_EQ(Filter(ASCIIHexDecode, ""), "");
    EXPECT_EQ(Filter(ASCIIHexDecode, "4142 4x", kPdfIllegalStreamCharacter), "AB");
    EXPECT_EQ(Filter(ASCIIHexEncode, "\x01\xAB"), "01AB>");
    EXPECT_EQ(Filter(ASCIIHexEncode, ""), ">");
}

TEST(Ascii85, DecodeForms) {
    EXPECT_EQ(Filter(ASCII85Decode, "87cURDZ~>"), "Hello");
    EXPECT_EQ(Filter(ASCII85Decode, "87cURDZ"), "Hello");
    EXPECT_EQ(Filter(ASCII85Decode, "87c\nUR DZ~>junk"), "Hello");
    EXPECT_EQ(Filter(ASCII85Decode, "z~>"), std::string(4, '\0'));
    EXPECT_EQ(Filter(ASCII85Decode, "87cUR!~>"), "Hell"); // a lone digit adds nothing
    // "z" in the middle of a group leaves the group as it was.
    EXPECT_EQ(Filter(ASCII85Decode, "87czURDZ"), std::string(4, '\0') + "Hello");
    // "<~" is data here, and its "~" ends the data; digits out of range wrap, no error.
    EXPECT_EQ(Filter(ASCII85Decode, "<~87cURDZ~>"), "");
    EXPECT_EQ(Filter(ASCII85Decode, "\xFF\xFF\xFF\xFF\xFF").size(), 4u);
}

TEST(Ascii85, EncodeFormsAndRoundTrips) {
    EXPECT_EQ(Filter(ASCII85Encode, std::string(4, '\0')), "z~>");
    EXPECT_EQ(Filter(ASCII85Encode, std::string(1, '\0')), "!!~>");
    EXPECT_EQ(Filter(ASCII85Encode, ""), "~>");
    EXPECT_EQ(Filter(ASCII85Encode, "Hello"), "87cURDZ~>");
    // Lines break once more than 75 characters stand since the last break.
    const std::string encoded = Filter(ASCII85Encode, std::string(80, 'a'));
    EXPECT_EQ(encoded.find('\n'), 80u);
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const std::string data = RandomBytes(seed * 37, seed) + std::string(seed % 5, '\0');
        EXPECT_EQ(Filter(ASCII85Decode, Filter(ASCII85Encode, data)), data);
        EXPECT_EQ(Filter(ASCIIHexDecode, Filter(ASCIIHexEncode, data)), data);
        EXPECT_EQ(Filter(ASCIIBinaryDecode, Filter(ASCIIBinaryEncode, data)), data);
    }
}

TEST(RunLength, RunsAndTheirEnds) {
    EXPECT_EQ(Filter(RunLengthDecode, Bytes({2, 'A', 'B', 'C', 128})), "ABC");
    EXPECT_EQ(Filter(RunLengthDecode, Bytes({2, 'A', 'B', 'C'}), kPdfDataCorrupted), "");
    EXPECT_EQ(Filter(RunLengthDecode, Bytes({254, 'A'})), "AAA"); // a repeat may end the data
    EXPECT_EQ(Filter(RunLengthDecode, Bytes({129, 'x', 128, 1, 2})), std::string(128, 'x'));
    EXPECT_EQ(Filter(RunLengthDecode, Bytes({1, 'a', 'b', 255}), kPdfDataCorrupted), "ab");
    // The byte behind a literal run lets it pass, and is then read as the next length.
    EXPECT_EQ(Filter(RunLengthDecode, Bytes({0, 'a', 0, 'b', 7}), kPdfDataCorrupted), "ab");
    EXPECT_EQ(Filter(RunLengthDecode, ""), "");
}

TEST(AsciiBinary, BitsCharactersAndPictures) {
    EXPECT_EQ(Filter(ASCIIBinaryDecode, "0100 0001 x 01"), "A\x40");
    EXPECT_EQ(Filter(ASCIIBinaryEncode, "ABCDE"),
              "01000001 01000010 01000011 01000100 \n01000101 ");
    PDFTokenRef four(ParseDictionaryText("<</Columns 4>>"));
    EXPECT_EQ(Filter(ASCIIBWEncode, "\xF0", kPdfOk, four.Get()), "XXXX|\n");
    // Each line starts on a byte: the rest of the byte that ended a line is dropped.
    EXPECT_EQ(Filter(ASCIIBWEncode, "\x0F\xA0", kPdfOk, four.Get()), "    |\nX X |\n");
    EXPECT_EQ(Filter(ASCIIBWEncode, std::string(4, '\xFF')), std::string(32, 'X') + "|\n");
}

} // namespace
