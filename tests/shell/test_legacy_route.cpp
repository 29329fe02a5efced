#include "shell/CQuillonPlugIn.h"

#include "support/TestSupport.h"

#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using tarquil::test::TempFile;

// A square from (0,0) to (100,50) and a separate line, after a short prolog.
const std::string kDrawing = "%!PS-Adobe-2.0\n%%EndSetup\n"
                             "0 0 m\n100 0 l\n100 50 l\n0 50 l\n0 0 l\ns\n"
                             "10 10 m\n20 10 L\nS\n";

class LegacyRoute : public ::testing::Test {
protected:
    void SetUp() override { tarquil::test::ResetHost(); }
    void TearDown() override { tarquil::test::ResetHost(); }

    int Import(const TempFile& file, int index) {
        plugIn.SetFileBeingRead(file.WidePath().c_str());
        return plugIn.ImportFile(file.WidePath().c_str(), index, doc, options);
    }
    GK_BoundingBox DocumentBox() const {
        GK_BoundingBox box;
        for (int i = 0; i < doc.ObjectCount(); ++i)
            box.Union(doc.Object(i).Geometry()->BoundingBox());
        return box;
    }
    std::wstring LastText() const { return VmMessages().Messages().back().text; }

    CQuillonPlugIn plugIn;
    CVelmoDoc doc;
    CVelmoFileReadOptions options;
};

TEST_F(LegacyRoute, FitsToFortyAndReports) {
    TempFile file("part.ai", kDrawing);
    options.SetMode(CVelmoFileReadOptions::FitViewsFlag, true);
    EXPECT_EQ(Import(file, 1), 1);
    ASSERT_EQ(doc.ObjectCount(), 2);
    const GK_BoundingBox box = DocumentBox();
    // The larger extent (100) becomes 40, centred on the origin.
    EXPECT_NEAR(box.Min().x, -20.0, 1e-12);
    EXPECT_NEAR(box.Max().x, 20.0, 1e-12);
    EXPECT_NEAR(box.Min().y, -10.0, 1e-12);
    EXPECT_NEAR(box.Max().y, 10.0, 1e-12);
    EXPECT_EQ(doc.Object(0).Attributes().m_layer_index, 0);
    EXPECT_FALSE(doc.Object(0).IsReference());
    ASSERT_EQ(VmMessages().Messages().size(), 1u);
    EXPECT_EQ(LastText(), L"Imported 2 curves from " + file.WidePath() + L"\n");
    for (const auto& view : doc.Views())
        EXPECT_EQ(view->ExtentsFitCount(), 1);
    EXPECT_EQ(doc.RedrawCount(), 1);
}

TEST_F(LegacyRoute, PreservedUnitsScaleByRecordOfExtension) {
    TempFile ai("part.ai", kDrawing);
    plugIn.aiOptions.preserveUnits = true;
    plugIn.aiOptions.velmoScale = 2.0;
    plugIn.aiOptions.importScale = 1.0;
    plugIn.aiOptions.importUnit = ImportUnitMm;
    EXPECT_EQ(Import(ai, 1), 1);
    EXPECT_NEAR(DocumentBox().Max().x, 100.0 * 2.0 / 72.0 * 25.4, 1e-9);
    EXPECT_EQ(DocumentBox().Min().x, 0.0); // about the origin, no centring

    // An .eps file uses the EPS record even when the host says AI; its unit 7 is clamped
    // to inches first.
    CVelmoDoc other;
    TempFile eps("part.eps", kDrawing);
    plugIn.epsOptions.preserveUnits = true;
    plugIn.epsOptions.velmoScale = 1.0;
    plugIn.epsOptions.importScale = 1.0;
    plugIn.epsOptions.importUnit = 7;
    EXPECT_EQ(plugIn.ImportFile(eps.WidePath().c_str(), 1, other, options), 1);
    EXPECT_EQ(plugIn.epsOptions.importUnit, ImportUnitInch);
    GK_BoundingBox box;
    for (int i = 0; i < other.ObjectCount(); ++i)
        box.Union(other.Object(i).Geometry()->BoundingBox());
    EXPECT_NEAR(box.Max().x, 100.0 / 72.0, 1e-12);

    // Points, and any unit the clamp lets through above 2, leave the scale alone.
    CVelmoDoc third;
    plugIn.aiOptions.importUnit = ImportUnitPoint;
    plugIn.aiOptions.velmoScale = 1.0;
    EXPECT_EQ(plugIn.ImportFile(ai.WidePath().c_str(), 1, third, options), 1);
    EXPECT_NEAR(third.Object(0).Geometry()->BoundingBox().Max().x, 100.0, 1e-12);
}

