#include "filters/DecodeLimit.h"
#include "filters/Filters.h"

PDFStatus RunLengthDecode(const std::string& input, std::string& output, PDFToken*) {
    output.clear();
    // A two-byte run gives 128 bytes: bounded as it grows.
    const DecodeLimit limit = CurrentDecodeLimit();
    const std::size_t size = input.size();
    std::size_t i = 0;
    while (i < size) {
        const unsigned b = static_cast<unsigned char>(input[i]);
        if (b == 128)
            return kPdfOk;
        if (b < 128) {
            // A literal run must be followed by at least one more byte, as a rule the end
            // marker: one that ends exactly at the last byte is taken as cut off.
            const std::size_t count = b + 1;
            if (i + 1 + count >= size)
                return kPdfDataCorrupted;
            output.append(input, i + 1, count);
            i += 1 + count;
        } else {
            if (i + 1 >= size)
                return kPdfDataCorrupted;
            output.append(257 - b, input[i + 1]);
            i += 2;
        }
        if (output.size() > limit.bytes)
            return limit.status;
    }
    return kPdfOk;
}
