// Text state and position, the decoding of shown strings, and marked content.
#include "graphics/RecordingState.h"
#include "pdf/token/PDFTokens.h"
#include "pdf/xref/PDFDocument.h"
#include "support/PdfWriter.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using tarquil::test::PdfWriter;
using tarquil::test::RecordingState;
using Tokens = PDFParserTokens;

EncodingMap IdentityEncoding() {
    EncodingMap map;
    for (std::uint32_t code = 0; code < 65536; ++code)
        map.emplace(static_cast<std::uint16_t>(code), static_cast<std::uint16_t>(code));
    return map;
}

TEST(GraphicsText, SetFontSharesTheTables) {
    RecordingState state;
    // The tables are shared with the caller, not copied.
    const auto toUnicode = std::make_shared<const ToUnicodeMap>(ToUnicodeMap{{1, u'x'}});
    const auto encoding = std::make_shared<const EncodingMap>(EncodingMap{{65, 66}});
    state.SetFont("F2", 9.5, toUnicode, encoding);
    EXPECT_EQ(state.fontName, "F2");
    EXPECT_EQ(state.fontSize, 9.5);
    EXPECT_EQ(state.toUnicodeMap, toUnicode);
    EXPECT_EQ(state.encodingMap, encoding);
    // A font change replaces both tables, also by empty ones.
    state.SetFont("F3", 10, nullptr, nullptr);
    EXPECT_FALSE(state.toUnicodeMap);
    EXPECT_FALSE(state.encodingMap);
}

TEST(GraphicsText, TextPosition) {
    RecordingState state;
    state.SetTextMatrix(2, 0, 0, 2, 10, 10);
    EXPECT_EQ(state.textMatrix, (PDFMatrix{2, 0, 0, 2, 10, 10}));

    // MoveText flushes the run at its start, clears the run and moves the origin through
    // the text matrix.
    state.pendingText = u"ab";
    state.textAdvance = 450;
    state.runStart = 300;
    state.MoveText(5, -3);
    EXPECT_EQ(state.Calls("FlushTextRun"), std::vector<std::string>{"FlushTextRun 300"});
    EXPECT_EQ(state.flushedText, std::vector<std::u16string>{u"ab"});
    EXPECT_TRUE(state.pendingText.empty());
    EXPECT_EQ(state.textAdvance, 0.0);
    EXPECT_EQ(state.runStart, 0.0);
    EXPECT_EQ(state.textMatrix, (PDFMatrix{2, 0, 0, 2, 20, 4}));

    // Under a rotated text matrix the step turns too; a..d stay.
    state.SetTextMatrix(0, 1, -1, 0, 100, 0);
    state.MoveText(1, 2);
    EXPECT_EQ(state.textMatrix, (PDFMatrix{0, 1, -1, 0, 98, 1}));

    // BT resets the matrix and the pending text, not the advance of the run.
    state.pendingText = u"zz";
    state.textAdvance = 120;
    state.runStart = 60;
    state.BeginText();
    EXPECT_EQ(state.textMatrix, PDFMatrix{});
    EXPECT_TRUE(state.pendingText.empty());
    EXPECT_EQ(state.textAdvance, 120.0);
    EXPECT_EQ(state.runStart, 60.0);
}

TEST(GraphicsText, PlainTextOneByteAtATime) {
    RecordingState state;
    state.widths = {{65, 500}, {66, 0}};
    state.missingWidth = 250;
    state.charSpacing = 10;
    state.wordSpacing = 20;

    // Only listed widths count: no missing width, no spacing on this path.
    double advance = 100;
    state.AppendText("AB C", advance);
    EXPECT_EQ(advance, 600.0);
    EXPECT_EQ(state.pendingText, u"AB C");
    EXPECT_EQ(state.Calls("Decode"), std::vector<std::string>{"DecodePlainText 4 1"});

    // Bytes are widened as they are, not translated by any encoding.
    state.pendingText.clear();
    state.encodingMap = std::make_shared<const EncodingMap>(EncodingMap{{65, 97}});
    advance = 0;
    state.AppendText("A\xE9", advance);
    EXPECT_EQ(state.pendingText, u"A\u00E9");
    EXPECT_EQ(advance, 500.0);

    // An odd length is read byte by byte even under an Identity encoding.
    state.pendingText.clear();
    state.encodingMap = std::make_shared<const EncodingMap>(IdentityEncoding());
    advance = 0;
    state.AppendText("ABA", advance);
    EXPECT_EQ(state.pendingText, u"ABA");
    EXPECT_EQ(advance, 1000.0);

    // Nothing to show: true, and the advance stays.
    std::u16string out;
    advance = 7;
    EXPECT_TRUE(state.DecodePlainText("", advance, out));
    EXPECT_EQ(advance, 7.0);
    EXPECT_TRUE(out.empty());
}

