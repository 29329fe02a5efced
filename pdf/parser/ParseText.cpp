#include "pdf/parser/ParseText.h"

#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"

PDFToken* ParseDictionaryText(const std::string& text) {
    auto input = MakeMemoryInput(text.data(), text.size());
    // A length of 0 would make the memory input measure to a NUL; an empty text has none.
    PDFParser parser(text.empty() ? nullptr : input.get(), nullptr);
    const PDFStatus status = parser.ParseUntil("");
    if ((status != kPdfOk && status != kPdfEof) || parser.operandStack.size() != 1 ||
        !parser.operandStack[0]->IsType(kPdfKindDict))
        return nullptr;
    PDFToken* dict = parser.operandStack[0];
    parser.operandStack.clear(); // its reference goes to the caller
    return dict;
}
