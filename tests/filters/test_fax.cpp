// The fax decoders against data from libtiff's encoders, the stop table, and the places
// where this system's reading of the codes departs from a full T.4/T.6 decoder.
#include "filters/CcittFax.h"

#include "FilterTestSupport.h"

#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace filtertest;

namespace {

using Bitmap = std::vector<std::string>; // rows of '0' and '1', 1 is black

const std::string kEol = "000000000001";

// Bytes of a string of '0' and '1', zero padded; blanks are for reading.
std::string Pack(const std::string& bits) {
    std::string out;
    int n = 0;
    for (char c : bits) {
        if (c == ' ')
            continue;
        if (n % 8 == 0)
            out += '\0';
        out.back() = static_cast<char>(out.back() | (c == '1' ? 0x80 >> (n % 8) : 0));
        ++n;
    }
    return out;
}

std::string Unpack(const std::string& bytes) {
    std::string bits;
    for (unsigned char b : bytes)
        for (int i = 7; i >= 0; --i)
            bits += (b >> i) & 1 ? '1' : '0';
    return bits;
}

// Each row on whole bytes, as libtiff takes scanlines and DecodeFax2D gives lines.
std::string PackRows(const Bitmap& bitmap) {
    std::string out;
    for (const std::string& row : bitmap)
        out += Pack(row);
    return out;
}

// The strip libtiff writes for the bitmap: Group 4, or Group 3 one-dimensional with EOLs.
std::string Encode(const Bitmap& bitmap, int compression) {
    char path[] = "/tmp/tarquil_fax_XXXXXX";
    const int fd = mkstemp(path);
    EXPECT_GE(fd, 0);
    close(fd);
    TIFF* tif = TIFFOpen(path, "w");
    const int height = static_cast<int>(bitmap.size());
    for (auto [tag, value] : {std::pair{TIFFTAG_IMAGEWIDTH, static_cast<int>(bitmap[0].size())},
                              {TIFFTAG_IMAGELENGTH, height},
                              {TIFFTAG_ROWSPERSTRIP, height},
                              {TIFFTAG_BITSPERSAMPLE, 1},
                              {TIFFTAG_SAMPLESPERPIXEL, 1},
                              {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE},
                              {TIFFTAG_FILLORDER, FILLORDER_MSB2LSB},
                              {TIFFTAG_COMPRESSION, compression}})
        TIFFSetField(tif, tag, value);
    if (compression == COMPRESSION_CCITTFAX3)
        TIFFSetField(tif, TIFFTAG_GROUP3OPTIONS, 0);
    for (int y = 0; y < height; ++y)
        EXPECT_EQ(TIFFWriteScanline(tif, Pack(bitmap[y]).data(), y, 0), 1);
    TIFFClose(tif);
    tif = TIFFOpen(path, "r");
    std::string raw(static_cast<std::size_t>(TIFFRawStripSize(tif, 0)), '\0');
    EXPECT_EQ(TIFFReadRawStrip(tif, 0, raw.data(), static_cast<tmsize_t>(raw.size())),
              static_cast<tmsize_t>(raw.size()));
    TIFFClose(tif);
    unlink(path);
    return raw;
}

// Rows of runs, some fresh and some a slightly changed copy of the row above, so that all
// three modes and, on wide rows, long make-up chains occur.
Bitmap RandomBitmap(int width, int height, int longestRun, std::mt19937& rng) {
    Bitmap bitmap;
    for (int y = 0; y < height; ++y) {
        std::string row(width, '0');
        if (y == 0 || rng() % 3 == 0) {
            for (int x = 0, colour = rng() & 1; x < width; colour ^= 1)
                for (int n = 1 + static_cast<int>(rng() % longestRun); n > 0 && x < width; --n)
                    row[x++] = static_cast<char>('0' + colour);
        } else {
            row = bitmap.back();
            for (int k = rng() % 4; k > 0; --k)
                for (int x = rng() % width, n = rng() % 6; n > 0 && x < width; --n, ++x)
                    row[x] = row[x] == '1' ? '0' : '1';
        }
        bitmap.push_back(row);
    }
    return bitmap;
}

// The T.6 mode choice over `line` below `ref`, used only to see how the line ends: true
// when its last code is horizontal with a first run that reaches the end of the line,
// `black` then telling that run's colour.
bool EndsInFillingHorizontal(const std::string& ref, const std::string& line, bool& black) {
    const int n = static_cast<int>(line.size());
    const auto change = [n](const std::string& r, int from, char wanted) { // 0: either
        for (int p = std::max(from, 0); p < n; ++p)
            if (r[p] != (p ? r[p - 1] : '0') && (!wanted || r[p] == wanted))
                return p;
        return n;
    };
    int a0 = -1;
    char colour = '0';
    bool filling = false;
    while (a0 < n) {
        const int a1 = change(line, a0 + 1, 0), b1 = change(ref, a0 + 1, colour ^ 1);
        const int b2 = change(ref, b1 + 1, 0);
        filling = false;
        if (b2 < a1) {
            a0 = b2;
        } else if (std::abs(a1 - b1) <= 3) {
            a0 = a1;
            colour ^= 1;
        } else {
            filling = a1 == n;
            black = colour == '1';
            a0 = change(line, a1 + 1, 0);
        }
    }
    return filling;
}

struct Result {
    int status = 0;
    std::string bytes = "stale";
};

Result Fax2D(const std::string& input, int columns) {
    Result r;
    r.status = DecodeFax2D(input, r.bytes, columns);
    return r;
}

Result Fax1D(const std::string& input) {
    Result r;
    r.status = DecodeFax1D(input, r.bytes, 1728);
    return r;
}

Result Filter(const std::string& input, const std::string& parms) {
    PDFTokenRef dict(ParseDictionaryText(parms));
    Result r;
    r.status = CCITTFaxDecode(input, r.bytes, dict.Get());
    return r;
}

std::string Invert(std::string bytes) {
    for (char& c : bytes)
        c = static_cast<char>(~c);
    return bytes;
}

TEST(CcittFax, Group4RoundTripsDifferOnlyAfterAFillingHorizontalCode) {
    std::mt19937 rng(20240611);
    int exact = 0, differing = 0;
    for (int width : {13, 100, 1728, 2000, 5200}) {
        for (int longestRun : {4, 60, 6000}) {
            for (int trial = 0; trial < 8; ++trial) {
                const Bitmap bitmap = RandomBitmap(width, 24, longestRun, rng);
                const std::string raw = Encode(bitmap, COMPRESSION_CCITTFAX4);
                const std::string want = PackRows(bitmap);
                const std::size_t lineBytes = want.size() / bitmap.size();
                // The first line decoded in a state the encoder did not mean: one after a
                // line whose first run filled it, if that run was black or the line starts
                // black (with a white run and a white first pixel the state is the same).
                std::size_t firstOff = bitmap.size();
                for (std::size_t y = 0; y + 1 < bitmap.size() && firstOff == bitmap.size(); ++y) {
                    bool black = false;
                    const std::string above = y ? bitmap[y - 1] : std::string(width, '0');
                    if (EndsInFillingHorizontal(above, bitmap[y], black) &&
                        (black || bitmap[y][0] == '1'))
                        firstOff = y + 1;
                }
                const Result r = Fax2D(raw, width);
                SCOPED_TRACE(testing::Message() << "width " << width << " trial " << trial);
                if (firstOff == bitmap.size()) {
                    ++exact;
                    EXPECT_EQ(r.status, 0);
                    EXPECT_EQ(r.bytes, want);
                    EXPECT_EQ(Filter(raw, "<</K -1 /Columns " + std::to_string(width) + ">>").bytes,
                              Invert(want));
                    continue;
                }
                differing += r.bytes != want;
                if (r.bytes.empty()) {
                    EXPECT_NE(r.status, 0); // a code read out of step emptied the output
                } else {
                    EXPECT_EQ(r.bytes.size() % lineBytes, 0u);
                    EXPECT_EQ(
                        r.bytes.compare(0, firstOff * lineBytes, want, 0, firstOff * lineBytes), 0);
                }
            }
        }
    }
    // Both kinds must be there, or the test shows nothing of the rule.
    EXPECT_GT(exact, 40);
    EXPECT_GT(differing, 10);
    RecordProperty("exact", exact);
    RecordProperty("differing", differing);
}

TEST(CcittFax, FillingHorizontalCodeCarriesStateIntoTheNextLine) {
    // The second row ends with a black run from pixel 2 that libtiff codes as horizontal,
    // black 14 and white 0: the next line starts with a0 0 and the colour black, so that
    // the white 16 and black 0 of the third row are read as black 3, white 9, and what
    // follows as a pass and three more codes of a fourth line.
    const Bitmap blackEnd = {"1111111100000000", "0011111111111111", "0000000000000000"};
    const Result a = Fax2D(Encode(blackEnd, COMPRESSION_CCITTFAX4), 16);
    EXPECT_EQ(a.status, 0);
    EXPECT_EQ(a.bytes, Bytes({0xFF, 0x00, 0x3F, 0xFF, 0xE0, 0x0F, 0xF0, 0x00}));
    // Here the filling run is white, but the line starts black: without the reset b1 is
    // looked for from pixel 1, misses the change at 0, and three V0 codes give white lines.
    const Bitmap blackStart = {"0000000011111111", "1100000000000000", "1100000000000000"};
    const Result b = Fax2D(Encode(blackStart, COMPRESSION_CCITTFAX4), 16);
    EXPECT_EQ(b.status, 0);
    EXPECT_EQ(b.bytes, Bytes({0x00, 0xFF, 0xC0, 0x00, 0, 0, 0, 0, 0, 0}));
    // A white filling run above a white first pixel changes nothing.
    const Bitmap whiteStart = {"0000000000001111", "0000000000000000", "0111000000000000"};
    EXPECT_EQ(Fax2D(Encode(whiteStart, COMPRESSION_CCITTFAX4), 16).bytes, PackRows(whiteStart));
}

TEST(CcittFax, Group3OneDimensionalDataFromLibtiff) {
    std::mt19937 rng(7);
    for (int width : {13, 100, 1728}) {
        Bitmap bitmap = RandomBitmap(width, 12, 50, rng);
        for (std::string& row : bitmap)
            row.back() = '1'; // so that the colour after each row is white, as the next needs
        const std::string raw = Encode(bitmap, COMPRESSION_CCITTFAX3);
        // libtiff begins each row with EOL, and the first EOL ends the data.
        EXPECT_EQ(Fax1D(raw).status, 0);
        EXPECT_EQ(Fax1D(raw).bytes, "");
        EXPECT_EQ(Filter(raw, "<</K 0 /Columns " + std::to_string(width) + ">>").bytes, "");
        // The codes between the EOLs are the rows; no code has eleven zeros in a row. The
        // codes after the last EOL end in padding and are left out.
        const std::string bits = Unpack(raw);
        std::string codes, pixels;
        for (std::size_t y = 0, at = bits.find(kEol); y + 1 < bitmap.size(); ++y) {
            const std::size_t next = bits.find(kEol, at + kEol.size());
            ASSERT_NE(next, std::string::npos);
            codes += bits.substr(at + kEol.size(), next - at - kEol.size());
            pixels += bitmap[y];
            at = next;
        }
        // One bit string over all rows: no line is padded to a byte.
        const Result r = Fax1D(Pack(codes + kEol));
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.bytes, Pack(pixels));
        // Padding without EOL is read as a cut-off code.
        if (codes.size() % 8 != 0) {
            EXPECT_EQ(Fax1D(Pack(codes)).status, -3);
            EXPECT_EQ(Fax1D(Pack(codes)).bytes, "");
        }
    }
}

