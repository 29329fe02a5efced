#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"
#include "pdf/token/PDFNumbers.h"
#include "pdf/xref/PDFDocument.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <locale.h>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Notes every bare word that reaches ExecuteWord, then runs it as the base does.
class RecordingParser : public PDFParser {
public:
    using PDFParser::PDFParser;
    PDFStatus ExecuteWord(const std::string& word, PDFDocument* doc) override {
        words.push_back(word);
        return PDFParser::ExecuteWord(word, doc);
    }
    std::vector<std::string> words;
};

struct Parsed {
    PDFStatus status = 0;
    std::vector<std::string> stack; // bottom to top
    std::vector<std::string> words;
};

Parsed Parse(const std::string& text, PDFDocument* document = nullptr) {
    auto input = MakeMemoryInput(text.data(), text.size());
    RecordingParser parser(input.get(), document);
    Parsed result;
    result.status = parser.ParseUntil("");
    for (PDFToken* t : parser.operandStack)
        result.stack.push_back(t->ToString());
    result.words = parser.words;
    return result;
}

using Stack = std::vector<std::string>;

TEST(Parser, NumberForms) {
    EXPECT_EQ(Parse("12-5").stack, Stack{"12"});
    EXPECT_EQ(Parse("--5").stack, Stack{"0"});
    EXPECT_EQ(Parse("1e5").stack, Stack{"1"}); // no point: an integer, even with an "e"
    EXPECT_EQ(Parse("1.5e3").stack, Stack{"1500"});
    EXPECT_EQ(Parse("1.-5").stack, Stack{"1"});
    EXPECT_EQ(Parse("-.5 .25 -7 007").stack, (Stack{"-0.5", "0.25", "-7", "7"}));
    EXPECT_EQ(Parse("99999999999").stack, Stack{"2147483647"});
    EXPECT_EQ(Parse("-").status, kPdfBadNumber);
    EXPECT_EQ(Parse(".").status, kPdfBadNumber);
    EXPECT_EQ(Parse("1.2.3").status, kPdfBadNumber);
    // "E" ends a number: the rest is a word, unknown here.
    const Parsed upper = Parse("1.5E3");
    EXPECT_EQ(upper.status, kPdfUnknownOp);
    EXPECT_EQ(upper.stack, Stack{"1.5"});
    EXPECT_EQ(upper.words, std::vector<std::string>{"E3"});
    // "+" starts no number.
    EXPECT_EQ(Parse("+5").words, std::vector<std::string>{"+5"});
    // The byte that ends a number is read again.
    EXPECT_EQ(Parse("5(a)").stack, (Stack{"5", "(a)"}));

    // Real numbers come out as strtod makes them of the text the parser collects, bit for
    // bit: random texts of the bytes a number may hold, long digit runs and huge exponents.
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    std::mt19937 random(5);
    const std::string alphabet = "0123456789+-.e";
    for (int n = 0; n < 20000; ++n) {
        std::string text;
        const int length = 1 + static_cast<int>(random() % (n % 10 == 0 ? 40 : 12));
        for (int i = 0; i < length; ++i)
            text += alphabet[random() % (i < 30 ? alphabet.size() : 10)];
        if (n % 7 == 0) {
            text += 'e';
            text += std::to_string(static_cast<int>(random() % 800) - 400);
        }
        const double expected = strtod_l(text.c_str(), nullptr, classic);
        ASSERT_EQ(std::bit_cast<std::uint64_t>(PdfAtof(text.c_str())),
                  std::bit_cast<std::uint64_t>(expected))
            << text;
    }
}

TEST(Parser, LiteralStrings) {
    EXPECT_EQ(Parse("(a\\\r\nb)").stack, Stack{"(a\\nb)"}); // backslash-CR drops the CR only
    EXPECT_EQ(Parse("(a\\\nb)").stack, Stack{"(ab)"});
    EXPECT_EQ(Parse("(\\101\\7\\0053)").stack, Stack{"(A\\007\\0053)"});
    EXPECT_EQ(Parse("(\\501)").stack, Stack{"(A)"}); // cut to 8 bits
    EXPECT_EQ(Parse("(\\8\\(\\n\\r\\t\\b\\f)").stack, Stack{"(8\\(\\n\\r\\t\\b\\f)"});
    EXPECT_EQ(Parse("(a(b)c)").stack, Stack{"(a\\(b\\)c)"});
    EXPECT_EQ(Parse("(line\r\nend)").stack, Stack{"(line\\r\\nend)"});
    EXPECT_EQ(Parse("(abc").status, kPdfUnmatchedParen);
    EXPECT_EQ(Parse("(abc\\").status, kPdfPrematureEof);
}

