// The predictor pass after the filter chain: PNG rows of types 0 (None), 1 (Sub), 3
// (Average), and type 2 (Up) as a plain copy of its bytes. Other row types fail; TIFF
// predictors and rows without an explicit /Colors are left as they are.
#include "filters/Filters.h"

#include "pdf/token/PDFTokens.h"

#include <cstdint>

namespace {

std::int32_t Parameter(PDFToken* parms, const char* key) {
    PDFToken* value = static_cast<PDFParserTokens::PDFDict*>(parms)->Find(key);
    return value ? value->GetInteger(-1) : -1;
}

} // namespace

PDFStatus ApplyPredictor(PDFToken* parms, std::string& bytes) {
    if (!parms || !parms->IsType(kPdfKindDict))
        return kPdfOk;
    const std::int64_t colors = Parameter(parms, "Colors");
    const std::int64_t columns = Parameter(parms, "Columns");
    const std::int64_t predictor = Parameter(parms, "Predictor");
    if (predictor < 10 || colors < 1 || columns < 1)
        return kPdfOk;
    // /BitsPerComponent is not read: one byte a component.
    const std::int64_t rowBytes = columns * colors;
    const std::size_t bpp = static_cast<std::size_t>(colors);
    const std::int64_t rows = static_cast<std::int64_t>(bytes.size()) / (rowBytes + 1);

    std::string result;
    result.reserve(static_cast<std::size_t>(rows * rowBytes));
    for (std::int64_t r = 0; r < rows; ++r) {
        const std::size_t base = static_cast<std::size_t>(r * (rowBytes + 1));
        const unsigned type = static_cast<unsigned char>(bytes[base]);
        const char* raw = bytes.data() + base + 1;
        const std::size_t rowStart = result.size();
        const std::size_t n = static_cast<std::size_t>(rowBytes);
        switch (type) {
        case 0:
        case 2: // Up adds the byte that is not there yet, a 0: a copy, in every row
            result.append(raw, n);
            break;
        case 1:
            for (std::size_t i = 0; i < n; ++i) {
                const unsigned left =
                    i >= bpp ? static_cast<unsigned char>(result[rowStart + i - bpp]) : 0u;
                result += static_cast<char>(static_cast<unsigned char>(raw[i]) + left);
            }
            break;
        case 3:
            for (std::size_t i = 0; i < n; ++i) {
                const unsigned left =
                    i >= bpp ? static_cast<unsigned char>(result[rowStart + i - bpp]) : 0u;
                const unsigned up =
                    r > 0 ? static_cast<unsigned char>(result[rowStart - n + i]) : 0u;
                result +=
                    static_cast<char>(static_cast<unsigned char>(raw[i]) + ((left + up) >> 1));
            }
            break;
        default:
            return kPdfUnknownFilter; // Paeth and anything else: the bytes stay as filtered
        }
    }
    bytes = std::move(result);
    return kPdfOk;
}