TEST(CcittFax, OneDimensionalCodesAndFilterParameters) {
    const std::string runs = "00110101 0000100 1110"; // white 0, black 10, white 6
    EXPECT_EQ(Fax1D(Pack(runs + kEol)).bytes, Bytes({0xFF, 0xC0}));
    EXPECT_EQ(Filter(Pack(runs + kEol), "<</K 0>>").bytes, Bytes({0x00, 0x3F}));
    EXPECT_EQ(Filter(Pack(runs + kEol), "<</K 1 /BlackIs1 true>>").bytes, Bytes({0xFF, 0xC0}));
    EXPECT_EQ(Filter(Pack(runs + kEol), "<</K 7 /Columns 0>>").bytes, Bytes({0x00, 0x3F}));
    // The padding is read as a black code and cut off; the filter does not look at that.
    EXPECT_EQ(Fax1D(Pack(runs)).status, -3);
    const Result padded = Filter(Pack(runs), "<<>>");
    EXPECT_EQ(padded.status, 0);
    EXPECT_EQ(padded.bytes, "");
    EXPECT_EQ(Filter(Pack(kEol + runs + kEol), "<</K 0>>").bytes, "");
    EXPECT_EQ(Fax1D("").status, 0);
    EXPECT_EQ(Fax1D("").bytes, "");
    // Make-up codes add up, 2560 of the shared ones included; the last byte ends with zeros.
    EXPECT_EQ(Fax1D(Pack("000000011111 000000010010 0111 010" + kEol)).bytes,
              std::string(568, '\0') + Bytes({0x20}));
    // Make-up codes cut off by EOL belong to no run.
    EXPECT_EQ(Fax1D(Pack("0111 11 11011" + kEol)).bytes, Bytes({0x30}));
    const Result invalid = Fax1D(Pack("0111 000000000000"));
    EXPECT_EQ(invalid.status, -2);
    EXPECT_EQ(invalid.bytes, "");
    EXPECT_EQ(Fax1D(Pack("0111 11 000000001")).status, -2);
    // Sixteen bits, the last code one zero short of white 3.
    EXPECT_EQ(Fax1D(Pack("0111 0010 11011 100")).status, -3);
}

