// Text output: runs through the interpreter into records, records into text objects in a
// matching family, and the report of missing fonts.
#include "graphics/PDFGraphics.h"
#include "host/base/VmFontList.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "host/ui/VmMessages.h"
#include "output/MissingFonts.h"
#include "output/PDFToVelmo.h"
#include "pdf/OpenedPdf.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using tarquil::test::OpenWritten;
using tarquil::test::PdfWriter;

class TextOutput : public ::testing::Test {
protected:
    void SetUp() override { tarquil::test::ResetHost(); }

    const CVelmoTextObject& Text(int index) const {
        return dynamic_cast<const CVelmoTextObject&>(doc.Object(index));
    }
    // The command-line lines and boxes of the run, as "print: ..." and "box: title | text".
    std::vector<std::wstring> Messages() const {
        std::vector<std::wstring> lines;
        for (const VmMessage& m : VmMessages().Messages())
            lines.push_back(m.kind == "box" ? L"box " + std::to_wstring(m.flags) + L": " + m.title +
                                                  L" | " + m.text
                                            : L"print: " + m.text);
        return lines;
    }
    static TextRecord Record(const std::string& font) {
        TextRecord record;
        record.text.assign(1, u't');
        record.a = record.d = 1.0;
        record.fontFamily = font;
        return record;
    }

    CVelmoDoc doc;
    CVelmoFileReadOptions options;
};

// Runs through the interpreter: one object per Tj at the advance of the one before, the cap
// height as height, the fill colour whatever the render mode, and the first em square tested
// against the page box.
TEST_F(TextOutput, RunsBecomeTextObjectsInPlace) {
    PdfWriter writer;
    writer.Object(1, "<< /Type /Catalog >>");
    writer.Object(2, "<< /MediaBox [0 0 200 100] /Resources << /Font << /F1 3 0 R /F2 4 0 R >> "
                     ">> >>");
    writer.Object(3, "<< /BaseFont /Helvetica-Bold >>");
    writer.Object(4, "<< /BaseFont /ABCDEF+Gothic-Oblique /FirstChar 65 /Widths [500 250 600] "
                     "/FontDescriptor << /CapHeight 700 /Flags 64 >> >>");
    auto opened = OpenWritten(writer, 1);
    PDFToken* page = nullptr;
    ASSERT_EQ(opened->doc.LoadObject(2, 0, &page), kPdfOk);

    PDFToVelmo sink(&doc, &options);
    PDFGraphics graphics(&opened->doc, &sink, page);
    graphics.SetStream(new std::istringstream(
                           "1 0 0 rg 0 1 0 RG 1 Tr BT /F2 10 Tf 2 0 0 2 10 20 Tm (AB) Tj (C) Tj ET "
                           "BT /F1 10 Tf -50 50 Td (a long run that reaches into the page) Tj "
                           "45 0 Td (x) Tj 0 -60 Td (y) Tj ET"),
                       true);
    EXPECT_EQ(graphics.ParseUntil(nullptr), kPdfEof);
    ASSERT_EQ(sink.textRecords.size(), 3u); // the run starting left of the box and y below it go
    EXPECT_EQ(sink.textRecords[1].text, u"C");
    EXPECT_EQ(sink.textRecords[1].e, 25.0); // 10 + 2 × 10 × 750 / 1000
    EXPECT_EQ(sink.textRecords[2].e, -5.0); // its em square reaches in

    VmSetFontFamilies(std::vector<std::wstring>{L"Helvetica", L"Gothic Medium", L"Gothic"});
    sink.CommitToDocument(2.0, {1, 1, 0}, true, false, false, false);
    ASSERT_EQ(doc.ObjectCount(), 3);
    const CVelmoTextObject& first = Text(0);
    EXPECT_EQ(first.Text().Text().str(), L"AB");
    EXPECT_EQ(first.Text().Plane().origin, GK_3dPoint(22, 42, 0));
    EXPECT_EQ(first.Text().Plane().xaxis, GK_3dVector(1, 0, 0));
    EXPECT_DOUBLE_EQ(first.Text().Height(), 28.0); // 10 × 0.7, × 2 by Tm, × 2 by the scale
    EXPECT_EQ(Text(1).Text().Plane().origin, GK_3dPoint(52, 42, 0));
    EXPECT_EQ(first.Attributes().m_color, GK_Color(255, 0, 0));
    EXPECT_EQ(first.Attributes().m_color_source, GK_3dmObjectAttributes::color_from_object);

    // "Gothic Medium" agrees as far as "Gothic" does and is listed first. Italic comes from the
    // descriptor's flag, bold from the name alone.
    EXPECT_EQ(first.Style().Font().Description().str(), L"Gothic Medium Italic");
    EXPECT_EQ(Text(2).Style().Font().Description().str(), L"Helvetica Bold");
    EXPECT_DOUBLE_EQ(Text(2).Text().Height(), 14.36); // Helvetica's cap height 718
    const CVelmoDimStyleTable& styles = doc.DimStyleTable();
    ASSERT_EQ(styles.DimStyleCount(), 2);
    EXPECT_EQ(first.Style().ParentIndex(), 0);
    EXPECT_EQ(Text(1).Style().ParentIndex(), 0);
    EXPECT_EQ(styles[1].Name().str(), L"Helvetica Bold");
    EXPECT_FALSE(styles[1].DrawForward());
    EXPECT_TRUE(Messages().empty());
}