TEST_F(LegacyRoute, DictionaryKeysByHostIndex) {
    TempFile ai("part.ai", kDrawing);
    GK_ArchivableDictionary& dict = options.OptionsDictionary();
    dict.SetBool(L"PreserveModelScale", true);
    dict.SetDouble(L"VelmoScale", 3.0);
    dict.SetInt32(L"AiUnits", ImportUnitPoint);
    dict.SetDouble(L"AiScale", 2.0);
    dict.SetInt32(L"EpsUnits", ImportUnitCm); // not read for index 1
    VelmoApp().SetHeadless(false);            // a dictionary means no prompt anyway
    EXPECT_EQ(Import(ai, 1), 1);
    EXPECT_TRUE(plugIn.aiOptions.preserveUnits);
    EXPECT_EQ(plugIn.aiOptions.velmoScale, 3.0);
    EXPECT_EQ(plugIn.aiOptions.importScale, 2.0);
    EXPECT_EQ(plugIn.aiOptions.importUnit, ImportUnitPoint);
    EXPECT_NEAR(DocumentBox().Max().x, 150.0, 1e-12);
    for (const VmMessage& m : VmMessages().Messages())
        EXPECT_NE(m.kind, "prompt");

    // Index 0 (a .pdf that holds the marker) reads no key at all.
    CVelmoDoc other;
    const ImportFormatOptions before = plugIn.pdfOptions;
    TempFile pdf("odd.pdf", kDrawing);
    dict.SetDouble(L"PDFScale", 9.0);
    EXPECT_EQ(plugIn.ImportFile(pdf.WidePath().c_str(), 0, other, options), 1);
    EXPECT_EQ(plugIn.pdfOptions.importScale, before.importScale);
    EXPECT_EQ(plugIn.pdfOptions.preserveUnits, before.preserveUnits);
}

TEST_F(LegacyRoute, FirstEpsImportWithoutScaleKeepsDrawingUnits) {
    // The EPS defaults have zero scales: 0/0 is no number, and the geometry library refuses
    // a transformation that is no number, so the curves arrive in drawing units.
    TempFile eps("part.eps", kDrawing);
    options.OptionsDictionary().SetBool(L"PreserveModelScale", true);
    EXPECT_EQ(Import(eps, 2), 1);
    EXPECT_TRUE(std::isnan(plugIn.epsOptions.velmoScale / plugIn.epsOptions.importScale));
    ASSERT_EQ(doc.ObjectCount(), 2);
    EXPECT_EQ(DocumentBox().Max().x, 100.0);
    EXPECT_EQ(LastText(), L"Imported 2 curves from " + eps.WidePath() + L"\n");
}