TEST(CcittFax, TwoDimensionalEdgeCases) {
    // One V0 code a line; Columns 8 makes a byte of each.
    EXPECT_EQ(Filter(Bytes({0xFF, 0xFF}), "<</K -1 /Columns 8>>").bytes, std::string(16, '\xFF'));
    EXPECT_EQ(Filter(Bytes({0xFF}), "<</K -1 /Columns 8 /BlackIs1 true>>").bytes,
              std::string(8, '\0'));
    // White 1728 fills the line; black 5 starts the next with a0 5 and the colour white
    // still, so that the V0 behind it fills the rest white.
    const Result full = Fax2D(Pack("001 010011011 00110101 0011 1" + kEol), 1728);
    EXPECT_EQ(full.status, 0);
    EXPECT_EQ(full.bytes, std::string(216, '\0') + '\xF8' + std::string(215, '\0'));
    // White 10 on a line of 8: the two pixels left over are dropped, not carried over.
    EXPECT_EQ(Fax2D(Pack("001 00111 11" + kEol), 8).bytes, Bytes({0x00, 0xC0}));
    // Black 2..5; VL1 and VR1 around it give 1..6; a pass over that, V0 to the end.
    EXPECT_EQ(Fax2D(Pack("001 0111 011 1  010 011 1  0001 1" + kEol), 16).bytes,
              Bytes({0x3C, 0x00, 0x7E, 0x00, 0x00, 0x00}));
    // Columns the decoder does not take: no output, -1, at once even for 2^31-1.
    for (int columns : {0, -8, 65537, 2147483647}) {
        const Result r = Fax2D(Bytes({0xFF}), columns);
        EXPECT_EQ(r.status, -1);
        EXPECT_EQ(r.bytes, "");
    }
    EXPECT_EQ(Fax2D(Bytes({0x80}), 65536).status, -1); // one line, then cut-off zeros
    EXPECT_EQ(Fax2D(Bytes({0x80}), 65536).bytes, std::string(8192, '\0'));
}

