#pragma once
// Status codes of the PDF layer. Every operation returns one: 0 for success, a code of this
// list otherwise (and -1, which has no text). The codes are the ids of their texts in the
// plug-in's string table.
#include "pdf/token/PDFErrorList.h"

#include <cstdint>

using PDFStatus = std::int32_t;

enum PDFError : std::int32_t {
    kPdfOk = 0,
#define TARQUIL_PDF_ERROR_ENUM(code, name, text) kPdf##name = code,
    PDF_ERROR_LIST(TARQUIL_PDF_ERROR_ENUM)
#undef TARQUIL_PDF_ERROR_ENUM
};

// The English text of a code, or null for a code without one.
const char* PDFErrorText(PDFStatus code);
