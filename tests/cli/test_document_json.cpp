#include "cli/DocumentJson.h"
#include "cli/JsonWriter.h"
#include "support/Curves.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>

namespace {

using json = nlohmann::json;
using tarquil::test::Square;

// What `write` makes of a writer, as text: compact unless an indent is given.
template <class Write> std::string JsonOf(Write&& write, int indent = -1) {
    std::ostringstream text;
    JsonWriter writer(text, indent);
    write(writer);
    EXPECT_TRUE(writer.Finish());
    return text.str();
}

std::string DocumentText(const CVelmoDoc& doc, int result = 1,
                         const std::vector<VmMessage>& messages = {}, int indent = -1) {
    return JsonOf([&](JsonWriter& w) { WriteDocumentJson(w, doc, result, messages); }, indent);
}

TEST(JsonWriter, IndentedLayoutAndCompactFormMatchTheLibrary) {
    const auto write = [](JsonWriter& w) {
        w.BeginObject();
        w.Key("plain").BeginArray().Integer(1).Number(2.5).Null().EndArray();
        w.Key("nested").BeginArray();
        w.BeginArray().Number(1).Number(-0.0).EndArray().BeginArray().EndArray();
        w.EndArray();
        w.Key("mixed").BeginArray().Bool(true).BeginObject().EndObject().EndArray();
        w.Key("empty").BeginObject().EndObject();
        w.Key("objects").BeginArray().BeginObject().Key("x").String("a\"\n\xff").EndObject();
        w.EndArray();
        w.EndObject();
    };
    // A list of plain values stays on one line; anything holding a structure goes one entry
    // a line, including the plain values before the structure.
    const std::string indented = JsonOf(write, 2);
    EXPECT_EQ(indented, R"({
  "plain": [1, 2.5, null],
  "nested": [
    [1.0, -0.0],
    []
  ],
  "mixed": [
    true,
    {}
  ],
  "empty": {},
  "objects": [
    {
      "x": "a\"\n)"
                        "\xef\xbf\xbd"
                        R"("
    }
  ]
}
)");
    const std::string compact = JsonOf(write);
    EXPECT_EQ(compact, nlohmann::ordered_json::parse(indented).dump() + "\n");
    EXPECT_EQ(compact.find_first_of(" \n"), compact.size() - 1);

    // Numbers are the library's own shortest round-trip form; what is not finite is null.
    std::mt19937_64 random(7);
    std::vector<double> values = {0.1 + 0.2,
                                  1e21,
                                  1e-7,
                                  123456789012345680.0,
                                  -0.0,
                                  5e-324,
                                  std::numeric_limits<double>::infinity(),
                                  NAN};
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t bits = random();
        double v;
        std::memcpy(&v, &bits, sizeof v);
        values.push_back(v);
        values.push_back(std::ldexp(static_cast<double>(bits >> 11), -40));
    }
    const std::string numbers = JsonOf([&](JsonWriter& w) {
        w.BeginArray();
        for (double v : values)
            w.Number(v);
        w.EndArray();
    });
    EXPECT_EQ(numbers, json(values).dump() + "\n");
}

CVelmoCurveObject* CurveObject(GK_Curve* curve, const CVelmoObjectAttributes& attributes) {
    auto* object = new CVelmoCurveObject(attributes);
    object->SetCurve(curve);
    return object;
}

// Layers Default, Parent, Parent::Child; a rational arc with its own attributes, a chain
// of line, polyline and Bezier, and a reference line on the hidden child layer.
struct SampleDocument {
    CVelmoDoc doc;
    const double w = std::sqrt(0.5);

