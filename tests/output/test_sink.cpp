#include "graphics/PDFImage.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "host/geometry/GK_Curve.h"
#include "output/PDFToVelmo.h"
#include "pdf/xref/PDFDocument.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

class SinkTest : public ::testing::Test {
protected:
    void SetUp() override { tarquil::test::ResetHost(); }

    int LayerNamed(const wchar_t* fullPath) const {
        return doc.LayerTable().FindLayerFromFullPathName(fullPath, -1);
    }
    void AddLine(PDFToVelmo& sink, GK_3dPoint from, GK_3dPoint to, std::uint32_t colour = 0,
                 double width = 0.0, std::int32_t layer = 0, std::vector<double> dash = {}) {
        sink.pendingObjects.push_back(
            PendingObject{new GK_LineCurve(from, to), colour, width, layer, std::move(dash)});
    }

    CVelmoDoc doc;
    CVelmoFileReadOptions options;
};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST_F(SinkTest, OptionalContentBuildsTheLayerTreeTopDown) {
    GK_Layer existing;
    doc.LayerTable().GetDefaultLayerProperties(existing);
    existing.SetName(L"B");
    const int existingB = doc.LayerTable().AddLayer(existing);

    std::map<std::string, OptionalContentGroup> groups;
    groups["A"] = {"", true};
    groups["B"] = {"", false};
    groups["A1"] = {"A", false};
    groups["A1x"] = {"A1", true};
    groups["Orphan"] = {"Missing", true};
    groups["\xE9t\xE9"] = {"", true};
    // Deeper levels sort first, so each pass reaches one level further: 15 below the top.
    const auto name = [](int n) { return std::string("n").append(std::to_string(n)); };
    for (int level = 0; level <= 16; ++level)
        groups[name(99 - level)] = {level == 0 ? "" : name(100 - level), true};

    PDFToVelmo sink(&doc, &options);
    sink.OptionalContentLoaded(groups);
    const CVelmoLayerTable& table = doc.LayerTable();

    EXPECT_EQ(LayerNamed(L"B"), existingB); // a taken top-level name reuses that layer
    EXPECT_EQ(sink.layerIndexByName.at("B"), existingB);
    ASSERT_GE(LayerNamed(L"A::A1::A1x"), 0);
    EXPECT_FALSE(table[LayerNamed(L"A::A1")].IsVisible());
    EXPECT_TRUE(table[LayerNamed(L"A::A1::A1x")].IsVisible());
    EXPECT_EQ(table[LayerNamed(L"A::A1")].ParentId(), table[LayerNamed(L"A")].Id());
    EXPECT_EQ(sink.layerIndexByName.at("A1x"), LayerNamed(L"A::A1::A1x"));
    EXPECT_FALSE(sink.layerIndexByName.contains("Orphan"));
    EXPECT_GE(LayerNamed(L"\xFFE9t\xFFE9"), 0); // bytes widened with their sign

    std::wstring path = L"n99";
    for (int level = 1; level <= 15; ++level)
        path += L"::n" + std::to_wstring(99 - level);
    EXPECT_GE(LayerNamed(path.c_str()), 0);
    EXPECT_FALSE(sink.layerIndexByName.contains("n83")); // the 16th level is out of reach

    // The first top-level group by name becomes current again; the sink's own index is kept.
    EXPECT_EQ(table.CurrentLayerIndex(), LayerNamed(L"A"));
    EXPECT_EQ(sink.layerIndex, 0);
    EXPECT_EQ(sink.layerColours.size(), sink.layerIndexByName.size());
}

