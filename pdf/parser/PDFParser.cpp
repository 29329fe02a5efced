#include "pdf/parser/PDFParser.h"

#include "pdf/token/PDFNumbers.h"
#include "pdf/xref/PDFDocument.h"

#include <cstring>

namespace {

// White space of the classic locale; NUL is not white space here.
inline bool IsWhite(int c) {
    return c == ' ' || (c >= 9 && c <= 13);
}

inline bool IsDelimiter(int c) {
    switch (c) {
    case '(':
    case ')':
    case '<':
    case '>':
    case '{':
    case '}':
    case '[':
    case ']':
    case '/':
    case '%':
        return true;
    default:
        return false;
    }
}

} // namespace

PDFParser::PDFParser(std::istream* in, PDFDocument* doc)
    : document(doc), resources(new PDFDict()), input(in) {
    // "CMapName" answers for CMap programs that never define it.
    auto* base = new PDFDict();
    (*base)["CMapName"] = new PDFString("Unknown");
    dictStack.push_back(base);
}

PDFParser::~PDFParser() {
    if (ownsInput)
        delete input;
    for (auto it = operandStack.rbegin(); it != operandStack.rend(); ++it)
        (*it)->Release();
    for (auto it = dictStack.rbegin(); it != dictStack.rend(); ++it)
        (*it)->Release();
    resources->Release();
}

void PDFParser::SetStream(std::istream* stream, bool owns) {
    if (input != stream && ownsInput)
        delete input;
    input = stream;
    ownsInput = owns;
}

int PDFParser::GetChar() {
    if (!input)
        return -1;
    if (hasPushback) {
        hasPushback = false;
        return lastChar;
    }
    // What istream::get does, without building a sentry for every byte.
    if (input->rdstate() != std::ios_base::goodbit) {
        input->setstate(std::ios_base::failbit);
        return lastChar = -1;
    }
    const int c = input->rdbuf()->sbumpc();
    if (c == std::char_traits<char>::eof()) {
        input->setstate(std::ios_base::eofbit | std::ios_base::failbit);
        return lastChar = -1;
    }
    return lastChar = c;
}

int PDFParser::PeekChar() {
    if (hasPushback)
        return lastChar;
    if (!input)
        return -1;
    const int c = input->peek();
    return c == std::char_traits<char>::eof() ? -1 : c;
}

PDFToken* PDFParser::Peek(int i) const {
    if (i < 0 || static_cast<std::size_t>(i) >= operandStack.size())
        return nullptr;
    return operandStack[operandStack.size() - 1 - static_cast<std::size_t>(i)];
}

void PDFParser::Drop() {
    if (operandStack.empty())
        return;
    if (operandStack.back()->IsType(kPdfKindMark) && markCount > 0)
        --markCount;
    operandStack.back()->Release();
    operandStack.pop_back();
}

PDFToken* PDFParser::Pop() {
    if (operandStack.empty())
        return new PDFNull();
    PDFToken* top = operandStack.back();
    operandStack.pop_back();
    if (top->IsType(kPdfKindMark) && markCount > 0)
        --markCount;
    return top;
}

std::int32_t PDFParser::PopInteger() {
    if (operandStack.empty())
        return 0;
    const std::int32_t v = operandStack.back()->GetInteger(0);
    Drop();
    return v;
}

double PDFParser::PopFloat(double defaultValue) {
    if (operandStack.empty())
        return 0.0;
    const double v = operandStack.back()->GetFloat(defaultValue);
    Drop();
    return v;
}

std::string PDFParser::PopString() {
    if (operandStack.empty())
        return {};
    std::string v = operandStack.back()->GetString();
    Drop();
    return v;
}

PDFStatus PDFParser::ParseUntil(const char* stop) {
    stopWord = stop ? stop : "";
    stopped = false;
    PDFStatus status = kPdfOk;
    do {
        status = ReadToken();
    } while (status == kPdfOk && !stopped);
    return status;
}

