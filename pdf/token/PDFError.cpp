#include "pdf/token/PDFError.h"

const char* PDFErrorText(PDFStatus code) {
    switch (code) {
#define TARQUIL_PDF_ERROR_TEXT(code, name, text)                                                   \
    case code:                                                                                     \
        return text;
        PDF_ERROR_LIST(TARQUIL_PDF_ERROR_TEXT)
#undef TARQUIL_PDF_ERROR_TEXT
    default:
        return nullptr;
    }
}
