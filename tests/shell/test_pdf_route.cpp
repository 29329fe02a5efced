#include "shell/CQuillonPlugIn.h"
#include "shell/PdfPlacement.h"

#include "output/PDFToVelmo.h"
#include "support/PdfWriter.h"
#include "support/TestSupport.h"

#include "host/ui/VmUiDriver.h"

#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tarquil::test::TempFile;

class PdfRoute : public ::testing::Test {
protected:
    void SetUp() override { tarquil::test::ResetHost(); }
    void TearDown() override { tarquil::test::ResetHost(); }
    void AddLine(PDFToVelmo& sink, double x0, double y0, double x1, double y1) {
        PendingObject p;
        p.geometry = new GK_LineCurve(GK_3dPoint(x0, y0, 0), GK_3dPoint(x1, y1, 0));
        sink.pendingObjects.push_back(p);
    }
    CVelmoDoc doc;
    CVelmoFileReadOptions options;
};

TEST_F(PdfRoute, PlacementPreservesUnitsOrFitsTheCurves) {
    PDFToVelmo sink(&doc, &options);
    AddLine(sink, 100, 50, 300, 150); // 200 wide, 100 high
    ImportFormatOptions record;
    Placement p = ComputePlacement(record, sink);
    EXPECT_DOUBLE_EQ(p.scale, 40.0 / 200.0);
    EXPECT_DOUBLE_EQ(p.offset.x, -200.0);
    EXPECT_DOUBLE_EQ(p.offset.y, -100.0);
    EXPECT_EQ(p.offset.z, 0.0);

    record.preserveUnits = true;
    record.velmoScale = 2.0;
    record.importScale = 4.0;
    const std::pair<int, double> cases[] = {{ImportUnitInch, 0.5 / 72.0},
                                            {ImportUnitCm, 0.5 / 72.0 * 2.54},
                                            {ImportUnitMm, 0.5 / 72.0 * 25.4},
                                            {ImportUnitPoint, 0.5},
                                            {9, 0.5}};
    for (auto [unit, scale] : cases) {
        record.importUnit = unit;
        p = ComputePlacement(record, sink);
        EXPECT_DOUBLE_EQ(p.scale, scale) << unit;
        EXPECT_EQ(p.offset.x, 0.0); // the file's own origin
    }
    sink.DiscardPendingObjects();
}

TEST_F(PdfRoute, NothingValidKeepsScaleOneCentredAtZero) {
    PDFToVelmo sink(&doc, &options);
    // Geometry of no extent is not valid here, so the walk deletes it and fits nothing.
    PendingObject dot;
    auto* polyline = new GK_PolylineCurve();
    polyline->m_pline.Append(GK_3dPoint(7, 9, 0));
    polyline->m_pline.Append(GK_3dPoint(7, 9, 0));
    dot.geometry = polyline; // not valid: deleted by the walk
    sink.pendingObjects.push_back(dot);
    Placement p = ComputePlacement(ImportFormatOptions{}, sink);
    EXPECT_EQ(p.scale, 1.0);
    EXPECT_EQ(p.offset.x, 0.0); // nothing valid: the empty box's centre
    EXPECT_EQ(sink.pendingObjects[0].geometry, nullptr);

    sink.DiscardPendingObjects();
}

