#include "pdf/xref/ObjectStream.h"

#include "filters/FilterPipeline.h"
#include "pdf/parser/PDFParser.h"
#include "pdf/token/PDFNumbers.h"
#include "pdf/xref/PDFDocument.h"

std::vector<std::string> SplitWords(const std::string& text) {
    std::vector<std::string> words;
    const char* p = text.c_str(); // a NUL ends the text
    auto isSpace = [](char c) { return c == ' ' || (c >= 9 && c <= 13); };
    while (*p) {
        while (*p && isSpace(*p))
            ++p;
        if (!*p)
            break;
        std::string word;
        while (*p && !isSpace(*p)) {
            if (*p == '"') {
                // A quoted run: taken without its quotes, white space and all.
                ++p;
                while (*p && *p != '"')
                    word += *p++;
                if (*p == '"')
                    ++p;
                continue;
            }
            word += *p++;
        }
        words.push_back(std::move(word));
    }
    return words;
}

std::vector<std::pair<std::int32_t, std::int32_t>> ObjectStreamPairs(const std::string& data,
                                                                     std::int32_t first) {
    const std::size_t headSize = first <= 0 ? 0
                                            : (static_cast<std::size_t>(first) < data.size()
                                                   ? static_cast<std::size_t>(first)
                                                   : data.size());
    const std::vector<std::string> words = SplitWords(data.substr(0, headSize));
    std::vector<std::pair<std::int32_t, std::int32_t>> pairs;
    for (std::size_t i = 0; i + 1 < words.size(); i += 2)
        pairs.emplace_back(PdfAtol(words[i].c_str()), PdfAtol(words[i + 1].c_str()));
    return pairs;
}

PDFStatus ReadObjectStream(ObjectStreamHeader& header, PDFDocument* document, std::istream* input) {
    PDFParser parser(input, document);
    const PDFStatus read = parser.ParseUntil("endobj");
    if (read != kPdfOk)
        return read;
    PDFToken* top = parser.Peek(0);
    if (!top || !top->IsType(kPdfKindStream))
        return -1;
    const auto& stream = *static_cast<PDFParser::PDFStream*>(top);
    const auto* dict = static_cast<const PDFParser::PDFDict*>(stream.dict);
    const PDFToken* n = dict->Find("N");
    const PDFToken* first = dict->Find("First");
    header.count = n ? n->GetInteger(0) : 0;
    header.first = first ? first->GetInteger(0) : 0;
    const PDFStatus decoded = DecodeStream(stream, header.data);
    if (decoded != kPdfOk)
        return decoded;
    header.objects = ObjectStreamPairs(header.data, header.first);
    return kPdfOk;
}
