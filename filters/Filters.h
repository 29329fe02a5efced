#pragma once
// The filter functions of the table, each of the form of FilterFunction.
#include "filters/FilterFunction.h"

PDFStatus ASCIIHexEncode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus ASCIIHexDecode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus ASCII85Encode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus ASCII85Decode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus FlateEncode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus FlateDecode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus RunLengthDecode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus ASCIIBinaryDecode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus ASCIIBinaryEncode(const std::string& input, std::string& output, PDFToken* parms);
PDFStatus ASCIIBWEncode(const std::string& input, std::string& output, PDFToken* parms);

// The PNG row types 0, 1, 3 and a plain copy for 2, undone in place after the filters.
[[nodiscard]] PDFStatus ApplyPredictor(PDFToken* parms, std::string& bytes);
