#pragma once
// Test PDFs written as readable text with placeholders for what is tedious to count:
//   {{streamlen}}  the length of the data of the next stream
//   {{xref}}       a classic cross-reference section over every "N G obj" in the text
//   {{size}}       the highest object number plus one
//   {{startxref}}  the offset of the cross-reference section
#include <string>

namespace tarquil::test {

std::string ExpandPdfTemplate(std::string text);
// Reads a template from tests/data and expands it.
std::string PdfFromTemplate(const std::string& relativePath);

} // namespace tarquil::test