TEST(Parser, HexStringsNamesAndWords) {
    EXPECT_EQ(Parse("<4>").stack, Stack{"(@)"});
    EXPECT_EQ(Parse("<4 1 >").stack, Stack{"(A)"});
    EXPECT_EQ(Parse("<>").stack, Stack{"()"});
    EXPECT_EQ(Parse("<ffFE>").stack, Stack{"<fffe>"});
    EXPECT_EQ(Parse("<4G>").status, kPdfBadCharacter);
    EXPECT_EQ(Parse("<41").status, kPdfUnmatchedAngle);
    EXPECT_EQ(Parse(">").status, kPdfUnknownToken);

    EXPECT_EQ(Parse("/A#42").stack, Stack{"/AB"});
    EXPECT_EQ(Parse("/A#20B/C").stack, (Stack{"/A#20B", "/C"}));
    EXPECT_EQ(Parse("/A#4G").status, kPdfBadCharacter);
    EXPECT_EQ(Parse("/A#4").status, kPdfBadCharacter);
    EXPECT_EQ(Parse("/(x)").stack, (Stack{"/", "(x)"}));              // the empty name
    EXPECT_EQ(Parse(std::string("/a\0b", 4)).stack, Stack{"/a#00b"}); // NUL ends no word
    // "#" is decoded in bare words too.
    EXPECT_EQ(Parse("/foo 5 def fo#6f").stack, Stack{"5"});
    EXPECT_EQ(Parse("fo#6f").words, std::vector<std::string>{"foo"});
    // ")", "{" and "}" start bare words.
    EXPECT_EQ(Parse("{").words, std::vector<std::string>{"{"});
}

TEST(Parser, ArraysDictionariesAndReferences) {
    const Parsed open = Parse("[1 2 <<");
    EXPECT_EQ(open.status, kPdfEof);
    EXPECT_EQ(open.stack, (Stack{"-mark-", "1", "2", "-mark-"}));
    // Any mark closes either kind of container.
    EXPECT_EQ(Parse("[1 2 << ]").stack, (Stack{"-mark-", "1", "2", "[]"}));
    EXPECT_EQ(Parse("<< /A [1 (x) /N] >>").stack, Stack{"<</A [1 (x) /N]>>"});
    EXPECT_EQ(Parse("<</A 1/A 2>>").stack, Stack{"<</A 1>>"}); // the first key wins
    EXPECT_EQ(Parse("<</A>>").status, kPdfOddDictionary);
    EXPECT_EQ(Parse("<</A>>").stack, (Stack{"-mark-", "/A"}));
    EXPECT_EQ(Parse("<<1 2>>").status, kPdfKeysMustBeNames);
    EXPECT_EQ(Parse("<</A 1 2 3>>").status, kPdfKeysMustBeNames);
    EXPECT_EQ(Parse("]").status, kPdfUnmatchedBracket);
    EXPECT_EQ(Parse("1 >>").status, kPdfUnmatchedDictEnd);
    // Marks are counted however they come and go: a doubled mark closes twice, one taken off
    // by a word or by a closer leaves none behind.
    EXPECT_EQ(Parse("[ dup 1 ] ]").stack, Stack{"[[1]]"});
    EXPECT_EQ(Parse("[ pop ]").status, kPdfUnmatchedBracket);
    EXPECT_EQ(Parse("<< >> ]").status, kPdfUnmatchedBracket);
    EXPECT_EQ(Parse("5 0 R").stack, Stack{"5 0 R"});
    EXPECT_EQ(Parse("/A 0 R").stack, Stack{"0 0 R"});
    EXPECT_EQ(Parse("R").stack, Stack{"0 0 R"});
    EXPECT_EQ(Parse("3 0 obj true false null endobj").stack,
              (Stack{"3", "0", "true", "false", ""}));
}

