#pragma once
// Decoding a stream's data through the filters its dictionary names, and then the
// predictor its parameters ask for.
#include "filters/FilterFunction.h"
#include "pdf/token/PDFTokens.h"

#include <string>

// `out` receives the decoded bytes; on a failure, whatever the failing step left.
[[nodiscard]] PDFStatus DecodeStream(const PDFParserTokens::PDFStream& stream, std::string& out);

// One step of the chain: a filter of the table, "DCTDecode" or "JBIG2Decode"; 10021 for
// any other name.
[[nodiscard]] PDFStatus ApplyFilter(const std::string& name, PDFToken* parms,
                                    const std::string& input, std::string& output);

// The filter function of a name of the table, or null.
FilterFunction FindFilter(const std::string& name);
