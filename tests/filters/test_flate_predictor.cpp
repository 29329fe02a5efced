#include "filters/Filters.h"

#include "FilterTestSupport.h"

#include <zlib.h>

using namespace filtertest;

namespace {

TEST(Flate, InflatesAgreesWithZlibAndFailsAsZlibSays) {
    // Text that compresses well and random bytes that do not, through the 64 KB window
    // and across its edges.
    std::string text;
    for (int i = 0; i < 20000; ++i)
        text += "line " + std::to_string(i % 97) + " of a drawing\n";
    for (const std::string& data :
         {text, RandomBytes(200000, 3), std::string(), std::string(1 << 20, 'z')}) {
        std::string out;
        EXPECT_EQ(FlateDecode(ZlibCompress(data), out, nullptr), kPdfOk);
        EXPECT_EQ(out, data);
    }
    std::string out;
    // Bytes after the end of the deflate data are ignored.
    EXPECT_EQ(FlateDecode(ZlibCompress("abc") + "trailing", out, nullptr), kPdfOk);
    EXPECT_EQ(out, "abc");
    // No valid header: zlib says the data are damaged.
    EXPECT_EQ(FlateDecode("not deflate data", out, nullptr), kPdfDataCorrupted);
    // Cut in the middle: 10023, with what came before the cut.
    const std::string whole = ZlibCompress(text);
    EXPECT_EQ(FlateDecode(whole.substr(0, whole.size() / 2), out, nullptr), kPdfZlibError);
    EXPECT_GT(out.size(), 0u);
    EXPECT_EQ(out, text.substr(0, out.size()));
    // Cut just before the check value: all data came out, and still the stream failed.
    EXPECT_EQ(FlateDecode(whole.substr(0, whole.size() - 4), out, nullptr), kPdfZlibError);
    EXPECT_EQ(out, text);
    EXPECT_EQ(FlateDecode("", out, nullptr), kPdfZlibError);
    EXPECT_EQ(out, "");
}

TEST(Flate, CutStreamsKeepWhatTheNarrowWindowGives) {
    // A long match that the cut leaves pending: the 256-byte window stops short of it once
    // the input is all taken in, and the decoder gives exactly that much.
    const std::string data = std::string(300, 'a') + RandomBytes(40, 9) + std::string(5000, 'b');
    const std::string whole = ZlibCompress(data);
    for (std::size_t cut = 2; cut < whole.size(); ++cut) {
        std::string mine;
        const PDFStatus status = FlateDecode(whole.substr(0, cut), mine, nullptr);
        // The same inflation done by hand through a 256-byte window.
        std::string reference;
        z_stream z{};
        std::string input = whole.substr(0, cut);
        z.next_in = reinterpret_cast<Bytef*>(input.data());
        z.avail_in = static_cast<uInt>(input.size());
        ASSERT_EQ(inflateInit(&z), Z_OK);
        int zs;
        do {
            unsigned char window[256];
            z.next_out = window;
            z.avail_out = 256;
            zs = inflate(&z, z.avail_in == 0 ? Z_FINISH : Z_NO_FLUSH);
            reference.append(reinterpret_cast<char*>(window), 256 - z.avail_out);
        } while (zs == Z_OK);
        inflateEnd(&z);
        EXPECT_EQ(mine, reference) << "cut at " << cut;
        EXPECT_EQ(status, zs == Z_DATA_ERROR ? kPdfDataCorrupted : kPdfZlibError);
    }
}

TEST(Flate, EncodesAsZlibDoesAndRoundTrips) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
        const std::string data = RandomBytes(seed * 10000, seed) + std::string(seed * 5000, 'q');
        std::string encoded, decoded;
        EXPECT_EQ(FlateEncode(data, encoded, nullptr), kPdfOk);
        EXPECT_EQ(encoded, ZlibCompress(data)); // level 6, 15 bits, memory level 8
        EXPECT_EQ(FlateDecode(encoded, decoded, nullptr), kPdfOk);
        EXPECT_EQ(decoded, data);
    }
}

std::string Predict(const std::string& dictText, std::string bytes, PDFStatus expected = kPdfOk) {
    PDFTokenRef parms(ParseDictionaryText(dictText));
    EXPECT_EQ(ApplyPredictor(parms.Get(), bytes), expected) << dictText;
    return bytes;
}

TEST(Predictor, RowTypes) {
    const std::string sub = Bytes({1, 1, 1, 1, 1, 1, 10, 0, 0, 0});
    EXPECT_EQ(Predict("<</Predictor 15/Colors 1/Columns 4>>", sub),
              Bytes({1, 2, 3, 4, 10, 10, 10, 10}));
    EXPECT_EQ(Predict("<</Predictor 10/Colors 1/Columns 4>>", sub),
              Bytes({1, 2, 3, 4, 10, 10, 10, 10}));
    // Without an explicit /Colors, or with a TIFF predictor, nothing is undone.
    EXPECT_EQ(Predict("<</Predictor 12/Columns 4>>", sub), sub);
    EXPECT_EQ(Predict("<</Predictor 2/Colors 1/Columns 4>>", sub), sub);
    EXPECT_EQ(Predict("<</Colors 1/Columns 4>>", sub), sub);
    // Up copies its bytes in every row.
    EXPECT_EQ(Predict("<</Predictor 12/Colors 3/Columns 1>>", Bytes({2, 1, 2, 3, 2, 1, 1, 1})),
              Bytes({1, 2, 3, 1, 1, 1}));
    // Average: half of left plus up, the sum taken before the shift, modulo 256.
    EXPECT_EQ(Predict("<</Predictor 12/Colors 1/Columns 3>>", Bytes({3, 10, 4, 255, 3, 0, 0, 0})),
              Bytes({10, 9, 3, 5, 7, 5}));
    EXPECT_EQ(Predict("<</Predictor 12/Colors 2/Columns 2>>", Bytes({1, 1, 2, 255, 254})),
              Bytes({1, 2, 0, 0}));
    // Paeth and unknown types fail, leaving the bytes as they were.
    const std::string paeth = Bytes({0, 1, 2, 4, 1, 1});
    EXPECT_EQ(Predict("<</Predictor 12/Colors 1/Columns 2>>", paeth, kPdfUnknownFilter), paeth);
    // Only whole rows count; not even one whole row leaves nothing.
    EXPECT_EQ(Predict("<</Predictor 12/Colors 1/Columns 2>>", Bytes({0, 5, 6, 0, 7})),
              Bytes({5, 6}));
    EXPECT_EQ(Predict("<</Predictor 12/Colors 1/Columns 4>>", Bytes({0, 1, 2, 3})), "");
    // Sizes that would overflow 32 bits simply have no whole row.
    EXPECT_EQ(Predict("<</Predictor 12/Colors 2000000000/Columns 2000000000>>", sub), "");
}

} // namespace
