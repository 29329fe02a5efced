// The content-stream interpreter: small content streams run over a recording state.
#include "graphics/PDFGraphics.h"
#include "graphics/RecordingState.h"
#include "pdf/token/PDFTokens.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

namespace {

using tarquil::test::RecordingState;
using Strings = std::vector<std::string>;
using Tokens = PDFParserTokens;

// Notes the hooks in the state's call list, so their order against the state's calls shows.
// The font hook acts as a loader would: it gives every name a one-entry encoding.
class Interpreter : public PDFGraphics {
public:
    explicit Interpreter(RecordingState& recorder, PDFToken* page = nullptr)
        : PDFGraphics(nullptr, &recorder, page), rec(recorder) {}

    PDFStatus Run(const std::string& content) {
        SetStream(new std::istringstream(content), true);
        return ParseUntil(nullptr);
    }
    void ApplyColour(std::uint8_t which) override {
        rec.calls.push_back("ApplyColour " + std::to_string(which) + " " + colorSpaceName[which]);
    }
    void LoadFont(const std::string& name) override {
        rec.calls.push_back("LoadFont " + name);
        fontEncoding[name] = std::make_shared<const EncodingMap>(EncodingMap{{65, 66}});
    }
    void ClearStack() {
        while (!operandStack.empty())
            Drop();
    }
    std::string StackText() const {
        std::string text;
        for (PDFToken* token : operandStack) {
            if (!text.empty())
                text += ' ';
            text += token->ToString();
        }
        return text;
    }