    SampleDocument() {
        CVelmoLayerTable& layers = doc.LayerTable();
        GK_Layer parent, child;
        parent.SetName(L"Parent");
        parent.SetColor(GK_Color(10, 20, 30));
        parent.SetLocked(true);
        layers.SetCurrentLayerIndex(layers.AddLayer(parent));
        child.SetName(L"\u00c9bauche \u2713");
        child.SetParentId(layers[1].Id());
        child.SetVisible(false);
        child.SetLinetypeIndex(0);
        layers.AddLayer(child);
        GK_Linetype dashed;
        dashed.SetName(L"Dashed");
        dashed.AppendSegment({2.5, GK_LinetypeSegment::stLine});
        dashed.AppendSegment({1.25, GK_LinetypeSegment::stSpace});
        doc.LinetypeTable().AddLinetype(dashed);

        auto* arc = new GK_NurbsCurve(3, true, 3, 3);
        arc->SetCV(0, GK_4dPoint{1, 0, 0, 1});
        arc->SetCV(1, GK_4dPoint{w, w, 0, w}); // homogeneous: (1, 1) with weight w
        arc->SetCV(2, GK_4dPoint{0, 1, 0, 1});
        arc->MakeClampedUniformKnotVector();
        CVelmoObjectAttributes own;
        own.m_layer_index = 1;
        own.m_color = GK_Color(255, 0, 0);
        own.SetColorSource(GK_3dmObjectAttributes::color_from_object);
        own.m_linetype_index = 0;
        own.m_plot_weight_mm = 0.35;
        own.SetPlotWeightSource(GK_3dmObjectAttributes::plot_weight_from_object);
        EXPECT_TRUE(doc.AddObject(CurveObject(arc, own)));

        auto* chain = new GK_PolyCurve;
        chain->Append(new GK_LineCurve({0, 0, 0}, {1, 0, 0}));
        GK_SimpleArray<GK_3dPoint> points;
        points.Append({1, 0, 0});
        points.Append({1, 0.1 + 0.2, 0}); // needs all 17 digits to come back
        chain->Append(new GK_PolylineCurve(points));
        auto* bezier = new GK_NurbsCurve(3, false, 4, 4);
        for (int i = 0; i < 4; ++i)
            bezier->SetCV(i, GK_3dPoint(1 + i, i % 2, 0));
        bezier->MakeClampedUniformKnotVector();
        chain->Append(bezier);
        CVelmoObjectAttributes onParent;
        onParent.m_layer_index = 1;
        EXPECT_TRUE(doc.AddObject(CurveObject(chain, onParent)));
        CVelmoObjectAttributes onChild;
        onChild.m_layer_index = 2;
        EXPECT_TRUE(doc.AddObject(CurveObject(new GK_LineCurve({0, 0, 5}, {0, 3, 5}), onChild),
                                  /*referenceObject=*/true));

        doc.SetModelUnits(VmLengthUnit::Inches);
        std::vector<CVelmoView*> views;
        doc.GetViewList(views, 0);
        VelmoDollyExtents(views[0], true);
        VelmoDollyExtents(views[2], true);
        doc.Redraw();
    }
};

TEST(DocumentJson, LayersLinetypesAndViews) {
    SampleDocument sample;
    // Through the text form, as a reader gets it.
    const json j = json::parse(DocumentText(sample.doc));
    EXPECT_EQ(j["result"], 1);
    EXPECT_EQ(j["modelUnits"], "inches");
    EXPECT_EQ(j["absoluteTolerance"], 0.001);
    EXPECT_EQ(j["currentLayer"], 1);
    ASSERT_EQ(j["layers"].size(), 3u);
    const std::string parentId = sample.doc.LayerTable()[1].Id().ToString();
    EXPECT_EQ(j["layers"][1], json({{"index", 1},
                                    {"id", parentId},
                                    {"name", "Parent"},
                                    {"fullPath", "Parent"},
                                    {"parentId", nullptr},
                                    {"visible", true},
                                    {"locked", true},
                                    {"color", {10, 20, 30}},
                                    {"linetype", nullptr},
                                    {"plotWeight", 0.0},
                                    {"reference", false}}));
    // UTF-8 text; the child names its parent by id and by path.
    const json& child = j["layers"][2];
    EXPECT_EQ(child["name"], "\xc3\x89"
                             "bauche \xe2\x9c\x93");
    EXPECT_EQ(child["fullPath"], "Parent::\xc3\x89"
                                 "bauche \xe2\x9c\x93");
    EXPECT_EQ(child["parentId"], parentId);
    EXPECT_EQ(child["id"], sample.doc.LayerTable()[2].Id().ToString());
    EXPECT_EQ(child["visible"], false);
    EXPECT_EQ(child["linetype"], 0);

    EXPECT_EQ(j["linetypes"], json::parse(R"([{"index": 0, "name": "Dashed", "segments": [
        {"length": 2.5, "type": "line"}, {"length": 1.25, "type": "space"}]}])"));
    EXPECT_EQ(j["views"], json::parse(R"({"count": 4, "fits": 2, "redraws": 1, "list": [
        {"name": "Top", "fits": 1}, {"name": "Front", "fits": 0},
        {"name": "Right", "fits": 1}, {"name": "Perspective", "fits": 0}]})"));
}