TEST(GraphicsText, PlainTextTwoBytesAtATime) {
    RecordingState state;
    state.widths = {{0x4142, 700}, {0x20, 300}, {0x41, 111}};
    state.missingWidth = 999;
    state.charSpacing = 10;
    state.wordSpacing = 20;

    // Under Identity an even length pairs the bytes; the width comes with one spacing.
    state.encodingMap = std::make_shared<const EncodingMap>(IdentityEncoding());
    double advance = 0;
    state.AppendText("AB", advance);
    EXPECT_EQ(state.pendingText, u"\u4142");
    EXPECT_EQ(advance, 710.0);

    // Without Identity, a byte from 0x80 up at an even index chooses pairs as well; a code
    // without a width adds neither width nor spacing, and a space takes word spacing.
    state.encodingMap.reset();
    state.pendingText.clear();
    advance = 0;
    state.AppendText(std::string("\x80\x41\x00\x20", 4), advance);
    EXPECT_EQ(state.pendingText, u"\u8041\u0020");
    EXPECT_EQ(advance, 320.0);
    // A control byte at an even index does the same; at an odd index it does not.
    state.pendingText.clear();
    advance = 0;
    state.AppendText(std::string("\x1F\x41", 2), advance);
    EXPECT_EQ(state.pendingText, u"\u1F41");
    state.pendingText.clear();
    state.AppendText(std::string("A\x80", 2), advance);
    EXPECT_EQ(state.pendingText, u"A\u0080");

    // Pairs bypass the out string and land in the run directly.
    state.pendingText = u"<";
    std::u16string out;
    advance = 0;
    ASSERT_TRUE(state.DecodePlainText(std::string("\x00\x41", 2), advance, out));
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(state.pendingText, u"<A");
    EXPECT_EQ(advance, 121.0);
}

TEST(GraphicsText, MappedText) {
    RecordingState state;
    state.toUnicodeMap = std::make_shared<const ToUnicodeMap>(
        ToUnicodeMap{{0x41, u'a'}, {0x0102, u'\u4E2D'}, {0x20, u' '}, {0, u'Z'}, {0x0300, u'x'}});
    state.widths = {{0x41, 400}, {0x0102, 0}};
    state.missingWidth = 1000;
    state.charSpacing = 5;
    state.wordSpacing = 50;

    // Codes of one and two bytes mixed; a zero width counts as missing, like an absent one;
    // each code adds one spacing, word spacing for 32.
    double advance = 0;
    state.AppendText("A\x01\x02 ", advance);
    EXPECT_EQ(state.pendingText, u"a\u4E2D ");
    EXPECT_EQ(advance, 405.0 + 1005.0 + 1050.0);
    EXPECT_EQ(state.Calls("Decode"), std::vector<std::string>{"DecodeMappedText 4 1"});

    // Code 0 is never looked up, so a leading zero byte joins the next one.
    state.pendingText.clear();
    advance = 0;
    state.AppendText(std::string("\x00\x41", 2), advance);
    EXPECT_EQ(state.pendingText, u"a");
    EXPECT_EQ(advance, 405.0);
    // Past the end the code is still shifted: a last byte 03 reads as 0x0300.
    state.pendingText.clear();
    advance = 0;
    state.AppendText("\x03", advance);
    EXPECT_EQ(state.pendingText, u"x");
    EXPECT_EQ(advance, 1005.0);

    // One undecodable code drops the whole string and leaves the advance alone.
    state.pendingText = u"kept";
    advance = 42;
    state.AppendText("A\x09", advance);
    EXPECT_EQ(state.pendingText, u"kept");
    EXPECT_EQ(advance, 42.0);
    std::u16string out;
    EXPECT_FALSE(state.DecodeMappedText("\x09", advance, out));
    EXPECT_EQ(advance, 42.0);
    EXPECT_TRUE(state.Calls("DecodePlainText").empty());
}

struct OpenedDocument {
    explicit OpenedDocument(const std::string& text) : in(text), doc(&in) {}
    std::istringstream in;
    PDFDocument doc;
};

// Objects 1 to `bodies.size()` with their table filled by hand; object 1 is the catalog.
std::unique_ptr<OpenedDocument> Document(const std::vector<std::string>& bodies) {
    PdfWriter writer;
    for (std::size_t i = 0; i < bodies.size(); ++i)
        writer.Object(static_cast<int>(i + 1), bodies[i]);
    writer.ClassicXref("/Root 1 0 R");
    auto opened = std::make_unique<OpenedDocument>(writer.Text());
    opened->doc.entries.resize(bodies.size() + 1);
    for (std::size_t number = 1; number <= bodies.size(); ++number) {
        XrefEntry& entry = opened->doc.entries[number];
        entry.type = 1;
        entry.generation = 0;
        entry.offset = static_cast<std::int64_t>(writer.OffsetOf(static_cast<int>(number)));
    }
    opened->doc.root = new Tokens::PDFRef(1, 0);
    return opened;
}

