// The font loader over font dictionaries of every shape, in small written documents.
#include "fonts/FontLoader.h"
#include "pdf/OpenedPdf.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

namespace {

using tarquil::test::Opened;
using tarquil::test::OpenWritten;
using tarquil::test::PdfWriter;
using Widths = std::map<std::int32_t, double>;

// Object 2 is the Font resource dictionary the fonts are loaded from.
class FontFile {
public:
    explicit FontFile(PdfWriter& writer) {
        writer.Object(1, "<< /Type /Catalog >>");
        opened = OpenWritten(writer, 1);
        EXPECT_EQ(opened->doc.LoadObject(2, 0, &fonts), kPdfOk);
    }
    FontRecord Load(const std::string& name, double missingWidth = 0.0) {
        FontRecord font;
        font.missingWidth = missingWidth;
        LoadFont(&opened->doc, fonts, name, font);
        return font;
    }

    std::unique_ptr<Opened> opened;
    PDFToken* fonts = nullptr;
};

TEST(FontLoader, SimpleFonts) {
    PdfWriter writer;
    writer.Object(2, "<< /F1 3 0 R /F2 << /BaseFont /Times-Roman /Encoding /WinAnsiEncoding "
                     "/FontDescriptor << /FontBBox [0 0 9] /Ascent 800 >> >> "
                     "/F3 << /BaseFont /ABCDEF+Helvetica /Widths [300 400] "
                     "/FontDescriptor << /Ascent 800 >> >> "
                     "/F4 << /FirstChar 2147483647 /Widths [1 2] >> /F5 7 >>");
    writer.Object(3, "<< /Type /Font /Subtype /TrueType /BaseFont /Helvetica /FirstChar 65 "
                     "/LastChar 60 /Widths 4 0 R /FontDescriptor 5 0 R >>");
    writer.Object(4, "[500 0 700]");
    writer.Object(5, "<< /Flags 96 /CapHeight 0 /Ascent 905 /Descent -212 "
                     "/FontBBox [-100 -200 1000 900] /MissingWidth 250 >>");
    FontFile file(writer);

    // The standard table first, the font's own widths on top, keys the font does not name
    // kept; a zero cap height takes the ascent.
    FontRecord f1 = file.Load("F1", 9);
    EXPECT_EQ(f1.fontFamily, "Helvetica");
    EXPECT_EQ(Widths(f1.widths.find(64), f1.widths.find(68)),
              (Widths{{64, 1015}, {65, 500}, {66, 0}, {67, 700}}));
    EXPECT_EQ(f1.averageWidth, 600);
    EXPECT_EQ(f1.largestWidth, 1015);
    EXPECT_TRUE(f1.fontItalic);
    EXPECT_DOUBLE_EQ(f1.fontHeightScale, 0.905);
    EXPECT_DOUBLE_EQ(f1.fontDescent, -0.212);
    EXPECT_DOUBLE_EQ(f1.fontBoxHeight, 1.1);
    EXPECT_EQ(f1.missingWidth, 250);
    EXPECT_FALSE(f1.encoding || f1.toUnicode);

    // Without /CapHeight the ascent is never read; a box of three items is no box.
    const FontRecord f2 = file.Load("F2", 9);
    EXPECT_EQ(f2.widths.at(97), 444);
    EXPECT_DOUBLE_EQ(f2.fontHeightScale, 0.662);
    EXPECT_EQ(f2.fontBoxHeight, 1.0);
    EXPECT_EQ(f2.missingWidth, 9);
    ASSERT_TRUE(f2.encoding);
    EXPECT_EQ(f2.encoding->size(), 256u);

    // A subset prefix is no standard font; without /FirstChar the keys start at -1.
    const FontRecord f3 = file.Load("F3");
    EXPECT_EQ(f3.widths, (Widths{{-1, 300}, {0, 400}}));
    EXPECT_EQ(f3.fontHeightScale, 1.0);
    EXPECT_EQ(f3.largestWidth, 400);

    // Keys counted past the 32-bit range wrap around.
    EXPECT_EQ(file.Load("F4").widths, (Widths{{INT_MIN, 2}, {INT_MAX, 1}}));

    // A second load starts over; a name that is no dictionary leaves the start values.
    LoadFont(&file.opened->doc, file.fonts, "F5", f1);
    EXPECT_TRUE(f1.widths.empty() && f1.fontFamily.empty() && !f1.fontItalic);
    EXPECT_EQ(f1.missingWidth, 250);
}

TEST(FontLoader, CompositeFonts) {
    PdfWriter writer;
    writer.Object(2, "<< /F1 << /Subtype /Type0 /BaseFont /ABCDEF+Arial /Encoding /Identity-H "
                     "/DescendantFonts [3 0 R] /ToUnicode 5 0 R >> "
                     "/F2 << /ToUnicode /Identity-H /FirstChar 0 /Widths [999] "
                     "/DescendantFonts [<< /W [1 [600] ] >>] >> "
                     "/F3 << /Encoding /Identity-H /DescendantFonts [<< /CIDSystemInfo "
                     "<< /Registry (PDFAUTOCAD) /Ordering (Indentity0) >> >>] >> >>");
    writer.Object(3, "<< /DW 1000 /W [10 20 500 30 [100 200] 40 (x) 50 [1]] "
                     "/CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) >> "
                     "/FontDescriptor 4 0 R >>");
    writer.Object(4, "<< /CapHeight 700 /Flags 4 /MissingWidth 5 >>");
    writer.Stream(5, "", "1 beginbfchar <0003> <0041> endbfchar");
    FontFile file(writer);

    // A range of /W gives one width, to its first code; a malformed entry ends the array.
    const FontRecord f1 = file.Load("F1");
    EXPECT_EQ(f1.widths, (Widths{{10, 500}, {30, 100}, {31, 200}}));
    EXPECT_EQ(f1.missingWidth, 1000); // /DW; the descendant's descriptor has no /MissingWidth
    EXPECT_EQ(f1.largestWidth, 500);
    EXPECT_EQ(f1.fontRegistryOrdering, "Adobe-Identity");
    EXPECT_DOUBLE_EQ(f1.fontHeightScale, 0.7);
    EXPECT_FALSE(f1.fontItalic);
    ASSERT_TRUE(f1.encoding && f1.toUnicode);
    EXPECT_EQ(f1.encoding->at(3), 32);
    EXPECT_EQ(*f1.toUnicode, (CodeMap{{3, 0x41}}));

    // An Identity ToUnicode maps codes 1 to 65535 and ends the load before /Widths.
    const FontRecord f2 = file.Load("F2");
    ASSERT_TRUE(f2.toUnicode);
    EXPECT_EQ(f2.toUnicode->size(), 65535u);
    EXPECT_EQ(f2.toUnicode->begin()->first, 1u);
    EXPECT_EQ(f2.widths, (Widths{{1, 600}}));

    const FontRecord f3 = file.Load("F3");
    ASSERT_TRUE(f3.encoding);
    EXPECT_EQ(f3.encoding->at(98), 0);
}

TEST(FontLoader, EncodingDictionaries) {
    PdfWriter writer;
    writer.Object(2, "<< /F1 << /Encoding << /Differences 3 0 R >> >> "
                     "/F2 << /Encoding << /BaseEncoding /WinAnsiEncoding "
                     "/Differences [300 /bullet 1.5 (x) /Euro] >> >> >>");
    // Codes wrap at 256, also for a negative counter; unknown names give 0.
    writer.Object(3, "[65 /Alpha /minus 254 /a /b /c -1 /d]");
    FontFile file(writer);

    const FontRecord f1 = file.Load("F1");
    ASSERT_TRUE(f1.encoding);
    EXPECT_EQ(f1.encoding->at(1), 30); // from Identity-H
    EXPECT_EQ(f1.encoding->at(65), 0);
    EXPECT_EQ(f1.encoding->at(66), 8722);
    EXPECT_EQ(f1.encoding->at(254), 'a');
    EXPECT_EQ(f1.encoding->at(255), 'd');
    EXPECT_EQ(f1.encoding->at(0), 'c');

    const FontRecord f2 = file.Load("F2");
    ASSERT_TRUE(f2.encoding);
    EXPECT_EQ(f2.encoding->size(), 256u);
    EXPECT_EQ(f2.encoding->at(44), 8226);
    EXPECT_EQ(f2.encoding->at(45), 8364);
}

TEST(FontLoader, HostileFonts) {
    PdfWriter writer;
    // A font that is its own descendant, descriptor and encoding, with an inner width
    // array used twice; a ToUnicode stream that fails to decode ends the load.
    writer.Object(2, "<< /F1 3 0 R /F2 << /ToUnicode 5 0 R /Widths [1] >> >>");
    writer.Object(3, "<< /BaseFont /Self /DescendantFonts [3 0 R] /FontDescriptor 3 0 R "
                     "/Encoding 3 0 R /W [0 4 0 R 5 4 0 R] /Flags 64 >>");
    writer.Object(4, "[1 2 3]");
    writer.Stream(5, "/Filter /FlateDecode", "not deflated");
    FontFile file(writer);

    const FontRecord f1 = file.Load("F1");
    EXPECT_EQ(f1.widths, (Widths{{0, 1}, {1, 2}, {2, 3}}));
    EXPECT_TRUE(f1.fontItalic);
    ASSERT_TRUE(f1.encoding);
    EXPECT_EQ(f1.encoding->size(), 65536u);

    const FontRecord f2 = file.Load("F2");
    EXPECT_FALSE(f2.toUnicode);
    EXPECT_TRUE(f2.widths.empty());
}

} // namespace
