// DecodeStream over arbitrary dictionaries and data: the input's first line is the stream's
// dictionary as PDF text, the rest its data. A first line that is no dictionary picks one of
// a few fixed chains instead, so the fuzzer also reaches deep into each filter.
#include "filters/FilterPipeline.h"
#include "pdf/parser/PDFParser.h"
#include "pdf/parser/ParseText.h"

#include <cstdint>
#include <string>

namespace {

const char* const kChains[] = {
    "<</Filter/FlateDecode>>",
    "<</Filter/FlateDecode/DecodeParms<</Predictor 12/Colors 3/Columns 7>>>>",
    "<</Filter/ASCII85Decode>>",
    "<</Filter/ASCIIHexDecode>>",
    "<</Filter/RunLengthDecode>>",
    "<</Filter/CCITTFaxDecode/DecodeParms<</K -1/Columns 64>>>>",
    "<</Filter/CCITTFaxDecode/DecodeParms<</K 0/Columns 100>>>>",
    "<</Filter[/ASCII85Decode/FlateDecode]/DecodeParms[null<</Predictor 15/Colors 1/Columns 5>>]>>",
    "<</Filter/ASCIIBWEncode/DecodeParms<</Columns 13>>>>",
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::size_t newline = bytes.find('\n');
    const std::string head = bytes.substr(0, newline);
    const std::string body =
        newline == std::string::npos ? std::string() : bytes.substr(newline + 1);
    PDFToken* dict = ParseDictionaryText(head);
    if (!dict) {
        const std::size_t pick = size ? data[0] % (sizeof kChains / sizeof kChains[0]) : 0;
        dict = ParseDictionaryText(kChains[pick]);
    }
    const PDFTokenRef stream(new PDFParser::PDFStream(body, dict));
    std::string out;
    (void)DecodeStream(*static_cast<const PDFParser::PDFStream*>(stream.Get()), out);
    return 0;
}