TEST(GraphicsMarkedContent, OptionalContentGroups) {
    auto opened = Document({"<< /Type /Catalog /OCProperties << /OCGs [2 0 R 3 0 R] "
                            "/D << /OFF [3 0 R] >> >> >>",
                            "<< /Type /OCG /Name (Walls) >>", "<< /Type /OCG /Name (Doors) >>",
                            "<< /Type /OCMD /OCGs [2 0 R] >>"});
    PDFDocument& doc = opened->doc;
    auto* properties = new Tokens::PDFDict;
    (*properties)["MC0"] = new Tokens::PDFRef(2, 0);
    (*properties)["MC1"] = new Tokens::PDFRef(4, 0);
    (*properties)["MC2"] = new Tokens::PDFInteger(5);
    (*properties)["MC3"] = new Tokens::PDFRef(3, 0);
    doc.pageProperties = properties;

    RecordingState state;
    state.layerIndex = 3;
    state.layerStack = {1};
    // The groups are loaded and announced at the first marked content only.
    state.BeginMarkedContent(&doc, "Span", nullptr);
    state.EndMarkedContent();
    state.BeginMarkedContent(&doc, "Span", nullptr);
    EXPECT_EQ(doc.optionalContentGroups.size(), 2u);
    EXPECT_EQ(state.Calls("OptionalContentLoaded"),
              std::vector<std::string>{"OptionalContentLoaded 2"});
    // The layer stack belongs to the interpreter and the layer index to the sink.
    EXPECT_EQ(state.layerIndex, 3);
    EXPECT_EQ(state.layerStack, std::vector<std::int32_t>{1});

    // An OC tag with a property name names the group; a hidden group too.
    state.BeginMarkedContent(&doc, "OC", new Tokens::PDFName("MC0"));
    EXPECT_EQ(state.optionalContentName, "Walls");
    state.BeginMarkedContent(&doc, "OC", new Tokens::PDFName("MC3"));
    EXPECT_EQ(state.optionalContentName, "Doors");
    // A membership dictionary has no name of its own.
    state.BeginMarkedContent(&doc, "OC", new Tokens::PDFName("MC1"));
    EXPECT_EQ(state.optionalContentName, "");
    EXPECT_EQ(
        state.Calls("SetOptionalContentName"),
        (std::vector<std::string>{"SetOptionalContentName Walls", "SetOptionalContentName Doors",
                                  "SetOptionalContentName "}));

    // Other tags, unknown names, entries that are no dictionary and inline dictionaries
    // change nothing.
    state.optionalContentName = "before";
    state.calls.clear();
    state.BeginMarkedContent(&doc, "Layer", new Tokens::PDFName("MC0"));
    state.BeginMarkedContent(&doc, "OC", new Tokens::PDFName("MC9"));
    state.BeginMarkedContent(&doc, "OC", new Tokens::PDFName("MC2"));
    state.BeginMarkedContent(&doc, "OC", new Tokens::PDFDict);
    EXPECT_EQ(state.optionalContentName, "before");
    EXPECT_TRUE(state.Calls("SetOptionalContentName").empty());
    EXPECT_TRUE(state.Calls("OptionalContentLoaded").empty());

    // Without page properties the name stays as well.
    doc.pageProperties->Release();
    doc.pageProperties = nullptr;
    state.BeginMarkedContent(&doc, "OC", new Tokens::PDFName("MC0"));
    EXPECT_EQ(state.optionalContentName, "before");
}

TEST(GraphicsMarkedContent, PropertiesAreReleased) {
    auto plain = Document({"<< /Type /Catalog >>"});
    RecordingState state;
    // A file without groups tries again every time, and the sink never hears of groups.
    state.BeginMarkedContent(&plain->doc, "OC", nullptr);
    state.BeginMarkedContent(&plain->doc, "OC", nullptr);
    EXPECT_TRUE(plain->doc.optionalContentGroups.empty());
    EXPECT_TRUE(state.Calls("OptionalContentLoaded").empty());

    // The calls take one reference each and give it back.
    auto* name = new Tokens::PDFName("MC0");
    name->AddRef();
    state.BeginMarkedContent(&plain->doc, "OC", name);
    EXPECT_EQ(name->refCount, 1u);
    auto* dict = new Tokens::PDFDict;
    dict->AddRef();
    state.MarkPoint("Tag", dict);
    EXPECT_EQ(dict->refCount, 1u);
    state.MarkPoint("Tag", nullptr);
    name->Release();
    dict->Release();
    EXPECT_EQ(state.optionalContentName, "");
}

} // namespace