TEST(Parser, PostScriptWords) {
    EXPECT_EQ(Parse("CMapName").stack, Stack{"(Unknown)"});
    EXPECT_EQ(Parse("end CMapName").status, kPdfUnknownOp); // the base dictionary is gone too
    EXPECT_EQ(Parse("end end 1").stack, Stack{"1"});        // nothing left to end
    EXPECT_EQ(Parse("end /a 1 def").status, kPdfExpectedDictionary);
    EXPECT_EQ(Parse("/K (v) def K K").stack, (Stack{"(v)", "(v)"}));
    EXPECT_EQ(Parse("/K 1 def /K 2 def K").stack, Stack{"2"});
    // Storing a token over itself keeps one reference for the one slot.
    EXPECT_EQ(Parse("/K 5 def /K K def /K K def K").stack, Stack{"5"});
    EXPECT_EQ(Parse("/N 7 dup /CMap defineresource /CMap defineresource").stack, Stack{"7"});
    // A dictionary is never stored into itself, directly or through other containers.
    EXPECT_EQ(Parse("1 dict begin /A 1 def /S currentdict def /T [[currentdict]] def "
                    "/U << /V [1 currentdict] >> def currentdict")
                  .stack,
              Stack{"<</A 1>>"});
    EXPECT_EQ(Parse("3 dict begin /X 4 def currentdict end X").stack, Stack{"<</X 4>>"});
    EXPECT_EQ(Parse("5 begin 6").stack, Stack{"6"}); // only dictionaries are begun
    EXPECT_EQ(Parse("1 2 dup pop pop dup").stack, (Stack{"1", "1"}));
    EXPECT_EQ(Parse("dup").stack, (Stack{"", ""})); // a null from the empty stack
    EXPECT_EQ(Parse("/Name /Inst /CMap defineresource").stack, Stack{"/Inst"});
    const Parsed font = Parse("/Name /Inst /Font defineresource");
    EXPECT_EQ(font.status, kPdfInvalidPdf);
    EXPECT_EQ(font.stack, Stack{"/Inst"});
    EXPECT_EQ(Parse("BX foo bar EX 1").stack, Stack{"1"});
    EXPECT_EQ(Parse("EX foo 1").stack, Stack{"1"}); // depth -1 is not 0 either
    EXPECT_EQ(Parse("BX EX foo").status, kPdfUnknownOp);
    // Comments end at a line end; one that runs into the end of the input ends the read.
    EXPECT_EQ(Parse("1 % two\r2").stack, (Stack{"1", "2"}));
    const Parsed comment = Parse("1 % no end");
    EXPECT_EQ(comment.status, kPdfEof);
    EXPECT_EQ(comment.stack, Stack{"1"});
}

TEST(Parser, NestingOfAnyDepthPrintsAndFrees) {
    // Deeper than any call stack would take if printing or freeing recursed.
    const int depth = 200000;
    std::string text(depth, '[');
    text += "<</K (v)>>";
    text += std::string(depth, ']');
    const Parsed deep = Parse(text);
    EXPECT_EQ(deep.status, kPdfEof);
    ASSERT_EQ(deep.stack.size(), 1u);
    EXPECT_EQ(deep.stack[0].size(), 2u * depth + 10);
    EXPECT_EQ(deep.stack[0].substr(depth - 2, 14), "[[<</K (v)>>]]");
    // The same depth built through definitions rather than brackets.
    std::string defs = "/a 0 def";
    for (int i = 0; i < 20000; ++i)
        defs += " /a [a] def";
    defs += " a";
    EXPECT_EQ(Parse(defs).stack[0].size(), 2u * 20000 + 1);
    // While the dictionary is held elsewhere too, each definition of a container is searched
    // for it, within a budget; once that is spent, such definitions are dropped.
    const std::string shared = Parse("currentdict /a 0 def " + defs.substr(8)).stack.back();
    EXPECT_GT(shared.size(), 2u * 1000 + 1);
    EXPECT_LT(shared.size(), 2u * 2000 + 1);
}

TEST(Parser, StopWordAndPushbackOfTheEnd) {
    const std::string text = "1 2 endobj 3";
    auto input = MakeMemoryInput(text.data(), text.size());
    PDFParser parser(input.get(), nullptr);
    EXPECT_EQ(parser.ParseUntil("endobj"), kPdfOk);
    EXPECT_TRUE(parser.stopped);
    EXPECT_EQ(parser.operandStack.size(), 2u);
    EXPECT_EQ(parser.ParseUntil(nullptr), kPdfEof);
    EXPECT_FALSE(parser.stopped);
    EXPECT_EQ(parser.PopInteger(), 3);
    // The end of input is read again after a word that it ended.
    EXPECT_EQ(parser.GetChar(), -1);
    EXPECT_EQ(parser.ReadToken(), kPdfEof);
    EXPECT_EQ(parser.PopFloat(9.0), 2.0);
    EXPECT_EQ(parser.PopString(), "");
    EXPECT_EQ(parser.PopInteger(), 0);
    PDFTokenRef popped(parser.Pop());
    EXPECT_TRUE(popped->IsType(kPdfKindNull));
    EXPECT_EQ(parser.Peek(0), nullptr);
    parser.Drop(); // harmless on an empty stack
    PDFParser detached(nullptr, nullptr);
    EXPECT_EQ(detached.GetChar(), -1);
    EXPECT_EQ(detached.ReadToken(), kPdfEof);
}