TEST_F(LegacyRoute, SilentAndFailingEnds) {
    // "%%PDF-" on the first line: done, with nothing and no word.
    TempFile odd("odd.ai", "\n  %%PDF-1.3 header\n%%EndSetup\n0 0 m\n1 1 l\nS\n");
    EXPECT_EQ(Import(odd, 1), 1);
    EXPECT_EQ(doc.ObjectCount(), 0);
    EXPECT_TRUE(VmMessages().Messages().empty());

    // A marker on the first line is not seen again: no curves, a box always.
    TempFile first("first.eps", "%%EndSetup\n0 0 m\n1 1 l\nS\n");
    EXPECT_EQ(Import(first, 2), 0);
    ASSERT_EQ(VmMessages().Messages().size(), 1u);
    const VmMessage box = VmMessages().Messages()[0];
    EXPECT_EQ(box.kind, "box");
    EXPECT_EQ(box.title, L"EPS File Read Error");
    EXPECT_EQ(box.text, L"There are no objects that fit the EPS standard in the file " +
                            first.WidePath() + L".");
    EXPECT_EQ(box.flags, 48u);

    // A file that vanished between the dispatch and the route.
    VmMessages().Clear();
    EXPECT_EQ(plugIn.ReadLegacyRoute(L"/nonexistent/gone.ai", doc, options), 0);
    EXPECT_EQ(VmMessages().Messages()[0].kind, "box");
    EXPECT_EQ(VmMessages().Messages()[0].text, L"Error opening AI file.");
    EXPECT_EQ(VmMessages().Messages()[0].title, L"AI File Read Error");
    VmMessages().Clear();
    options.SetMode(CVelmoFileReadOptions::BatchModeFlag, true);
    EXPECT_EQ(plugIn.ReadLegacyRoute(L"/nonexistent/gone.ai", doc, options), 0);
    EXPECT_EQ(VmMessages().Messages()[0].kind, "print");
    EXPECT_EQ(VmMessages().Messages()[0].text, L"Error opening AI file.");
}

TEST_F(LegacyRoute, InteractiveReadAsksAndCanBeCancelled) {
    TempFile ai("part.ai", kDrawing);
    VelmoApp().SetHeadless(false);
    // The dialog is cancelled: nothing is added and nothing said.
    VmUi().AddScriptAnswer("<cancel>");
    EXPECT_EQ(Import(ai, 1), 0);
    EXPECT_EQ(doc.ObjectCount(), 0);
    EXPECT_EQ(doc.RedrawCount(), 0);

    // The dialog answers OK with preserved units in points.
    VmUi().AddScriptAnswer({{"PreserveUnits", 1}, {"Units", 3}, {"ImportScale", 1.0}});
    EXPECT_EQ(Import(ai, 1), 1);
    EXPECT_TRUE(plugIn.aiOptions.preserveUnits);
    EXPECT_NEAR(DocumentBox().Max().x, 100.0, 1e-12);

    // A headless document asks nothing even in an interactive application.
    CVelmoDoc headless;
    headless.SetHeadless(true);
    VmMessages().Clear();
    EXPECT_EQ(plugIn.ImportFile(ai.WidePath().c_str(), 1, headless, options), 1);
    for (const VmMessage& m : VmMessages().Messages())
        EXPECT_NE(m.kind, "prompt");
}

TEST_F(LegacyRoute, ReferenceImportGoesOnReferenceLayers) {
    TempFile ai("part.ai",
                "%%EndSetup\n%%EndSetup\n1 1 1 1 0 0 0 0 0 200 Lb\n(Rim) Ln\n0 0 m\n1 1 l\nS\n");
    options.SetMode(CVelmoFileReadOptions::ReferenceObjectsFlag, true);
    EXPECT_EQ(Import(ai, 1), 1);
    ASSERT_EQ(doc.ObjectCount(), 1);
    EXPECT_TRUE(doc.Object(0).IsReference());
    const int layer = doc.Object(0).Attributes().m_layer_index;
    EXPECT_EQ(doc.LayerTable()[layer].Name().str(), L"part.ai : Rim");
    EXPECT_TRUE(doc.LayerTable()[layer].IsReference());
    EXPECT_EQ(doc.LayerTable()[layer].Color(), GK_Color(0, 0, 200));
}

} // namespace