PDFStatus PDFParser::Resolve(PDFToken* token, PDFToken** out) {
    if (!document) {
        *out = token;
        return kPdfOk;
    }
    *out = nullptr;
    if (!token)
        return kPdfNullReference;
    if (!token->IsType(kPdfKindRef)) {
        *out = token;
        return kPdfOk;
    }
    const auto* ref = static_cast<const PDFRef*>(token);
    return document->LoadObject(ref->objectNumber, ref->generation, out);
}

PDFStatus PDFParser::ReadToken() {
    // Operands that no operator takes cost memory and nothing else: past this many the read
    // stops. Real content keeps a handful on the stack; the largest real objects (a font's
    // width array, a page tree node) hold some tens of thousands of items.
    if (operandStack.size() >= kMaxOperands)
        return kPdfTooManyOperands;
    int c;
    for (;;) {
        do {
            c = GetChar();
        } while (c != -1 && IsWhite(c));
        if (c == -1)
            return kPdfEof;
        if (c != '%')
            break;
        // A comment runs up to and including its line end. One that runs into the end of
        // the input ends the read rather than waiting for a line end that never comes.
        do {
            c = GetChar();
        } while (c != '\r' && c != '\n' && c != -1);
        if (c == -1)
            return kPdfEof;
    }

    switch (c) {
    case '(':
        return ReadLiteralString();
    case '<':
        if (PeekChar() == '<') {
            GetChar();
            Push(new PDFMark("<<"));
            return kPdfOk;
        }
        return ReadHexString();
    case '>':
        if (PeekChar() == '>') {
            GetChar();
            return CloseDictionary();
        }
        return kPdfUnknownToken;
    case '[':
        Push(new PDFMark("["));
        return kPdfOk;
    case ']':
        return CloseArray();
    case '/': {
        std::string name;
        const PDFStatus status = ReadWord(-1, name);
        if (status != kPdfOk)
            return status;
        Push(new PDFName(std::move(name)));
        return kPdfOk;
    }
    default:
        break;
    }
    if ((c >= '0' && c <= '9') || c == '-' || c == '.')
        return ReadNumber(c);

    std::string word;
    const PDFStatus status = ReadWord(c, word);
    if (status != kPdfOk)
        return status;
    if (word == "ID") {
        SkipInlineImage();
        return ExecuteWord("EI", document);
    }
    return ExecuteWord(word, document);
}

PDFStatus PDFParser::ReadWord(int first, std::string& word) {
    word.clear();
    // A bare word takes its first byte whatever it is: ")", "{" and "}" start words.
    bool taken = first != -1;
    for (int c = taken ? first : GetChar();; c = GetChar()) {
        if (c == -1)
            return kPdfOk; // the end of input ends the word, nothing pushed back
        if (!taken && (IsWhite(c) || IsDelimiter(c))) {
            PushBack(c);
            return kPdfOk;
        }
        taken = false;
        if (c == '#') {
            const int hi = PdfHexDigit(GetChar());
            if (hi < 0)
                return kPdfBadCharacter;
            const int lo = PdfHexDigit(GetChar());
            if (lo < 0)
                return kPdfBadCharacter;
            c = hi * 16 + lo;
        }
        word += static_cast<char>(c);
    }
}

PDFStatus PDFParser::ReadLiteralString() {
    std::string value;
    int depth = 1;
    for (;;) {
        int c = GetChar();
        if (c == -1)
            return kPdfUnmatchedParen;
        if (c == '(') {
            ++depth;
        } else if (c == ')') {
            if (--depth == 0)
                break;
        } else if (c == '\\') {
            c = GetChar();
            switch (c) {
            case -1:
                return kPdfPrematureEof;
            case '\r':
            case '\n':
                continue; // a line continuation drops that one byte only
            case 'n':
                c = 10;
                break;
            case 'r':
                c = 13;
                break;
            case 't':
                c = 9;
                break;
            case 'b':
                c = 8;
                break;
            case 'f':
                c = 12;
                break;
            default:
                if (c >= '0' && c <= '7') {
                    int v = c - '0';
                    for (int k = 0; k < 2; ++k) {
                        const int next = PeekChar();
                        if (next < '0' || next > '7')
                            break;
                        GetChar();
                        v = v * 8 + (next - '0');
                    }
                    c = v & 0xFF;
                }
                break; // any other byte stands for itself
            }
        }
        value += static_cast<char>(c);
    }
    Push(new PDFString(std::move(value)));
    return kPdfOk;
}