TEST(Parser, Streams) {
    EXPECT_EQ(Parse("<</Length 5>> stream\nhello\nendstream 7").stack,
              (Stack{"<</Length 5>> stream\nhello\nendstream", "7"}));
    // CR takes the next byte with it; a blank after the word is eaten.
    EXPECT_EQ(Parse("<</Length 2>> stream\r\nab endstream").stack.back(),
              "<</Length 2>> stream\nab\nendstream");
    EXPECT_EQ(Parse("<</Length 2>> stream ab\r\n\t endstream").stack.back(),
              "<</Length 2>> stream\nab\nendstream");
    EXPECT_EQ(Parse("<</Length 0>> stream\nendstream").stack.back(),
              "<</Length 0>> stream\n\nendstream");
    EXPECT_EQ(Parse("<<>> stream\nab\nendstream").status, kPdfBadLength);
    EXPECT_EQ(Parse("<</Length -1>> stream\nab\nendstream").status, kPdfBadLength);
    EXPECT_EQ(Parse("<</Length 4 0 R>> stream\nab\nendstream").status, kPdfBadLength);
    EXPECT_EQ(Parse("<</Length 10>> stream\nabcd").status, kPdfExpectedEndstream);
    EXPECT_EQ(Parse("<</Length 1>> stream\nabcd endstream").status, kPdfExpectedEndstream);
    EXPECT_EQ(Parse("<</Length 1>> stream\naendstrea").status, kPdfExpectedEndstream);
    EXPECT_EQ(Parse("1 stream\n").status, kPdfExpectedDictionary);
    EXPECT_EQ(Parse("stream\n").status, kPdfExpectedDictionary);
    PDFParser detached(nullptr, nullptr);
    detached.Push(new PDFParser::PDFDict());
    EXPECT_EQ(detached.ExecuteWord("stream", nullptr), kPdfNoOpenFile);
    // A failed stream leaves its dictionary on the stack.
    EXPECT_EQ(Parse("<</Length 9>> stream\nab\nendstream").stack, Stack{"<</Length 9>>"});
}

TEST(Parser, IndirectLengthLoadsThroughTheDocument) {
    const std::string file = "4 0 obj 2 endobj\n<</Length 4 0 R>> stream\nab\nendstream\n9";
    std::istringstream input(file);
    PDFDocument doc(&input);
    doc.entries.resize(5);
    doc.entries[4].type = 1;
    doc.entries[4].generation = 0;
    doc.entries[4].offset = 0;
    input.seekg(17);
    PDFParser parser(&input, &doc);
    ASSERT_EQ(parser.ParseUntil(""), kPdfEof);
    ASSERT_EQ(parser.operandStack.size(), 2u);
    EXPECT_EQ(parser.operandStack[0]->ToString(), "<</Length 4 0 R>> stream\nab\nendstream");
    EXPECT_EQ(parser.operandStack[1]->ToString(), "9"); // the position was put back

    // A reference the table does not know is as bad as no length.
    std::istringstream second("<</Length 8 0 R>> stream\nab\nendstream");
    PDFDocument other(&second);
    PDFParser p2(&second, &other);
    EXPECT_EQ(p2.ParseUntil(""), kPdfBadLength);
    // Resolve without a document hands the token back; with one, null is refused.
    PDFToken* out = nullptr;
    PDFParser::PDFRef ref(1, 0);
    PDFParser bare(nullptr, nullptr);
    EXPECT_EQ(bare.Resolve(&ref, &out), kPdfOk);
    EXPECT_EQ(out, &ref);
    EXPECT_EQ(p2.Resolve(nullptr, &out), kPdfNullReference);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(p2.Resolve(&ref, &out), kPdfBadReference);
}

TEST(Parser, InlineImagesAreSkippedToEI) {
    const Parsed image = Parse("BX 1 BI /W 2 ID\nab\xFF EI x\nEI\n  EI \nEI 2");
    // The data are gone, and "EI" runs once the skip ends.
    EXPECT_EQ(image.words, (std::vector<std::string>{"BX", "BI", "EI"}));
    EXPECT_EQ(image.status, kPdfEof);
    EXPECT_EQ(image.stack, (Stack{"1", "/W", "2", "2"}));
    // "ID" itself never reaches ExecuteWord; "EI" does, and the base knows no such word.
    const Parsed bare = Parse("ID\nEI x");
    EXPECT_EQ(bare.words, std::vector<std::string>{"EI"});
    EXPECT_EQ(bare.status, kPdfUnknownOp);
    // "EI" only counts at the start of a line with a blank behind it.
    const Parsed found = Parse("BX ID\nxx\nEI 5");
    EXPECT_EQ(found.stack, Stack{"5"});
    const Parsed never = Parse("BX ID\nEI\n EI x\nEI");
    EXPECT_EQ(never.words, (std::vector<std::string>{"BX", "EI"}));
    EXPECT_EQ(never.status, kPdfEof);
}

} // namespace
