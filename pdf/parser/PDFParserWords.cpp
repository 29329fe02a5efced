// The words the base parser knows, and the two that read raw bytes: "stream" and "ID".
#include "pdf/parser/PDFParser.h"

#include <algorithm>
#include <unordered_set>

namespace {

inline bool IsWhite(int c) {
    return c == ' ' || (c >= 9 && c <= 13);
}

inline bool IsContainer(const PDFToken* t) {
    return t->IsType(kPdfKindArray) || t->IsType(kPdfKindDict) || t->IsType(kPdfKindStream);
}

// Whether `target` may be reached from `from` through arrays, dictionaries and streams.
// Each container looked at costs one unit of `budget`; once it is spent the answer is yes.
bool MayReach(PDFToken* from, const PDFToken* target, std::size_t& budget) {
    std::vector<PDFToken*> work{from};
    std::unordered_set<const PDFToken*> seen;
    while (!work.empty()) {
        PDFToken* t = work.back();
        work.pop_back();
        if (t == target)
            return true;
        if (!t || !IsContainer(t) || !seen.insert(t).second)
            continue;
        if (budget == 0)
            return true;
        --budget;
        if (t->IsType(kPdfKindArray)) {
            for (PDFToken* item : static_cast<PDFParser::PDFArray*>(t)->items)
                work.push_back(item);
        } else if (t->IsType(kPdfKindDict)) {
            for (auto& entry : static_cast<PDFParser::PDFDict*>(t)->entries)
                work.push_back(entry.second);
        } else {
            work.push_back(static_cast<PDFParser::PDFStream*>(t)->dict);
        }
    }
    return false;
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
            // A dictionary stored into itself, however deep, would make a loop that no count
            // can free and no walk can finish; such a definition is dropped. Only a value that
            // is a container can hold the dictionary, and only while something besides the
            // dictionary stack holds it too. The searches of one parser share a budget, so a
            // program of many definitions cannot make them take quadratic time; past it,
            // such definitions are dropped as if they made a loop.
            PDFToken* target = dictStack.back();
            if (IsContainer(value) && target->refCount > 1 &&
                MayReach(value, target, loopSearchBudget)) {
                value->Release();
                return kPdfOk;
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
