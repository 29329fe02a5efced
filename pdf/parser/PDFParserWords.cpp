// The words the base parser knows, and the two that read raw bytes: "stream" and "ID".
#include "pdf/parser/PDFParser.h"

#include <algorithm>

namespace {
inline bool IsWhite(int c) {
    return c == ' ' || (c >= 9 && c <= 13);
}
} // namespace

PDFStatus PDFParser::ExecuteWord(const std::string& word, PDFDocument* /*document*/) {
    switch (word.size()) {
    case 1:
        if (word == "R") {
            const std::int32_t generation = PopInteger();
            const std::int32_t number = PopInteger();
            Push(new PDFRef(number, generation));
            return kPdfOk;
        }
        break;
    case 2:
        if (word == "BX") {
            ++compatDepth;
            return kPdfOk;
        }
        if (word == "EX") {
            --compatDepth;
            return kPdfOk;
        }
        break;
    case 3:
        if (word == "obj")
            return kPdfOk; // the two numbers before it stay on the stack
        if (word == "dup") {
            PDFToken* top = Pop();
            top->AddRef();
            Push(top);
            Push(top);
            return kPdfOk;
        }
        if (word == "pop") {
            Drop();
            return kPdfOk;
        }
        if (word == "end") {
            // With nothing left to remove there is nothing to do.
            if (!dictStack.empty()) {
                dictStack.back()->Release();
                dictStack.pop_back();
            }
            return kPdfOk;
        }
        if (word == "def") {
            PDFToken* value = Pop();
            const std::string key = PopString();
            if (dictStack.empty()) {
                value->Release();
                return kPdfExpectedDictionary;
            }
            Store(dictStack.back(), key, value);
            return kPdfOk;
        }
        break;
    case 4:
        if (word == "true" || word == "null") {
            Push(word == "true" ? static_cast<PDFToken*>(new PDFBool(true)) : new PDFNull());
            return kPdfOk;
        }
        if (word == "dict") {
            (void)PopInteger(); // the size is only a hint
            Push(new PDFDict());
            return kPdfOk;
        }
        break;
    case 5:
        if (word == "false") {
            Push(new PDFBool(false));
            return kPdfOk;
        }
        if (word == "begin") {
            PDFToken* top = Pop();
            if (top->IsType(kPdfKindDict))
                dictStack.push_back(top);
            else
                top->Release();
            return kPdfOk;
        }
        break;
    case 6:
        if (word == "stream")
            return ReadStream();
        break;
    case 11:
        if (word == "currentdict") {
            if (dictStack.empty()) {
                Push(new PDFNull());
            } else {
                dictStack.back()->AddRef();
                Push(dictStack.back());
            }
            return kPdfOk;
        }
        break;
    case 14:
        if (word == "defineresource") {
            const std::string category = PopString();
            PDFToken* instance = Pop();
            const std::string key = PopString();
            PDFStatus status = kPdfInvalidPdf;
            if (category == "CMap") {
                instance->AddRef();
                Store(resources, key, instance);
                status = kPdfOk;
            }
            Push(instance);
            return status;
        }
        break;
    default:
        break;
    }

    if (word == stopWord) {
        stopped = true;
        return kPdfOk;
    }
    for (auto it = dictStack.rbegin(); it != dictStack.rend(); ++it) {
        PDFToken* value = static_cast<PDFDict*>(*it)->Find(word);
        if (value) {
            value->AddRef();
            Push(value);
            return kPdfOk;
        }
    }
    return compatDepth != 0 ? kPdfOk : kPdfUnknownOp;
}

PDFStatus PDFParser::ReadStream() {
    if (!input)
        return kPdfNoOpenFile;
    PDFToken* dict = Peek(0);
    if (!dict || !dict->IsType(kPdfKindDict))
        return kPdfExpectedDictionary;

    // The byte after the word goes, whatever it is; a CR takes the next byte with it.
    if (GetChar() == '\r')
        GetChar();

    PDFToken* lengthToken = static_cast<PDFDict*>(dict)->Find("Length");
    if (!lengthToken)
        return kPdfBadLength;
    PDFToken* resolved = nullptr;
    // A length that cannot be loaded is as bad as a missing one.
    if (Resolve(lengthToken, &resolved) != kPdfOk || !resolved)
        return kPdfBadLength;
    const std::int32_t length = resolved->GetInteger(-1);
    if (length < 0)
        return kPdfBadLength;

    // The data are taken as the length says. Should the input end first, the nine bytes
    // after the data cannot be "endstream", so the stream fails right there. The data grow
    // as they arrive, so a hostile length costs no more memory than the file holds.
    const std::size_t want = static_cast<std::size_t>(length);
    std::string data;
    data.reserve(std::min<std::size_t>(want, std::size_t(1) << 20));
    if (want > 0 && hasPushback) {
        hasPushback = false;
        if (lastChar == -1)
            return kPdfExpectedEndstream;
        data += static_cast<char>(lastChar);
    }
    if (data.size() < want) {
        if (input->rdstate() != std::ios_base::goodbit)
            return kPdfExpectedEndstream;
        char chunk[1 << 16];
        while (data.size() < want) {
            const std::streamsize ask =
                static_cast<std::streamsize>(std::min(sizeof chunk, want - data.size()));
            const std::streamsize got = input->rdbuf()->sgetn(chunk, ask);
            data.append(chunk, static_cast<std::size_t>(got > 0 ? got : 0));
            if (got < ask) {
                input->setstate(std::ios_base::eofbit | std::ios_base::failbit);
                return kPdfExpectedEndstream;
            }
        }
        lastChar = static_cast<unsigned char>(data.back());
    }

    int c;
    do {
        c = GetChar();
    } while (c != -1 && IsWhite(c));
    static const char kEnd[] = "endstream";
    for (int i = 0; i < 9; ++i) {
        if (c != static_cast<unsigned char>(kEnd[i]))
            return kPdfExpectedEndstream;
        if (i < 8)
            c = GetChar();
    }

    operandStack.pop_back(); // the dictionary's reference moves into the stream
    Push(new PDFStream(std::move(data), dict));
    return kPdfOk;
}

void PDFParser::SkipInlineImage() {
    // The image data are passed over up to a line that starts with "EI" and a blank.
    char line[3];
    int used = 0;
    for (;;) {
        const int c = GetChar();
        if (c == -1)
            return;
        if (c == '\r' || c == '\n') {
            used = 0;
            continue;
        }
        if (used < 3) {
            line[used++] = static_cast<char>(c);
            if (used == 3 && line[0] == 'E' && line[1] == 'I' && line[2] == ' ')
                return;
        }
    }
}