TEST(DocumentJson, ObjectsAndCurves) {
    SampleDocument sample;
    const std::string text = DocumentText(sample.doc, 1, {}, 2);
    const json objects = json::parse(text)["objects"];
    ASSERT_EQ(objects.size(), 3u);

    // Control points in Euclidean form; the weights apart.
    json arc = objects[0];
    const double w = arc["curve"]["weights"][1].get<double>();
    EXPECT_DOUBLE_EQ(w, sample.w);
    EXPECT_DOUBLE_EQ(arc["curve"]["points"][1][0].get<double>(), 1.0);
    arc["curve"]["weights"][1] = arc["curve"]["points"][1][0] = arc["curve"]["points"][1][1] = 0;
    EXPECT_EQ(arc, json::parse(R"({"kind": "curve", "layer": 1, "color": [255, 0, 0],
        "colorSource": "object", "linetype": 0, "linetypeSource": "layer", "plotWeight": 0.35,
        "plotWeightSource": "object", "reference": false, "curve": {"type": "nurbs",
        "points": [[1, 0, 0], [0, 0, 0], [0, 1, 0]], "weights": [1, 0, 1], "order": 3,
        "degree": 2, "rational": true, "knots": [0, 0, 1, 1]}})"));

    // A chain lists segments instead of points; every number comes back exactly.
    EXPECT_EQ(objects[1]["colorSource"], "layer");
    EXPECT_TRUE(objects[1]["linetype"].is_null());
    EXPECT_EQ(objects[1]["curve"], json::parse(R"({"type": "polycurve", "segments": [
        {"type": "line", "points": [[0, 0, 0], [1, 0, 0]]},
        {"type": "polyline", "points": [[1, 0, 0], [1, 0.30000000000000004, 0]]},
        {"type": "nurbs", "points": [[1, 0, 0], [2, 1, 0], [3, 0, 0], [4, 1, 0]], "order": 4,
         "degree": 3, "rational": false, "knots": [0, 0, 0, 1, 1, 1]}]})"));
    EXPECT_EQ(objects[2]["reference"], true);
    EXPECT_EQ(objects[2]["layer"], 2);

    // Plain lists stay on one line in the text.
    EXPECT_NE(text.find("\"knots\": [0.0, 0.0, 1.0, 1.0]"), std::string::npos) << text;
    // A point that could not be computed is null rather than a broken file.
    const GK_LineCurve broken({std::numeric_limits<double>::quiet_NaN(), 0, 0}, {1, 1, 1});
    EXPECT_TRUE(
        json::parse(JsonOf([&](JsonWriter& w) { WriteCurveJson(w, broken); }))["points"][0][0]
            .is_null());
}

// A text names its table style and its own font and height; the table comes before the
// objects that refer to it.
TEST(DocumentJson, TextObjectsAndTheirStyles) {
    CVelmoDoc doc;
    const GK_Font* font = GK_Font::GetManagedFont(L"Times New Roman", false, true);
    const int index = doc.DimStyleTable().FindDimStyleFromFont(font, 1.0, nullptr, true);
    const GK_DimStyle style = GK_DimStyle::CreateFromProperties(
        doc.DimStyleTable()[index], GK_DimStyle::annotation_text, nullptr, 1.0, 2.5,
        VmLengthUnit::Millimeters, GK_DimStyle::valign_bottom, GK_DimStyle::halign_left);
    CVelmoObjectAttributes attributes;
    attributes.m_color = GK_Color(0, 0, 255);
    attributes.SetColorSource(GK_3dmObjectAttributes::color_from_object);
    const GK_Plane mirrored({1, 2, 0}, GK_3dVector(-1, 0, 0), GK_3dVector(0, 1, 0));
    ASSERT_NE(
        doc.AddTextObject(L"\u00c9t\u00e9 \U0001F600", mirrored, {1, 2, 0}, style, attributes),
        nullptr);

    const std::string text = DocumentText(doc);
    EXPECT_LT(text.find("\"hatchPatterns\""), text.find("\"dimStyles\""));
    EXPECT_LT(text.find("\"dimStyles\""), text.find("\"objects\""));
    const json j = json::parse(text);
    EXPECT_EQ(j["dimStyles"], json::parse(R"([{"index": 0, "name": "Times New Roman Italic",
        "font": {"family": "Times New Roman", "bold": false, "italic": true},
        "textHeight": 1.0, "dimScale": 1.0, "drawForward": true}])"));
    EXPECT_EQ(j["objects"][0], json::parse(R"({"kind": "text", "layer": 0, "color": [0, 0, 255],
        "colorSource": "object", "linetype": null, "linetypeSource": "layer", "plotWeight": 0.0,
        "plotWeightSource": "layer", "reference": false, "text": "\u00c9t\u00e9 \ud83d\ude00",
        "plane": {"origin": [1, 2, 0], "xaxis": [-1, 0, 0], "yaxis": [0, 1, 0]},
        "height": 2.5, "dimStyle": 0,
        "font": {"family": "Times New Roman", "bold": false, "italic": true}})"));
}

