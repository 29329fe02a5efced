#pragma once
// The stack machine that reads PDF object syntax, content streams and CMap programs. Each
// lexical item is pushed on the operand stack or, if it is a bare word, executed; closing
// brackets collapse the stack down to their mark. Derived readers override ExecuteWord.
#include "pdf/token/PDFError.h"
#include "pdf/token/PDFTokens.h"

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

class PDFDocument;

class PDFParser : public PDFParserTokens {
public:
    // The most operands the stack holds; reading a token beyond them gives 10042.
    static constexpr std::size_t kMaxOperands = std::size_t{1} << 20;

    // Borrows `document` (may be null) and reads from `input` (may be null), which it does
    // not own until SetStream says so.
    PDFParser(std::istream* input, PDFDocument* document);
    virtual ~PDFParser();
    PDFParser(const PDFParser&) = delete;
    PDFParser& operator=(const PDFParser&) = delete;

    // Runs a bare word. The base knows the object-syntax words and a few PostScript ones.
    [[nodiscard]] virtual PDFStatus ExecuteWord(const std::string& word, PDFDocument* document);

    void SetStream(std::istream* stream, bool owns);
    // The next byte, or -1 at the end (or without a stream).
    int GetChar();

    // Operand stack. Peek is borrowed; Pop hands its reference to the caller and never
    // returns null (a new PDFNull on an empty stack); Push takes the caller's reference.
    PDFToken* Peek(int i) const;
    void Drop();
    [[nodiscard]] PDFToken* Pop();
    void Push(PDFToken* owned) {
        if (owned->IsType(kPdfKindMark))
            ++markCount;
        operandStack.push_back(owned);
    }
    void PushFloat(double value) { Push(new PDFFloat(value)); }
    std::int32_t PopInteger();
    double PopFloat(double defaultValue);
    std::string PopString();

    // Reads one lexical item and acts on it.
    [[nodiscard]] PDFStatus ReadToken();
    // Reads until a status other than 0 or until the bare word `stop` comes.
    [[nodiscard]] PDFStatus ParseUntil(const char* stop);
    // Follows a reference through the document. `*out` is borrowed.
    [[nodiscard]] PDFStatus Resolve(PDFToken* token, PDFToken** out);

    PDFDocument* document;            // borrowed
    std::vector<PDFToken*> dictStack; // dictionaries of the PostScript words, each owned
    PDFToken* resources;              // owned PDFDict: what "defineresource" stored
    bool hasPushback = false;
    int lastChar = -1;
    std::vector<PDFToken*> operandStack; // each owned
    std::string stopWord;
    bool stopped = true;
    std::int32_t compatDepth = 0; // BX depth: unknown words are ignored while it is not 0
    std::istream* input;
    bool ownsInput = false;

protected:
    // Index of the topmost mark on the operand stack, or -1. Costs nothing while no mark is
    // there, so that a stream of closers without openers stays linear.
    int FindMark();

private:
    void PushBack(int c) {
        lastChar = c;
        hasPushback = true;
    }
    int PeekChar();
    [[nodiscard]] PDFStatus ReadWord(int first, std::string& word);
    [[nodiscard]] PDFStatus ReadLiteralString();
    [[nodiscard]] PDFStatus ReadHexString();
    [[nodiscard]] PDFStatus ReadNumber(int first);
    [[nodiscard]] PDFStatus CloseArray();
    [[nodiscard]] PDFStatus CloseDictionary();
    [[nodiscard]] PDFStatus ReadStream();
    void SkipInlineImage();
    // Stores by subscript; a value displaced from the slot is released.
    static void Store(PDFToken* dict, const std::string& key, PDFToken* owned);

    std::size_t loopSearchBudget = 1000000; // containers "def" may look at, in all
    // Marks on the operand stack, or more, never fewer: Push counts them in, Pop, Drop and
    // the closers count them out. Whoever takes the stack apart otherwise may leave the
    // count too high, which costs a search, and a search that finds none sets it to 0.
    std::size_t markCount = 0;
};
