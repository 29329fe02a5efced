// The host's side of text: fonts, annotation styles and their table, text objects, units and
// the list of installed families.
#include "host/base/VmFontList.h"
#include "host/doc/CVelmoDoc.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

TEST(HostText, StylesAreFoundByFontAndScaleOrMadeFromTheTemplate) {
    CVelmoDoc doc;
    CVelmoDimStyleTable& table = doc.DimStyleTable();
    EXPECT_EQ(table.CurrentDimStyle().Name().str(), L"Default"); // the system's, while empty
    EXPECT_EQ(&table.CurrentDimStyle(), &GK_DimStyle::DimStyleOrDefault(nullptr));

    const GK_Font* bold = GK_Font::GetManagedFont(L"Serif", true, false);
    EXPECT_EQ(bold, GK_Font::GetManagedFont(L"Serif", true, false)); // one object per font
    EXPECT_NE(bold, GK_Font::GetManagedFont(L"Serif", false, false));
    EXPECT_EQ(GK_Font::GetManagedFont(L"", false, false), GK_Font::Default());

    GK_DimStyle base = GK_DimStyle::DimStyleOrDefault(nullptr);
    base.SetDrawForward(false);
    EXPECT_EQ(table.FindDimStyleFromFont(bold, 1.0, &base, false), -1);
    EXPECT_EQ(table.FindDimStyleFromFont(bold, 1.0, &base, true), 0);
    EXPECT_EQ(table.FindDimStyleFromFont(bold, 1.0, nullptr, true), 0);
    EXPECT_EQ(table.FindDimStyleFromFont(bold, 2.0, nullptr, true), 1); // another scale
    ASSERT_EQ(table.DimStyleCount(), 2);
    EXPECT_EQ(table[0].Name().str(), L"Serif Bold");
    EXPECT_EQ(table[1].Name().str(), L"Serif Bold (2)");
    EXPECT_FALSE(table[0].DrawForward());
    EXPECT_TRUE(table[1].DrawForward());

    // An override remembers its table style and takes what the text needs.
    const GK_DimStyle text = GK_DimStyle::CreateFromProperties(
        table[1], GK_DimStyle::annotation_text, nullptr, 0.5, 3.5, VmLengthUnit::Inches,
        GK_DimStyle::valign_bottom, GK_DimStyle::halign_left);
    EXPECT_EQ(text.ParentIndex(), 1);
    EXPECT_EQ(&text.Font(), bold);
    EXPECT_EQ(text.TextHeight(), 3.5);
    EXPECT_EQ(text.ModelViewTextScale(), 0.5);
    EXPECT_EQ(text.UnitSystem(), VmLengthUnit::Inches);

    GK_DimStyle invalid = table.GetDefaultDimStyleProperties();
    invalid.SetDimScale(0.0);
    EXPECT_EQ(table.AddDimStyle(invalid), -1);
}

// Text objects are refused rather than stored without a size or a frame, so no report of the
// document ever holds an undefined number.
TEST(HostText, TextObjectsNeedTextAFrameAndAHeight) {
    CVelmoDoc doc;
    const GK_Plane turned({1, 2, 0}, GK_3dVector(0, 2, 0), GK_3dVector(-3, 0, 0));
    CVelmoObjectAttributes attributes;
    GK_DimStyle style;
    style.SetTextHeight(2.0);
    const CVelmoTextObject* text =
        doc.AddTextObject(L"Ab", turned, GK_3dPoint(5, 5, 0), style, attributes);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->Text().Plane().origin, GK_3dPoint(5, 5, 0));
    EXPECT_EQ(text->Text().Plane().xaxis, GK_3dVector(0, 1, 0));
    const GK_BoundingBox box = text->Text().BoundingBox(); // two characters of 0.6 × 2 along y
    EXPECT_EQ(box.m_min, GK_3dPoint(3, 5, 0));
    EXPECT_EQ(box.m_max, GK_3dPoint(5, 7.4, 0));

    GK_Text moved = text->Text();
    ASSERT_TRUE(moved.Scale(3.0));
    EXPECT_EQ(moved.Height(), 6.0);
    EXPECT_EQ(moved.Plane().origin, GK_3dPoint(15, 15, 0));

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const GK_Plane flat({0, 0, 0}, GK_3dVector(1, 0, 0), GK_3dVector(2, 0, 0));
    EXPECT_EQ(doc.AddTextObject(L"x", flat, {}, style, attributes), nullptr);
    EXPECT_EQ(doc.AddTextObject(L"", turned, {}, style, attributes), nullptr);
    for (double height : {0.0, -1.0, nan, std::numeric_limits<double>::infinity()}) {
        style.SetTextHeight(height);
        EXPECT_EQ(doc.AddTextObject(L"x", turned, {}, style, attributes), nullptr);
    }
    style.SetTextHeight(1.0);
    attributes.m_layer_index = 7;
    EXPECT_EQ(doc.AddTextObject(L"x", turned, {}, style, attributes), nullptr);
    EXPECT_EQ(doc.ObjectCount(), 1);
}

TEST(HostText, UnitsAndFontFamilies) {
    CVelmoDoc doc;
    doc.SetModelUnits(VmLengthUnit::Inches);
    doc.SetPageUnits(VmLengthUnit::Points);
    EXPECT_EQ(doc.UnitSystem(), VmLengthUnit::Inches);
    EXPECT_DOUBLE_EQ(doc.ModelUnits().MetersPerUnit(GK_UNSET_VALUE) /
                         doc.PageUnits().MetersPerUnit(GK_UNSET_VALUE),
                     72.0);
    EXPECT_EQ(GK_UnitSystem(static_cast<VmLengthUnit>(99)).MetersPerUnit(GK_UNSET_VALUE),
              GK_UNSET_VALUE);

    // The machine's families: sorted, each once, whatever fonts it has.
    VmSetFontFamilies(std::nullopt);
    const int requests = VmFontFamilyRequests();
    const std::vector<std::wstring> installed = VmInstalledFontFamilies();
    EXPECT_TRUE(std::is_sorted(installed.begin(), installed.end(), [](auto& a, auto& b) {
        return VmUtf8FromWide(a) < VmUtf8FromWide(b);
    }));
    EXPECT_EQ(std::adjacent_find(installed.begin(), installed.end()), installed.end());
    EXPECT_EQ(VmInstalledFontFamilies(), installed);
    // A fixed list comes back as it was given, duplicates and all.
    const std::vector<std::wstring> fixed{L"Zeta", L"Alpha", L"Zeta"};
    VmSetFontFamilies(fixed);
    EXPECT_EQ(VmInstalledFontFamilies(), fixed);
    EXPECT_EQ(VmFontFamilyRequests(), requests + 3);
    tarquil::test::ResetHost();
}

} // namespace