TEST_F(SinkTest, MarkedNamesMakeLayersThatTakeTheLastColour) {
    GK_Layer taken;
    doc.LayerTable().GetDefaultLayerProperties(taken);
    taken.SetName(L"Taken");
    doc.LayerTable().AddLayer(taken);

    PDFToVelmo sink(&doc, &options);
    sink.SetColour(0, 0.0, 1.0, 0.0); // on the default layer, which this read did not make
    EXPECT_TRUE(sink.layerColours.empty());

    sink.SetOptionalContentName("Walls");
    const int walls = LayerNamed(L"Walls");
    ASSERT_GE(walls, 0);
    EXPECT_EQ(sink.layerIndex, walls);
    EXPECT_EQ(sink.optionalContentName, "Walls");
    sink.SetColour(1, 1.0, 0.0, 0.0);
    sink.SetColour(0, 0.0, 0.0, 1.0);

    sink.SetOptionalContentName("Taken"); // AddLayer refuses: the index is what it gave
    EXPECT_EQ(sink.layerIndex, -1);
    const int layerCount = doc.LayerTable().LayerCount();
    sink.SetOptionalContentName("Walls");
    EXPECT_EQ(sink.layerIndex, walls);
    EXPECT_EQ(doc.LayerTable().LayerCount(), layerCount);

    EXPECT_EQ(sink.layerColours.at(walls), GK_Color(0, 0, 255).Packed());
    EXPECT_EQ(doc.LayerTable()[walls].Color(), GK_Color()); // not before the finishing pass
    sink.CommitToDocument(1.0, {}, false, false, false, false);
    EXPECT_EQ(doc.LayerTable()[walls].Color(), GK_Color(0, 0, 255));
    EXPECT_EQ(doc.LayerTable()[0].Color(), GK_Color());
}

TEST_F(SinkTest, LinetypesAreNamedByTheirLengthsAndReused) {
    PDFToVelmo sink(&doc, &options);
    const CVelmoLinetypeTable& table = doc.LinetypeTable();

    const int dashed = sink.FindOrAddLinetype({3.0, 1.5});
    ASSERT_GE(dashed, 0);
    EXPECT_EQ(table[dashed].Name().str(), L"3 1.5");
    ASSERT_EQ(table[dashed].SegmentCount(), 2);
    EXPECT_EQ(table[dashed].Segment(0).m_seg_type, GK_LinetypeSegment::stLine);
    EXPECT_DOUBLE_EQ(table[dashed].Segment(0).m_length, 3.0);
    EXPECT_EQ(table[dashed].Segment(1).m_seg_type, GK_LinetypeSegment::stSpace);
    EXPECT_DOUBLE_EQ(table[dashed].Segment(1).m_length, 1.5);
    EXPECT_EQ(sink.FindOrAddLinetype({3.0, 1.5}), dashed);

    const int dashDot = sink.FindOrAddLinetype({4.0, 1.0, 0.5, 1.0});
    EXPECT_EQ(table[dashDot].Name().str(), L"4 1 0.5 1");
    EXPECT_EQ(table[dashDot].SegmentCount(), 4);
    // Any other count is named by four values, the missing ones 0.
    EXPECT_EQ(table[sink.FindOrAddLinetype({2.0})].Name().str(), L"2 0 0 0");
    EXPECT_EQ(table.LinetypeCount(), 3);
}

TEST_F(SinkTest, PendingExtentsDropInvalidGeometryAndDiscardEmptiesAll) {
    PDFToVelmo sink(&doc, &options);
    double minX = 0, minY = 0, maxX = 0, maxY = 0;
    sink.GetPendingExtents(minX, minY, maxX, maxY);
    EXPECT_GT(minX, maxX); // nothing pending: the empty box

    AddLine(sink, {0, 0, 0}, {10, 5, 0});
    AddLine(sink, {kNaN, 0, 0}, {500, 500, 0});
    sink.pendingObjects.push_back(PendingObject{});
    AddLine(sink, {-2, 3, 0}, {1, 20, 0});
    sink.GetPendingExtents(minX, minY, maxX, maxY);
    EXPECT_DOUBLE_EQ(minX, -2.0);
    EXPECT_DOUBLE_EQ(minY, 0.0);
    EXPECT_DOUBLE_EQ(maxX, 10.0);
    EXPECT_DOUBLE_EQ(maxY, 20.0);
    EXPECT_EQ(sink.pendingObjects[1].geometry, nullptr);
    EXPECT_NE(sink.pendingObjects[3].geometry, nullptr);

    sink.DiscardPendingObjects();
    for (const PendingObject& pending : sink.pendingObjects)
        EXPECT_EQ(pending.geometry, nullptr);
    sink.CommitToDocument(1.0, {}, true, false, true, false);
    EXPECT_EQ(doc.ObjectCount(), 0);
}