// A file of `pages` empty pages.
std::string EmptyPages(int pages) {
    tarquil::test::PdfWriter w;
    std::string kids;
    for (int i = 0; i < pages; ++i)
        kids += std::to_string(3 + i) + " 0 R ";
    w.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    w.Object(2, "<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(pages) + " >>");
    // A page without /Contents ends a read, so each has an empty one.
    for (int i = 0; i < pages; ++i)
        w.Object(3 + i, "<< /Type /Page /MediaBox [0 0 200 100] /Contents " +
                            std::to_string(3 + pages) + " 0 R >>");
    w.Stream(3 + pages, "", "");
    w.ClassicXref("/Root 1 0 R");
    return w.Text();
}

TEST_F(PdfRoute, PagesWithoutTheirOwnBoxStackByTheFirstDrawing) {
    // The box sits on the page tree only, so no page has a size of its own: the second is
    // placed by the first page's drawing, grown by its own size (60 high, centred at y 10),
    // and the third has no offset of its own, below the second.
    tarquil::test::PdfWriter w;
    w.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    w.Object(2, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 3 /MediaBox [0 0 200 100] >>");
    for (int page = 3; page <= 5; ++page)
        w.Object(page, "<< /Type /Page /Parent 2 0 R /Contents 6 0 R >>");
    w.Stream(6, "", "0 0 m 10 20 l S");
    w.ClassicXref("/Root 1 0 R");
    TempFile file("stack.pdf", w.Text());
    options.OptionsDictionary().SetBool(L"PreserveModelScale", true);
    options.OptionsDictionary().SetDouble(L"PDFScale", 1.0);
    options.OptionsDictionary().SetDouble(L"VelmoScale", 1.0);
    options.OptionsDictionary().SetInt32(L"PdfUnits", ImportUnitPoint);
    CQuillonPlugIn plugIn;
    ASSERT_EQ(plugIn.ImportFile(file.WidePath().c_str(), 0, doc, options), 1);
    ASSERT_EQ(doc.ObjectCount(), 3);
    const double bottoms[] = {0.0, -30.0, -60.0};
    for (int i = 0; i < 3; ++i) {
        const GK_BoundingBox box = doc.Object(i).Geometry()->BoundingBox();
        EXPECT_NEAR(box.Min().x, 0.0, 1e-9) << i;
        EXPECT_NEAR(box.Min().y, bottoms[i], 1e-9) << i;
        EXPECT_NEAR(box.Max().y, bottoms[i] + 20.0, 1e-9) << i;
    }
}

TEST_F(PdfRoute, EveryFailureShowsItsOneMessage) {
    CQuillonPlugIn plugIn;
    auto lastMessage = [] { return VmMessages().Messages().back(); };

    // A damaged file, headless: the report goes to the command line.
    TempFile damaged("plan.pdf", "%PDF-1.4\nno table here\n");
    EXPECT_EQ(plugIn.ImportFile(damaged.WidePath().c_str(), 0, doc, options), 0);
    EXPECT_EQ(lastMessage().kind, "print");
    EXPECT_EQ(lastMessage().text,
              L"Error reading file " + damaged.WidePath() + L" -- Invalid PDF.\n");

    // Interactive: a box, with the old-file words for a PostScript file without the marker.
    VelmoApp().SetHeadless(false);
    TempFile old("old.eps", "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 1 1\n");
    EXPECT_EQ(plugIn.ImportFile(old.WidePath().c_str(), 2, doc, options), 0);
    EXPECT_EQ(lastMessage().kind, "box");
    EXPECT_EQ(lastMessage().title, L"AI File Read Error");
    EXPECT_EQ(lastMessage().text, L"Velmo cannot read " + old.WidePath() +
                                      L". It may be too old or written in an incompatible format.");
    EXPECT_EQ(lastMessage().flags, 48u);

    // Pages read but nothing drawn: a box, or a line when no questions may be asked.
    TempFile empty("empty.pdf", EmptyPages(1));
    EXPECT_EQ(plugIn.ImportFile(empty.WidePath().c_str(), 0, doc, options), 0);
    EXPECT_EQ(lastMessage().kind, "box");
    EXPECT_EQ(lastMessage().title, L"PDF File Read Error");
    EXPECT_EQ(lastMessage().text,
              L"There are no objects to load in the file " + empty.WidePath() + L".");
    options.SetNoUserInterfaceQuestions(true);
    EXPECT_EQ(plugIn.ImportFile(empty.WidePath().c_str(), 0, doc, options), 0);
    EXPECT_EQ(lastMessage().kind, "print");

    // A cancel at the page prompt is reported like any error, not silently.
    TempFile three("three.pdf", EmptyPages(3));
    VmUi().SetStringAnswer(std::string("<cancel>"));
    options.SetMode(CVelmoFileReadOptions::BatchModeFlag, true);
    EXPECT_EQ(plugIn.ImportFile(three.WidePath().c_str(), 0, doc, options), 0);
    EXPECT_EQ(lastMessage().kind, "box");
    EXPECT_EQ(lastMessage().text,
              L"Error reading file " + three.WidePath() + L" -- Command was canceled.");
    EXPECT_EQ(doc.ObjectCount(), 0);
}

} // namespace