PDFStatus PDFParser::ReadHexString() {
    std::string value;
    int high = -1;
    for (;;) {
        const int c = GetChar();
        if (c == -1)
            return kPdfUnmatchedAngle;
        if (IsWhite(c))
            continue;
        if (c == '>')
            break;
        const int v = PdfHexDigit(c);
        if (v < 0)
            return kPdfBadCharacter;
        if (high < 0) {
            high = v;
        } else {
            value += static_cast<char>(high * 16 + v);
            high = -1;
        }
    }
    if (high >= 0)
        value += static_cast<char>(high * 16);
    Push(new PDFString(std::move(value)));
    return kPdfOk;
}

PDFStatus PDFParser::ReadNumber(int first) {
    std::string text(1, static_cast<char>(first));
    int digits = first >= '0' && first <= '9';
    int points = first == '.';
    for (;;) {
        const int c = GetChar();
        if ((c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.' || c == 'e') {
            text += static_cast<char>(c);
            digits += c >= '0' && c <= '9';
            points += c == '.';
            continue;
        }
        PushBack(c);
        break;
    }
    if (digits == 0 || points >= 2)
        return kPdfBadNumber;
    if (points == 0)
        Push(new PDFInteger(PdfAtol(text.c_str())));
    else
        Push(new PDFFloat(PdfAtof(text.c_str())));
    return kPdfOk;
}

int PDFParser::FindMark() {
    if (markCount > 0) {
        for (int i = static_cast<int>(operandStack.size()) - 1; i >= 0; --i)
            if (operandStack[static_cast<std::size_t>(i)]->IsType(kPdfKindMark))
                return i;
    }
    markCount = 0;
    return -1;
}

PDFStatus PDFParser::CloseArray() {
    const int mark = FindMark();
    if (mark < 0)
        return kPdfUnmatchedBracket;
    auto* array = new PDFArray();
    array->items.assign(operandStack.begin() + mark + 1, operandStack.end());
    operandStack.resize(static_cast<std::size_t>(mark) + 1);
    operandStack.back()->Release();
    operandStack.back() = array;
    --markCount; // found, so counted
    return kPdfOk;
}

void PDFParser::Store(PDFToken* dict, const std::string& key, PDFToken* owned) {
    PDFToken*& slot = (*static_cast<PDFDict*>(dict))[key];
    // The slot's old reference is let go, so that nothing is left without an owner; when it
    // is the same token, the reference handed in takes its place.
    if (slot)
        slot->Release();
    slot = owned;
}

PDFStatus PDFParser::CloseDictionary() {
    const int mark = FindMark();
    if (mark < 0)
        return kPdfUnmatchedDictEnd;
    const std::size_t above = operandStack.size() - static_cast<std::size_t>(mark) - 1;
    if (above % 2 != 0)
        return kPdfOddDictionary;
    auto* dict = new PDFDict();
    // From the last pair to the first: a key met twice keeps its first value in the file.
    while (operandStack.size() > static_cast<std::size_t>(mark) + 1) {
        PDFToken* key = operandStack[operandStack.size() - 2];
        if (!key->IsType(kPdfKindName)) {
            dict->Release();
            return kPdfKeysMustBeNames;
        }
        PDFToken* value = operandStack.back();
        operandStack.pop_back();
        operandStack.pop_back();
        Store(dict, key->GetString(), value);
        key->Release();
    }
    operandStack.back()->Release();
    operandStack.back() = dict;
    --markCount; // found, so counted
    return kPdfOk;
}