// The loose prefix match of PDF names against installed families.
TEST_F(TextOutput, MatchFontByPrefix) {
    FontMatcher matcher(
        {L"Arial Narrow", L"Arial", L"Times New Roman", L"Ab", L"  Cou rier", L"Symbol"});
    const auto match = [&](const std::string& name) {
        GK_wString family;
        bool found = true;
        matcher.MatchFont(name, family, found);
        return (found ? L"" : L"missing ") + family.str();
    };
    EXPECT_EQ(match("Arial-BoldMT"), L"Arial Narrow"); // a tie at 5: the first listed stays
    EXPECT_EQ(match("ArialNarrow"), L"Arial Narrow");
    EXPECT_EQ(match("TimesNewRomanPSMT"), L"Times New Roman"); // blanks skipped, system side
    EXPECT_EQ(match("ABCDEF+Courier"), L"  Cou rier");         // subset prefix skipped
    EXPECT_EQ(match("Ti mes"), L"missing Arial");              // but not on the PDF side
    EXPECT_EQ(match("Ab"), L"missing Arial");                  // two letters are never enough
    EXPECT_EQ(match("Sym"), L"Symbol");
    EXPECT_EQ(match("symbol"), L"missing Arial"); // case counts
    EXPECT_EQ(match(""), L"missing Arial");
    EXPECT_EQ(match("ABCDEF+"), L"missing Arial");
    EXPECT_EQ(match("Sy\xE9mbol"), L"missing Arial"); // a byte from 0x80 up never agrees

    // A miss sets the process-wide flag, also when it comes from the cache.
    ClearFontWasMissing();
    EXPECT_EQ(match("Sym"), L"Symbol");
    EXPECT_FALSE(FontWasMissing());
    EXPECT_EQ(match("Ab"), L"missing Arial");
    EXPECT_TRUE(FontWasMissing());
}

// Each missing name is told once on the command line and counted; the report closes the
// pass on the command line in batch mode or without the box, else in the box.
TEST_F(TextOutput, MissingFontsAreReportedOncePerName) {
    VmSetFontFamilies(std::vector<std::wstring>{L"Found"});
    const auto commit = [&](std::vector<std::string> fonts, bool batch, bool box) {
        VmMessages().Clear();
        options.SetMode(CVelmoFileReadOptions::BatchModeFlag, batch);
        PDFToVelmo sink(&doc, &options);
        for (const std::string& font : fonts)
            sink.textRecords.push_back(Record(font));
        sink.CommitToDocument(1.0, {}, true, false, false, box);
        return Messages();
    };
    const std::wstring report = L"This file references 3 fonts not found on this computer.";
    const std::wstring substitute = L"Velmo will use Arial as a substitute.";
    EXPECT_EQ(commit({"ABCDEF+Foo", "Found", "GHIJKL+Foo", "ABCDEF+Foo", ""}, true, true),
              (std::vector<std::wstring>{L"print: Could not find embedded font \"ABCDEF+Foo\"\n",
                                         L"print: Could not find embedded font \"GHIJKL+Foo\"\n",
                                         L"print: Could not find embedded font \"\"\n",
                                         L"print: " + report + L" " + substitute + L"\n"}));
    EXPECT_EQ(doc.ObjectCount(), 5);
    EXPECT_EQ(Text(0).Style().Font().FamilyName().str(), L"Arial");

    const auto boxed = commit({"Missing", "Missing"}, false, true);
    ASSERT_EQ(boxed.size(), 2u);
    EXPECT_EQ(boxed[1], L"box 64: Import PDF Missing Fonts | This file references a font not "
                        L"found on this computer.\n\n" +
                            substitute +
                            L"\n\nSee the Velmo command - line for more information.\n");
    EXPECT_EQ(commit({"Missing"}, false, false).back(),
              L"print: This file references a font not found on this computer. " + substitute +
                  L"\n");
    // A pass where every font is found says nothing, whatever an earlier pass found.
    EXPECT_TRUE(commit({"Found"}, false, true).empty());
}

// Without loadText the records are dropped unread: no font list, no report, no style; a run
// in a font of size 0 has no height, and the host refuses it.
TEST_F(TextOutput, NoTextWithoutLoadTextOrHeight) {
    PDFToVelmo sink(&doc, &options);
    sink.textRecords.push_back(Record("Missing"));
    const int requests = VmFontFamilyRequests();
    sink.CommitToDocument(1.0, {}, false, false, false, true);
    EXPECT_EQ(VmFontFamilyRequests(), requests);
    EXPECT_EQ(doc.ObjectCount(), 0);
    EXPECT_EQ(doc.DimStyleTable().DimStyleCount(), 0);
    EXPECT_TRUE(Messages().empty());

    VmSetFontFamilies(std::vector<std::wstring>{L"Found"});
    PDFToVelmo flat(&doc, &options);
    TextRecord zero = Record("Found");
    zero.a = zero.b = zero.c = zero.d = 0.0;
    flat.textRecords.push_back(zero);
    flat.CommitToDocument(1.0, {}, true, false, false, true);
    EXPECT_EQ(doc.ObjectCount(), 0);
    // The pass still leaves the document a style to make text with.
    ASSERT_EQ(doc.DimStyleTable().DimStyleCount(), 1);
    EXPECT_EQ(doc.DimStyleTable()[0].Font().FamilyName().str(), L"Found");
}

} // namespace
