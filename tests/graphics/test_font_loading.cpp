// Tf through the interpreter with fonts loaded from a document: the state's font fields,
// the page's maps, and text decoded and advanced through the loaded font.
#include "graphics/PDFGraphics.h"
#include "graphics/RecordingState.h"
#include "pdf/OpenedPdf.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using tarquil::test::OpenWritten;
using tarquil::test::PdfWriter;
using tarquil::test::RecordingState;

TEST(FontLoading, TfLoadsEachNameOnce) {
    PdfWriter writer;
    writer.Object(1, "<< /Type /Catalog >>");
    writer.Object(2, "<< /Resources << /Font << /F1 3 0 R /F2 4 0 R >> >> >>");
    writer.Object(3, "<< /BaseFont /Helvetica /FirstChar 65 /Widths [600] >>");
    writer.Object(4, "<< /BaseFont /ABCDEF+Gothic /Encoding /Identity-H /ToUnicode 5 0 R "
                     "/DescendantFonts [<< /DW 1000 /W [1 [500 250]] >>] >>");
    writer.Stream(5, "", "2 beginbfchar <0001> <D83DDE00> <0002> <0042> endbfchar");
    auto opened = OpenWritten(writer, 1);
    PDFToken* page = nullptr;
    ASSERT_EQ(opened->doc.LoadObject(2, 0, &page), kPdfOk);

    RecordingState state;
    PDFGraphics graphics(&opened->doc, &state, page);
    const auto run = [&](const std::string& content) {
        graphics.SetStream(new std::istringstream(content), true);
        EXPECT_EQ(graphics.ParseUntil(nullptr), kPdfEof);
    };

    // The font's own width for A, the standard table's for B.
    run("BT /F1 12 Tf (AB) Tj (A) Tj ET");
    EXPECT_EQ(state.Calls("SetFont"), (std::vector<std::string>{"SetFont F1 12 0 0"}));
    EXPECT_EQ(state.Calls("FlushTextRun"),
              (std::vector<std::string>{"FlushTextRun 0", "FlushTextRun 1267"}));
    EXPECT_EQ(state.fontFamily, "Helvetica");
    EXPECT_DOUBLE_EQ(state.fontHeightScale, 0.718);

    // Through the ToUnicode map, whose 32-bit values keep their low unit in the text.
    state.calls.clear();
    run("BT 0 0 Td /F2 10 Tf <00010002> Tj ET");
    EXPECT_EQ(state.Calls("SetFont"), (std::vector<std::string>{"SetFont F2 10 2 65536"}));
    EXPECT_EQ(state.flushedText.back(), (std::u16string{0xDE00, u'B'}));
    EXPECT_EQ(state.textAdvance, 750);
    EXPECT_EQ(state.missingWidth, 1000);
    EXPECT_EQ(graphics.fontToUnicode.at("F2")->at(1), u'\xDE00');
    EXPECT_EQ(state.toUnicodeMap, graphics.fontToUnicode.at("F2")); // shared, not copied

    // A known name is not loaded again: F1's maps come back, but the widths stay F2's.
    state.calls.clear();
    run("BT 0 0 Td /F1 12 Tf (AB) Tj ET");
    EXPECT_EQ(state.Calls("SetFont"), (std::vector<std::string>{"SetFont F1 12 0 0"}));
    EXPECT_EQ(state.fontFamily, "ABCDEF+Gothic");
    EXPECT_EQ(state.textAdvance, 0);

    // With the import's cache a font read on an earlier page gives the same fields and the
    // same tables; a font that sets no missing width keeps the one in force.
    FontCache cache;
    SharedToUnicodeMap first;
    for (int pass = 0; pass < 2; ++pass) {
        PDFGraphics next(&opened->doc, &state, page);
        next.fontCache = &cache;
        next.SetStream(new std::istringstream("/F2 10 Tf /F1 12 Tf"), true);
        EXPECT_EQ(next.ParseUntil(nullptr), kPdfEof);
        EXPECT_EQ(state.fontFamily, "Helvetica");
        EXPECT_EQ(state.widths.at(65), 600);
        EXPECT_EQ(state.missingWidth, 1000);
        if (pass == 0)
            first = next.fontToUnicode.at("F2");
        EXPECT_EQ(next.fontToUnicode.at("F2"), first); // read once
    }
    EXPECT_EQ(cache.size(), 2u);
}

} // namespace