TEST(CcittFax, StopTable) {
    // Horizontal white 3, black 2 on a line of 16, then what ends the data.
    const std::string start = "001 1000 11 ";
    const std::string line = Bytes({0x18, 0x00});
    struct Case {
        std::string bits;
        int status;
        std::string bytes;
    };
    const Case cases[] = {
        {start + "0000010", 0, line},     // VL3, then the input is used up
        {start + kEol + "1", 0, line},    // EOL, and nothing after it counts
        {start + "0000000", -1, line},    // cut off inside a mode code
        {start + "0000001000", -1, line}, // extension codes
        {start + "0000001110", -1, line},
        {"1 0000001000", -1, std::string(2, '\0')}, // nothing written: no second line
        {start + "0000001111", -1, ""},             // the stop extension
        {start + "000000000000", -2, ""},           // invalid as mode
        {start + "00000001", -2, ""},
        {"1 001" + kEol, -1, ""},            // EOL inside a horizontal run
        {"1 001 1000 000000000000", -2, ""}, // invalid inside one
        {"1 001 1000", -3, ""},              // input ends between its runs
        {"1 001 11011", -3, ""},             // or in one after a make-up
    };
    for (const Case& c : cases) {
        const Result r = Fax2D(Pack(c.bits), 16);
        EXPECT_EQ(r.status, c.status) << c.bits;
        EXPECT_EQ(r.bytes, c.bytes) << c.bits;
        // The filter returns a failure at once, without inverting what is kept.
        const Result f = Filter(Pack(c.bits), "<</K -1 /Columns 16>>");
        EXPECT_EQ(f.status, c.status);
        EXPECT_EQ(f.bytes, c.status ? c.bytes : Invert(c.bytes));
    }
}

TEST(CcittFax, AnyInputEndsWithinItsShape) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        const std::string data = RandomBytes(1 + seed * 7 % 300, seed);
        const int columns = 1 + static_cast<int>(seed * 97 % 3000);
        const Result two = Fax2D(data, columns);
        EXPECT_TRUE(two.status == 0 || two.status == -1 || two.status == -2 || two.status == -3);
        EXPECT_EQ(two.bytes.size() % ((columns + 7) / 8), 0u);
        EXPECT_TRUE(two.status >= -1 || two.bytes.empty());
        const Result one = Fax1D(data);
        EXPECT_TRUE(one.status == 0 || (one.status < -1 && one.bytes.empty()));
    }
}

} // namespace