TEST(DocumentJson, HatchesWithTheirLoops) {
    CVelmoDoc doc;
    int solid = -1;
    ASSERT_TRUE(doc.HatchPatternTable().AddHatchPattern(&doc.SolidHatchPattern(), false, &solid));
    auto* hatch = new GK_Hatch;
    hatch->AddLoop(new GK_HatchLoop(Square(0, 0, 4), GK_HatchLoop::ltOuter));
    hatch->AddLoop(new GK_HatchLoop(Square(1, 1, 2), GK_HatchLoop::ltInner));
    hatch->SetPatternIndex(solid);
    CVelmoObjectAttributes attributes;
    attributes.m_color = GK_Color(0, 128, 255);
    attributes.SetColorSource(GK_3dmObjectAttributes::color_from_object);
    auto* object = new CVelmoHatch(attributes);
    object->SetHatch(hatch);
    ASSERT_TRUE(doc.AddObject(object));
    // A hatch object without its hatch is refused by the document, but must not break
    // the writer either.
    const CVelmoHatch empty;
    EXPECT_EQ(json::parse(JsonOf([&](JsonWriter& w) { WriteObjectJson(w, empty); }))["loops"],
              nullptr);

    const json j = json::parse(DocumentText(doc));
    EXPECT_EQ(j["hatchPatterns"],
              json::parse(R"([{"index": 0, "name": "Solid", "fill": "solid"}])"))
        << j["hatchPatterns"];
    ASSERT_EQ(j["objects"].size(), 1u);
    EXPECT_EQ(j["objects"][0], json::parse(R"({"kind": "hatch", "layer": 0, "color": [0, 128, 255],
        "colorSource": "object", "linetype": null, "linetypeSource": "layer", "plotWeight": 0,
        "plotWeightSource": "layer", "reference": false, "pattern": 0, "loops": [
        {"type": "outer", "curve": {"type": "polyline",
         "points": [[0, 0, 0], [4, 0, 0], [4, 4, 0], [0, 4, 0], [0, 0, 0]]}},
        {"type": "inner", "curve": {"type": "polyline",
         "points": [[1, 1, 0], [3, 1, 0], [3, 3, 0], [1, 3, 0], [1, 1, 0]]}}]})"));
}

TEST(DocumentJson, MessagesInOrder) {
    const std::vector<VmMessage> messages = {
        {"box", L"PDF File Read Error", L"Error opening \u00e9t\u00e9.pdf", 48},
        {"print", L"", L"Imported 3 curves\n", 0},
        {"warning", L"", L"Options will be used without asking.", 0},
        {"prompt", L"", L"Choose AI option: ", 0}};
    EXPECT_EQ(json::parse(DocumentText(CVelmoDoc(), 0, messages))["messages"],
              json::parse(R"([{"kind": "box", "title": "PDF File Read Error",
                               "text": "Error opening \u00e9t\u00e9.pdf", "flags": 48},
                              {"kind": "print", "text": "Imported 3 curves\n"},
                              {"kind": "warning", "text": "Options will be used without asking."},
                              {"kind": "prompt", "text": "Choose AI option: "}])"));
}

} // namespace
