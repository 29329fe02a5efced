#include "filters/DecodeLimit.h"
#include "filters/FilterPipeline.h"
#include "filters/Filters.h"

#include "FilterTestSupport.h"

#include <zlib.h>

using namespace filtertest;

namespace {

struct Decoded {
    PDFStatus status;
    std::string bytes;
};

Decoded Decode(const std::string& dictText, const std::string& data) {
    const PDFTokenRef stream = MakeStream(dictText, data);
    Decoded d{0, "stale"};
    d.status = DecodeStream(AsStream(stream), d.bytes);
    return d;
}

std::string Ascii85(const std::string& data) {
    std::string out;
    EXPECT_EQ(ASCII85Encode(data, out, nullptr), kPdfOk);
    return out;
}

TEST(Pipeline, NamesAndChains) {
    EXPECT_EQ(Decode("<<>>", "raw").bytes, "raw");
    EXPECT_EQ(Decode("<</Filter []>>", "raw").bytes, "raw");
    EXPECT_EQ(Decode("<</Filter /ASCIIHexDecode>>", "414243>").bytes, "ABC");
    EXPECT_EQ(Decode("<</Filter [/ASCIIHexDecode /ASCIIHexDecode]>>", "3431>").bytes, "A");
    // Encoders are filters like any other: a stream that names one is encoded.
    EXPECT_EQ(Decode("<</Filter /FlateEncode>>", "abc").bytes, ZlibCompress("abc"));
    EXPECT_EQ(Decode("<</Filter /ASCIIHexEncode>>", "A").bytes, "41>");
    // Not in the table: the name must match exactly, abbreviations and LZW included.
    for (const char* name : {"/LZWDecode", "/AHx", "/Fl", "/JPXDecode", "/Crypt",
                             "/RunLengthEncode", "/flatedecode"}) {
        EXPECT_EQ(Decode(std::string("<</Filter ") + name + ">>", "x").status, kPdfUnknownFilter)
            << name;
    }
    // An indirect filter names nothing; a failure leaves what the failing filter made.
    EXPECT_EQ(Decode("<</Filter 5 0 R>>", "x").status, kPdfUnknownFilter);
    const Decoded failed = Decode("<</Filter [/ASCIIHexDecode /ASCIIHexDecode]>>", "34317A>");
    EXPECT_EQ(failed.status, kPdfIllegalStreamCharacter);
    EXPECT_EQ(failed.bytes, "A");
    // A name no filter answers leaves the data as the stage before left them.
    for (const char* filter : {"[/ASCIIHexDecode /LZWDecode]", "[/ASCIIHexDecode null]"}) {
        const Decoded unknown = Decode(std::string("<</Filter ") + filter + ">>", "414243");
        EXPECT_EQ(unknown.status, kPdfUnknownFilter);
        EXPECT_EQ(unknown.bytes, "ABC") << filter;
    }
    // A string names a filter too, since only its bytes are asked for.
    EXPECT_EQ(Decode("<</Filter (ASCIIHexDecode)>>", "41").bytes, "A");
}

TEST(Pipeline, JpegIsTaggedAndJbig2IsFixed) {
    EXPECT_EQ(Decode("<</Filter /DCTDecode>>", "\xFF\xD8jpeg").bytes, "JPEG:\xFF\xD8jpeg");
    // The next filter in the chain gets the tag as data.
    EXPECT_EQ(Decode("<</Filter [/DCTDecode /ASCIIHexEncode]>>", "\x01").bytes, "4A5045473A01>");
    const Decoded jbig2 =
        Decode("<</Filter /JBIG2Decode /DecodeParms <</JBIG2Globals 7 0 R>>>>", "anything at all");
    EXPECT_EQ(jbig2.status, kPdfOk);
    EXPECT_EQ(jbig2.bytes, Bytes({0, 0, 0, 4, 0x33, 1, 0, 0, 0, 0}));
}

TEST(Pipeline, ParametersMergeAndThePredictorRunsLast) {
    // Rows of type 1 (Sub) for /Colors 1 /Columns 4, deflated, then in base 85.
    const std::string rows = Bytes({1, 1, 1, 1, 1, 1, 2, 2, 2, 2});
    const std::string data = Ascii85(ZlibCompress(rows));
    const Decoded d = Decode("<</Filter [/ASCII85Decode /FlateDecode] /DecodeParms [null "
                             "<</Predictor 12/Colors 1/Columns 4>>]>>",
                             data);
    EXPECT_EQ(d.status, kPdfOk);
    EXPECT_EQ(d.bytes, Bytes({1, 2, 3, 4, 2, 4, 6, 8}));
    // One set serves every filter, later keys winning; the last /Columns counts.
    const Decoded merged = Decode("<</Filter /FlateDecode /DecodeParms [<</Predictor 12 "
                                  "/Colors 1 /Columns 4>> <</Columns 9>>]>>",
                                  ZlibCompress(rows));
    EXPECT_EQ(merged.bytes, Bytes({1, 2, 3, 4, 5, 7, 9, 11, 13})); // one row of nine
    // Parameters that are no dictionary, or indirect, count as absent.
    EXPECT_EQ(Decode("<</Filter /FlateDecode /DecodeParms 4 0 R>>", ZlibCompress(rows)).bytes,
              rows);
    // The predictor's failure is the stream's.
    const std::string paeth = Bytes({4, 1, 2, 3, 4});
    const Decoded bad = Decode("<</Filter /FlateDecode /DecodeParms <</Predictor 12/Colors "
                               "1/Columns 4>>>>",
                               ZlibCompress(paeth));
    EXPECT_EQ(bad.status, kPdfUnknownFilter);
    EXPECT_EQ(bad.bytes, paeth);
    // With parameters but no filter the predictor is not run.
    EXPECT_EQ(Decode("<</DecodeParms <</Predictor 12/Colors 1/Columns 4>>>>", rows).bytes, rows);
}

// A read's budget bounds what its streams decode: each filter that can multiply its input
// stops as its output passes the bound, and each stream's result is taken off the budget.
TEST(Pipeline, DecodingIsBoundedByTheReadsBudget) {
    const std::string blanks(1 << 20, ' ');
    std::string runs;
    for (int i = 0; i < 2000; ++i)
        runs += "\x81 ";                      // 128 blanks each
    const std::string faxLines(1000, '\xff'); // one-bit codes, each a line of 65,536 pixels
    for (const auto& [dict, data] : {std::pair{"<</Filter/FlateDecode>>", ZlibCompress(blanks)},
                                     std::pair{"<</Filter/RunLengthDecode>>", runs},
                                     std::pair{"<</Filter/CCITTFaxDecode/DecodeParms"
                                               "<</K -1/Columns 65536>>>>",
                                               faxLines}}) {
        const DecodeBudgetScope budget(100000);
        EXPECT_EQ(Decode(dict, data).status, kPdfDecodeBudgetExceeded) << dict;
    }
    {
        const DecodeBudgetScope budget(100000);
        const std::string part = ZlibCompress(std::string(40000, 'x'));
        EXPECT_EQ(Decode("<</Filter/FlateDecode>>", part).status, kPdfOk);
        EXPECT_EQ(Decode("<</Filter/FlateDecode>>", part).status, kPdfOk);
        EXPECT_EQ(Decode("<</Filter/FlateDecode>>", part).status, kPdfDecodeBudgetExceeded);
    }
    // Outside a read only the bound of one stream counts.
    EXPECT_EQ(CurrentDecodeLimit().bytes, kMaxDecodedStream);
    EXPECT_EQ(CurrentDecodeLimit().status, kPdfStreamTooLarge);
    EXPECT_EQ(Decode("<</Filter/FlateDecode>>", ZlibCompress(blanks)).bytes, blanks);
}

} // namespace