TEST_F(SinkTest, CommitPlacesCurvesWithTheirAttributes) {
    GK_Layer layer;
    doc.LayerTable().GetDefaultLayerProperties(layer);
    layer.SetName(L"Second");
    const int second = doc.LayerTable().AddLayer(layer);
    options.SetMode(CVelmoFileReadOptions::ReferenceObjectsFlag, true);

    PDFToVelmo sink(&doc, &options);
    const std::uint32_t red = GK_Color(255, 0, 0).Packed();
    AddLine(sink, {1, 2, 0}, {3, 4, 0}, red, 2.0, second, {3.0, 1.0});
    AddLine(sink, {kNaN, 0, 0}, {1, 1, 0});
    AddLine(sink, {0, 0, 0}, {1, 0, 0}, 0, 0.0, 0);
    sink.CommitToDocument(2.0, {10, 20, 5}, false, false, true, false);

    ASSERT_EQ(doc.ObjectCount(), 2); // the invalid one is dropped
    for (const PendingObject& pending : sink.pendingObjects)
        EXPECT_EQ(pending.geometry, nullptr);
    EXPECT_EQ(doc.RedrawCount(), 1);

    const auto& dashed = dynamic_cast<const CVelmoCurveObject&>(doc.Object(0));
    const auto* line = dynamic_cast<const GK_LineCurve*>(dashed.Curve());
    ASSERT_NE(line, nullptr);
    // Translated in page units, then scaled about the origin.
    EXPECT_EQ(line->m_line.from, GK_3dPoint(22, 44, 10));
    EXPECT_EQ(line->m_line.to, GK_3dPoint(26, 48, 10));
    EXPECT_TRUE(dashed.IsReference());
    const CVelmoObjectAttributes& a = dashed.Attributes();
    EXPECT_EQ(a.m_color.Packed(), red);
    EXPECT_EQ(a.m_color_source, GK_3dmObjectAttributes::color_from_object);
    EXPECT_EQ(a.m_layer_index, second);
    EXPECT_EQ(a.m_linetype_source, GK_3dmObjectAttributes::linetype_from_object);
    EXPECT_EQ(doc.LinetypeTable()[a.m_linetype_index].Name().str(), L"6 2"); // scaled dash
    EXPECT_DOUBLE_EQ(a.m_plot_weight_mm, 2.0 * 25.4 / 72.0);                 // not scaled
    EXPECT_EQ(a.m_plot_weight_source, GK_3dmObjectAttributes::plot_weight_from_object);

    const CVelmoObjectAttributes& plain = doc.Object(1).Attributes();
    EXPECT_EQ(plain.m_linetype_index, -1);
    EXPECT_EQ(plain.m_linetype_source, GK_3dmObjectAttributes::linetype_from_layer);

    // Without line weights the defaults stay.
    PDFToVelmo again(&doc, &options);
    AddLine(again, {0, 0, 0}, {1, 1, 0}, 0, 4.0, 0);
    again.CommitToDocument(1.0, {}, false, false, false, false);
    ASSERT_EQ(doc.ObjectCount(), 3);
    EXPECT_EQ(doc.Object(2).Attributes().m_plot_weight_mm, 0.0);
    EXPECT_EQ(doc.Object(2).Attributes().m_plot_weight_source,
              GK_3dmObjectAttributes::plot_weight_from_layer);
}

class FillCounter : public PDFToVelmo {
public:
    using PDFToVelmo::PDFToVelmo;
    void Fill() override { ++fills; }
    int fills = 0;
};

TEST_F(SinkTest, SetupSharesTheSolidPatternAndKeepsImagesAndFills) {
    FillCounter sink(&doc, &options);
    EXPECT_EQ(sink.layerIndex, doc.LayerTable().CurrentLayerIndex());
    ASSERT_GE(sink.hatchPatternIndex, 0);
    EXPECT_EQ(doc.HatchPatternTable()[sink.hatchPatternIndex].FillType(),
              GK_HatchPattern::HatchFillType::Solid);
    PDFToVelmo second(&doc, &options);
    EXPECT_EQ(second.hatchPatternIndex, sink.hatchPatternIndex);
    EXPECT_EQ(doc.HatchPatternTable().HatchPatternCount(), 1);

    sink.EoFill();
    EXPECT_EQ(sink.fills, 1);

    auto* image = new PDFImage;
    sink.DrawImage(image);
    ASSERT_EQ(sink.images.size(), 1u);
    EXPECT_EQ(sink.images[0], image);
    delete image; // the image pass that releases it is not built yet
}

} // namespace