    RecordingState& rec;
};

// The recorded calls whose names are among `names`, in order.
Strings Only(const RecordingState& state, std::initializer_list<const char*> names) {
    Strings found;
    for (const std::string& call : state.calls)
        for (const char* name : names)
            if (call.substr(0, call.find(' ')) == name)
                found.push_back(call);
    return found;
}

TEST(Interpreter, PathsAndPainting) {
    RecordingState state;
    Interpreter gi(state);
    EXPECT_EQ(gi.Run("10 20 m 30 40 l 1 2 3 4 5 6 c 7 8 9 10 v 11 12 13 14 y h"), kPdfEof);
    EXPECT_EQ(Only(state, {"MoveTo", "LineTo", "CurveTo", "ClosePath"}),
              (Strings{"MoveTo 10 20", "LineTo 30 40", "CurveTo 1 2 3 4 5 6",
                       "CurveTo 5 6 7 8 9 10", "CurveTo 11 12 13 14 13 14", "ClosePath"}));
    EXPECT_TRUE(gi.operandStack.empty());

    state.calls.clear();
    (void)gi.Run("1 2 3 4 re");
    EXPECT_EQ(Only(state, {"MoveTo", "LineTo", "ClosePath"}),
              (Strings{"MoveTo 1 2", "LineTo 4 2", "LineTo 4 6", "LineTo 1 6", "ClosePath"}));

    // Stroke comes before the fill, only the closing forms close, EndPath is last; clips
    // keep the path.
    const std::vector<std::pair<const char*, Strings>> painting = {
        {"S", {"Stroke", "EndPath"}},
        {"s", {"ClosePath", "Stroke", "EndPath"}},
        {"f", {"Fill", "EndPath"}},
        {"F", {"Fill", "EndPath"}},
        {"f*", {"ClosePath", "EoFill", "EndPath"}},
        {"B", {"Stroke", "Fill", "EndPath"}},
        {"B*", {"Stroke", "EoFill", "EndPath"}},
        {"b", {"ClosePath", "Stroke", "Fill", "EndPath"}},
        {"b*", {"ClosePath", "Stroke", "EoFill", "EndPath"}},
        {"n", {"EndPath"}},
        {"W", {"Clip 0"}},
        {"W*", {"Clip 1"}},
    };
    for (const auto& [op, expected] : painting) {
        state.calls.clear();
        (void)gi.Run(op);
        EXPECT_EQ(Only(state, {"ClosePath", "Stroke", "Fill", "EoFill", "EndPath", "Clip"}),
                  expected)
            << op;
    }

    // Too few operands read as zero; an earlier leftover is taken as an operand.
    state.calls.clear();
    (void)gi.Run("5 m 9 1 2 l");
    EXPECT_EQ(Only(state, {"MoveTo", "LineTo"}), (Strings{"MoveTo 0 5", "LineTo 1 2"}));
    EXPECT_EQ(gi.StackText(), "9");
}

TEST(Interpreter, MatrixLineStyleAndDash) {
    {
        RecordingState state;
        Interpreter gi(state);
        (void)gi.Run("2 0 0 2 0 0 cm 5 w 1 J 2 j 4.5 M /Perceptual ri 3 i /GS1 gs");
        EXPECT_EQ(
            Only(state, {"ConcatMatrix", "SetLineWidth", "SetLineCap", "SetLineJoin",
                         "SetMiterLimit", "SetRenderingIntent", "SetFlatness", "SetExtGStateName"}),
            (Strings{"ConcatMatrix 2 0 0 2 0 0", "SetLineWidth 10", "SetLineCap 1", "SetLineJoin 2",
                     "SetMiterLimit 4.5", "SetRenderingIntent Perceptual", "SetFlatness 3",
                     "SetExtGStateName GS1"}));
    }
    {
        // The width is scaled by a + b, not by a norm: a quarter turn keeps 5, and a
        // skewed matrix can make it negative.
        RecordingState state;
        Interpreter gi(state);
        (void)gi.Run("0 1 -1 0 0 0 cm 5 w");
        EXPECT_EQ(state.lineWidth, 5.0);
        (void)gi.Run("q 0 -1 1 0 0 0 cm 1 -3 0 1 0 0 cm 2 w Q");
        EXPECT_EQ(state.lineWidth, -4.0);
    }
    {
        RecordingState state;
        Interpreter gi(state);
        (void)gi.Run("[3] 0 d [] 0 d");
        EXPECT_EQ(state.Calls("SetDash"), (Strings{"SetDash 1 0"}));
        EXPECT_EQ(state.dashArray, (std::vector<double>{3}));
        EXPECT_TRUE(gi.operandStack.empty());
        (void)gi.Run("[2 (x) 1] 4 d");
        EXPECT_EQ(state.dashArray, (std::vector<double>{2, 0, 1}));
        EXPECT_EQ(state.dashPhase, 4.0);
        // No array under the phase: the phase alone goes, the rest stays.
        (void)gi.Run("7 5 1 d");
        EXPECT_EQ(state.Calls("SetDash").size(), 2u);
        EXPECT_EQ(gi.StackText(), "7 5");
    }
}

TEST(Interpreter, SaveRestoreAndColour) {
    RecordingState state;
    Interpreter gi(state);
    // The colour-space names are not part of the saved frame.
    (void)gi.Run("q 2 0 0 2 5 5 cm /P1 cs /P2 CS Q");
    EXPECT_EQ(Only(state, {"SaveState", "RestoreState"}), (Strings{"SaveState", "RestoreState"}));
    EXPECT_EQ(state.currentMatrix, PDFMatrix{});
    EXPECT_EQ(gi.colorSpaceName[0], "P1");
    EXPECT_EQ(gi.colorSpaceName[1], "P2");
    EXPECT_TRUE(state.Calls("ApplyColour").empty());

    // `which` is the case of the first letter: upper case strokes.
    state.calls.clear();
    (void)gi.Run("sc SC scn SCN g G rg RG k K /Lab cs sc");
    EXPECT_EQ(
        state.Calls("ApplyColour"),
        (Strings{"ApplyColour 0 P1", "ApplyColour 1 P2", "ApplyColour 0 P1", "ApplyColour 1 P2",
                 "ApplyColour 0 DeviceGray", "ApplyColour 1 DeviceGray", "ApplyColour 0 DeviceRGB",
                 "ApplyColour 1 DeviceRGB", "ApplyColour 0 DeviceCMYK", "ApplyColour 1 DeviceCMYK",
                 "ApplyColour 0 Lab"}));
    EXPECT_EQ(gi.colorSpaceName[1], "DeviceCMYK");
}

TEST(Interpreter, TextRuns) {
    RecordingState state;
    state.widths = {{'A', 500}, {'B', 250}};
    Interpreter gi(state);

    // Two Tj: two runs, the second starting where the first ended. The font is loaded once
    // per name and its tables go to SetFont.
    (void)gi.Run("BT /F1 12 Tf (AB) Tj (A) Tj ET /F1 10 Tf");
    EXPECT_EQ(Only(state, {"LoadFont", "SetFont", "FlushTextRun"}),
              (Strings{"LoadFont F1", "SetFont F1 12 0 1", "FlushTextRun 0", "FlushTextRun 750",
                       "SetFont F1 10 0 1"}));
    EXPECT_EQ(state.flushedText, (std::vector<std::u16string>{u"AB", u"A"}));
    // ET had nothing pending, so the advance carries over to the next BT.
    EXPECT_EQ(state.textAdvance, 1250.0);
    EXPECT_EQ(state.runStart, 1250.0);

    // Two TJ: both at the origin; numbers do nothing; a numbers-only array is an empty run.
    state.calls.clear();
    state.flushedText.clear();
    (void)gi.Run("BT [(A) -300 (B)] TJ [(A)] TJ [-100 200] TJ 5 TJ");
    EXPECT_EQ(state.Calls("FlushTextRun"),
              (Strings{"FlushTextRun 0", "FlushTextRun 0", "FlushTextRun 0"}));
    EXPECT_EQ(state.flushedText, (std::vector<std::u16string>{u"AB", u"A", u""}));
    EXPECT_EQ(state.textAdvance, 0.0);
    EXPECT_TRUE(gi.operandStack.empty());

    // Positioning: Td resets the advance, TD keeps |ty| as leading, T* moves by it, Tm
    // flushes even with nothing pending. The state's MoveText flushes at runStart.
    state.calls.clear();
    (void)gi.Run("(A) Tj 3 4 Td (B) Tj 0 -14 TD T* 2 0 0 2 7 8 Tm");
    EXPECT_EQ(Only(state, {"MoveText", "SetLeading", "SetTextMatrix", "FlushTextRun"}),
              (Strings{"FlushTextRun 0", "MoveText 3 4", "FlushTextRun 500", "FlushTextRun 0",
                       "SetLeading 14", "MoveText 0 -14", "FlushTextRun 250", "MoveText 0 -14",
                       "FlushTextRun 0", "FlushTextRun 0", "SetTextMatrix 2 0 0 2 7 8"}));
    EXPECT_EQ(state.leading, 14.0);
    EXPECT_EQ(state.textMatrix, (PDFMatrix{2, 0, 0, 2, 7, 8}));

    // The single quote moves a line and leaves its text pending, without advancing; the next
    // line move or ET flushes it.
    state.calls.clear();
    state.flushedText.clear();
    (void)gi.Run("(AB) Tj 12 TL (A) ' (B) ' ET");
    EXPECT_EQ(state.Calls("MoveText"), (Strings{"MoveText 0 -12", "MoveText 0 -12"}));
    EXPECT_EQ(state.Calls("FlushTextRun"),
              (Strings{"FlushTextRun 0", "FlushTextRun 750", "FlushTextRun 0", "FlushTextRun 0"}));
    EXPECT_EQ(state.flushedText, (std::vector<std::u16string>{u"AB", u"", u"A", u"B"}));
    EXPECT_EQ(state.textAdvance, 0.0);

    // Text state, and an invisible render mode that still shows its text.
    state.calls.clear();
    (void)gi.Run("1 Tc 2 Tw 80 Tz 3 Tr 4 Ts BT (A) Tj ET");
    EXPECT_EQ(Only(state, {"SetCharSpacing", "SetWordSpacing", "SetHorizontalScale",
                           "SetTextRenderMode", "SetTextRise"}),
              (Strings{"SetCharSpacing 1", "SetWordSpacing 2", "SetHorizontalScale 80",
                       "SetTextRenderMode 3", "SetTextRise 4"}));
    EXPECT_EQ(state.flushedText.back(), u"A");
}

TEST(Interpreter, MarkedContentAndLayers) {
    RecordingState state;
    Interpreter gi(state);
    (void)gi.Run("/T1 MP /T2 <</A 1>> DP /T3 /NotADict DP");
    EXPECT_EQ(state.Calls("MarkPoint"), (Strings{"MarkPoint T1 0", "MarkPoint T2 1"}));
    EXPECT_EQ(gi.StackText(), "/T3 /NotADict");
    gi.ClearStack();

    state.layerIndex = 3;
    (void)gi.Run("/Span BMC /OC /L1 BDC");
    EXPECT_EQ(state.Calls("BeginMarkedContent"),
              (Strings{"BeginMarkedContent Span 0", "BeginMarkedContent OC 1"}));
    EXPECT_EQ(state.layerStack, (std::vector<std::int32_t>{3, 3}));
    state.layerIndex = 9;
    (void)gi.Run("EMC");
    EXPECT_EQ(state.layerIndex, 3);
    state.layerIndex = 5;
    (void)gi.Run("EMC EMC");
    EXPECT_EQ(state.layerIndex, 3);
    EXPECT_EQ(state.Calls("EndMarkedContent").size(), 3u);
    // An unbalanced EMC keeps the layer; a BDC on an empty stack has neither tag nor
    // properties.
    state.layerIndex = 6;
    (void)gi.Run("EMC BDC");
    EXPECT_EQ(state.layerIndex, 6);
    EXPECT_EQ(state.Calls("BeginMarkedContent").back(), "BeginMarkedContent  0");
}

TEST(Interpreter, InlineImagesUnknownWordsAndGarbage) {
    RecordingState state;
    Interpreter gi(state);
    // A whole inline image leaves the stack as it was; nothing is drawn.
    EXPECT_EQ(gi.Run("1 2 BI /W 4 /H 4 /F [/AHx] ID\n\x01\x02 EI\nEI 3"), kPdfEof);
    EXPECT_EQ(gi.StackText(), "1 2 3");
    EXPECT_TRUE(state.Calls("DrawImage").empty());
    (void)gi.Run("EI");
    EXPECT_EQ(gi.StackText(), "1 2 3");
    gi.ClearStack();

    // Unknown words, the double quote, d0, d1 and over-long words are skipped with their
    // operands left below what follows; the base's words keep their meaning.
    state.calls.clear();
    EXPECT_EQ(gi.Run("1 2 foo 3 m 4 5 (x) \" 6 7 d0 1 1 1 1 1 1 d1 8 9 reXY true BX bar EX"),
              kPdfEof);
    EXPECT_EQ(Only(state, {"MoveTo", "LineTo", "AppendText", "FlushTextRun"}),
              (Strings{"MoveTo 2 3"}));
    EXPECT_EQ(gi.StackText(), "1 4 5 (x) 6 7 1 1 1 1 1 1 8 9 true");
    EXPECT_TRUE(state.pathElements.size() == 1);

    // Shading and XObject names are only taken off the stack.
    gi.ClearStack();
    state.calls.clear();
    (void)gi.Run("/Sh0 sh /Im0 Do");
    EXPECT_EQ(gi.StackText(), "");
    EXPECT_TRUE(state.calls.empty());

    // Garbage that the parser cannot read ends the stream with its status; garbage that
    // reads as words is skipped; a long binary run ends.
    RecordingState other;
    Interpreter bad(other);
    EXPECT_EQ(bad.Run("1 0 0 RG > 5 w"), kPdfUnknownToken);
    EXPECT_TRUE(other.Calls("SetLineWidth").empty());
    // Resuming after each error, as a driver may, still reaches the end.
    std::string noise;
    for (int i = 0; i < 20000; ++i)
        noise.push_back(static_cast<char>((i * 7919) % 251 + 1));
    bad.SetStream(new std::istringstream(noise), true);
    int resumed = 0;
    while (bad.ParseUntil(nullptr) != kPdfEof && resumed < 100000)
        ++resumed;
    EXPECT_LT(resumed, 100000);
    EXPECT_EQ(bad.ParseUntil(nullptr), kPdfEof);
}

TEST(Interpreter, PageAndResources) {
    auto* fonts = new Tokens::PDFDict();
    auto* spaces = new Tokens::PDFDict();
    auto* resources = new Tokens::PDFDict();
    (*resources)["Font"] = fonts;
    (*resources)["ColorSpace"] = spaces;
    auto box = [](double x0, double y0, double x1, double y1) {
        auto* array = new Tokens::PDFArray();
        for (double v : {x0, y0, x1, y1})
            array->Append(new Tokens::PDFFloat(v));
        return array;
    };
    auto* page = new Tokens::PDFDict();
    (*page)["Resources"] = resources;
    (*page)["MediaBox"] = box(0, 0, 600, 800);
    (*page)["CropBox"] = box(10, 20, 110, 220);
    const PDFTokenRef owner(page);

    RecordingState state;
    state.SetMatrix(2, 0, 0, 2, 0, 0);
    Interpreter gi(state, page);
    EXPECT_EQ(gi.pageDict, page);
    EXPECT_EQ(gi.resources, resources);
    EXPECT_EQ(gi.fontDict, fonts);
    EXPECT_EQ(gi.colorSpaceDict, spaces);
    EXPECT_EQ(gi.shadingDict, nullptr);
    // The crop box replaces the media box, under the matrix of the moment.
    EXPECT_TRUE(state.hasClipBox);
    EXPECT_EQ(state.clipBox.xmin, 20.0);
    EXPECT_EQ(state.clipBox.ymax, 440.0);

    // Only a direct dictionary swaps; a null or a reference changes nothing.
    auto* formFonts = new Tokens::PDFDict();
    auto* formResources = new Tokens::PDFDict();
    (*formResources)["Font"] = formFonts;
    const PDFTokenRef formOwner(formResources);
    EXPECT_EQ(gi.SwapResources(formResources), nullptr);
    EXPECT_EQ(gi.fontDict, formFonts);
    EXPECT_EQ(gi.SwapResources(nullptr), formResources);
    Tokens::PDFRef ref(4, 0);
    EXPECT_EQ(gi.SwapResources(&ref), formResources);
    EXPECT_EQ(gi.swappedResources, formResources);
    EXPECT_EQ(gi.fontDict, formFonts);

    // Without a page dictionary there are no resources and no clip.
    RecordingState bare;
    Interpreter none(bare, &ref);
    EXPECT_EQ(none.resources, nullptr);
    EXPECT_FALSE(bare.hasClipBox);
}

} // namespace
