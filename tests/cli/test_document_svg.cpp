#include "cli/DocumentJson.h"
#include "cli/DocumentSvg.h"
#include "cli/JsonWriter.h"
#include "cli/SvgPathData.h"

#include "host/doc/CVelmoDoc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <locale>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Just enough of an XML reader to hold the writer to well-formedness: matching tags, quoted
// attributes, and '<' or '&' only where they belong.
struct Element {
    std::string name, attributes;
    int parent = -1;
    std::string Attr(const std::string& key) const {
        std::smatch m;
        const std::regex re("(?:^|\\s)" + key + "=\"([^\"]*)\"");
        return std::regex_search(attributes, m, re) ? m[1].str() : std::string("<none>");
    }
};

std::vector<Element> ParseXml(const std::string& xml) {
    static const std::regex tag(R"(<(/?)([A-Za-z][\w:-]*)((?:\s+[\w:-]+="[^"<]*")*)\s*(/?)>)");
    static const std::regex text(R"(^([^<&]|&(amp|lt|gt|quot|apos);)*$)");
    static const std::regex entities(R"(^([^&]|&(amp|lt|gt|quot|apos);)*$)");
    EXPECT_EQ(xml.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", 0), 0u);
    std::vector<Element> elements;
    std::vector<int> open;
    std::size_t at = xml.find("?>") + 2;
    for (std::sregex_iterator it(xml.begin() + at, xml.end(), tag), end; it != end; ++it) {
        const std::smatch& m = *it;
        const std::string between = xml.substr(at, (m[0].first - xml.begin()) - at);
        EXPECT_TRUE(std::regex_match(between, text)) << between;
        at = m[0].second - xml.begin();
        EXPECT_TRUE(std::regex_match(m[3].str(), entities)) << m[3];
        if (m[1] == "/") {
            EXPECT_FALSE(open.empty());
            if (!open.empty() && elements[open.back()].name == m[2])
                open.pop_back();
            else
                ADD_FAILURE() << "unmatched " << m[0];
            continue;
        }
        EXPECT_TRUE(!open.empty() || elements.empty()) << "a second root: " << m[0];
        elements.push_back({m[2], m[3], open.empty() ? -1 : open.back()});
        if (m[4] != "/")
            open.push_back(static_cast<int>(elements.size()) - 1);
    }
    EXPECT_EQ(xml.find_first_not_of(" \n", at), std::string::npos) << "text after the root";
    EXPECT_TRUE(open.empty()) << "unclosed elements";
    return elements;
}

// The numbers of a path or a viewBox, in order.
std::vector<double> Numbers(const std::string& text) {
    static const std::regex number(R"(-?[0-9][0-9.e+-]*)");
    std::vector<double> out;
    for (std::sregex_iterator it(text.begin(), text.end(), number), end; it != end; ++it)
        out.push_back(std::stod(it->str()));
    return out;
}

CVelmoCurveObject* Curve(GK_Curve* curve, int layer, const GK_Color* own = nullptr) {
    CVelmoObjectAttributes attributes;
    attributes.m_layer_index = layer;
    if (own) {
        attributes.m_color = *own;
        attributes.SetColorSource(GK_3dmObjectAttributes::color_from_object);
    }
    auto* object = new CVelmoCurveObject(attributes);
    object->SetCurve(curve);
    return object;
}

int AddLayer(CVelmoDoc& doc, const wchar_t* name, GK_Color color, const GK_UUID& parent = {},
             bool visible = true) {
    GK_Layer layer;
    layer.SetName(name);
    layer.SetColor(color);
    layer.SetParentId(parent);
    layer.SetVisible(visible);
    return doc.LayerTable().AddLayer(layer);
}

std::string Svg(const CVelmoDoc& doc) {
    std::ostringstream out;
    EXPECT_TRUE(WriteDocumentSvg(out, doc));
    return out.str();
}

GK_PolylineCurve* Rectangle(double x0, double y0, double x1, double y1) {
    GK_SimpleArray<GK_3dPoint> points;
    for (const GK_3dPoint& p : {GK_3dPoint(x0, y0, 0), GK_3dPoint(x1, y0, 0), GK_3dPoint(x1, y1, 0),
                                GK_3dPoint(x0, y1, 0), GK_3dPoint(x0, y0, 0)})
        points.Append(p);
    return new GK_PolylineCurve(points);
}

std::vector<const Element*> Paths(const std::vector<Element>& xml) {
    std::vector<const Element*> paths;
    for (const Element& e : xml)
        if (e.name == "path")
            paths.push_back(&e);
    return paths;
}

TEST(DocumentSvg, ObjectsInDocumentOrderNamingTheirLayers) {
    CVelmoDoc doc;
    const int outline = AddLayer(doc, L"Outline", GK_Color(0, 64, 200));
    const int inner = AddLayer(doc, L"Inner", GK_Color(1, 2, 3), doc.LayerTable()[outline].Id());
    const int hidden = AddLayer(doc, L"Hidden", GK_Color(9, 9, 9), {}, false);
    const int under = AddLayer(doc, L"Under", GK_Color(9, 9, 9), doc.LayerTable()[hidden].Id());
    const GK_Color red(255, 0, 0), white(255, 255, 255);
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({0, 0, 0}, {10, 5, 0}), outline)));
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({0, 0, 0}, {0, 5, 0}), inner, &red)));
    // A white fill covers what came before it on any layer, and nothing that comes after.
    auto* fill = new GK_Hatch;
    fill->AddLoop(new GK_HatchLoop(Rectangle(0, 0, 10, 5), GK_HatchLoop::ltOuter));
    CVelmoObjectAttributes own;
    own.m_layer_index = outline;
    own.m_color = white;
    own.SetColorSource(GK_3dmObjectAttributes::color_from_object);
    auto* hatch = new CVelmoHatch(own);
    hatch->SetHatch(fill);
    ASSERT_TRUE(doc.AddObject(hatch));
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({0, 5, 0}, {10, 0, 0}), outline)));
    // Far away, but hidden, also through its parent: they must not stretch the picture.
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({1000, 1000, 0}, {2000, 1000, 0}), hidden)));
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({-900, 0, 0}, {-800, 0, 0}), under)));

    const std::string text = Svg(doc);
    const std::vector<Element> xml = ParseXml(text);
    ASSERT_FALSE(xml.empty());
    EXPECT_EQ(xml[0].name, "svg");
    EXPECT_EQ(xml[0].Attr("xmlns"), "http://www.w3.org/2000/svg");
    // Hidden layers are hidden by a rule on their class, which their children carry as well.
    EXPECT_NE(text.find("<style>.layer-3{display:none}</style>"), std::string::npos) << text;

    const std::vector<const Element*> paths = Paths(xml);
    ASSERT_EQ(paths.size(), 6u);
    // y is negated; the colour is the layer's unless the object has its own.
    EXPECT_EQ(paths[0]->Attr("d"), "M 0 0 L 10 -5");
    EXPECT_EQ(paths[0]->Attr("stroke"), "#0040c8");
    EXPECT_EQ(paths[1]->Attr("d"), "M 0 0 L 0 -5");
    EXPECT_EQ(paths[1]->Attr("stroke"), "#ff0000");
    EXPECT_EQ(paths[2]->Attr("fill"), "#ffffff");
    EXPECT_EQ(paths[3]->Attr("d"), "M 0 -5 L 10 0");
    // Consecutive objects of one layer share a group; each group names its layer, by index
    // and by name, and lists the layers above it in its class.
    std::vector<std::string> classes, names, titles;
    for (const Element* path : paths) {
        const Element& group = xml[path->parent];
        EXPECT_EQ(group.name, "g");
        if (classes.empty() || group.Attr("class") != classes.back()) {
            classes.push_back(group.Attr("class"));
            names.push_back(group.Attr("data-name"));
            titles.push_back(xml[&group - xml.data() + 1].name);
        }
    }
    EXPECT_EQ(classes, (std::vector<std::string>{"layer-1", "layer-1 layer-2", "layer-1", "layer-3",
                                                 "layer-3 layer-4"}));
    EXPECT_EQ(names, (std::vector<std::string>{"Outline", "Inner", "Outline", "Hidden", "Under"}));
    EXPECT_EQ(titles, std::vector<std::string>(5, "title"));
    EXPECT_NE(text.find("<title>Outline::Inner</title>"), std::string::npos);
    EXPECT_EQ(xml[paths[1]->parent].Attr("data-layer"), "2");
    // Strokes are one and a half pixels of the 800-pixel picture, in model units.
    ASSERT_EQ(xml[1].name, "style");
    const std::vector<double> width = Numbers(xml[2].Attr("stroke-width"));
    ASSERT_EQ(width.size(), 1u);
    EXPECT_NEAR(width[0], 1.5 * 10.6 / 800.0, 1e-9);

    // x 0..10 and y 0..5 with a margin; the top edge in picture coordinates is at -5.
    const std::vector<double> box = Numbers(xml[0].Attr("viewBox"));
    ASSERT_EQ(box.size(), 4u);
    const double margin = -box[0];
    EXPECT_TRUE(margin > 0.0 && margin < 1.0) << margin;
    EXPECT_EQ(box, (std::vector<double>{-margin, -5 - margin, 10 + 2 * margin, 5 + 2 * margin}));

    // An empty document gets a default box.
    EXPECT_EQ(Numbers(ParseXml(Svg(CVelmoDoc()))[0].Attr("viewBox")),
              (std::vector<double>{0, -100, 100, 100}));
}

// A picture frame shows its file on the frame's parallelogram, the image's top row along the
// far edge; the path is a URI reference.
TEST(DocumentSvg, PicturesShowTheirFileOnTheFrame) {
    CVelmoDoc doc;
    const GK_Plane skewed({10, 20, 0}, {1, 0, 0}, {0.6, 0.8, 0});
    ASSERT_TRUE(doc.AddObject(
        new CVelmoPictureFrameObject(GK_PictureFrame(skewed, 4, 5), L"/tmp/a b/PDF1_000.png")));
    const std::vector<Element> xml = ParseXml(Svg(doc));
    const auto image =
        std::find_if(xml.begin(), xml.end(), [](const Element& e) { return e.name == "image"; });
    ASSERT_NE(image, xml.end());
    EXPECT_EQ(image->Attr("xlink:href"), "/tmp/a%20b/PDF1_000.png");
    // (0, 0) of the image is the frame's top-left corner, (0, 1) its origin.
    EXPECT_EQ(Numbers(image->Attr("transform").substr(7)),
              (std::vector<double>{4, 0, -3, 4, 13, -24}));
    const std::vector<double> box = Numbers(xml[0].Attr("viewBox"));
    EXPECT_LT(box[0], 10.0);
    EXPECT_GT(box[0] + box[2], 17.0);
}

// Texts stand on their frames, turned or mirrored, in the family, weight and slant of their
// font, sized so that their capitals have the text's height; the viewBox takes them in.
TEST(DocumentSvg, TextsOnTheirFramesInTheirFonts) {
    CVelmoDoc doc;
    CVelmoObjectAttributes attributes;
    attributes.m_color = GK_Color(255, 0, 0);
    attributes.SetColorSource(GK_3dmObjectAttributes::color_from_object);
    GK_DimStyle style;
    style.SetTextHeight(7.0);
    style.SetFont(GK_Font::GetManagedFont(L"DejaVu Sans 'Mono'", true, true));
    const GK_Plane turned({50, 10, 0}, GK_3dVector(0, 1, 0), GK_3dVector(-1, 0, 0));
    ASSERT_NE(doc.AddTextObject(L"Up <&>", turned, {50, 10, 0}, style, attributes), nullptr);
    style.SetFont(GK_Font::Default());
    const GK_Plane mirrored({90, 40, 0}, GK_3dVector(-1, 0, 0), GK_3dVector(0, 1, 0));
    ASSERT_NE(doc.AddTextObject(L"Back", mirrored, {90, 40, 0}, style, attributes), nullptr);

    const std::string svg = Svg(doc);
    const std::vector<Element> xml = ParseXml(svg);
    std::vector<const Element*> texts;
    for (const Element& e : xml)
        if (e.name == "text")
            texts.push_back(&e);
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(Numbers(texts[0]->Attr("transform")), (std::vector<double>{0, -1, 1, 0, 50, -10}));
    EXPECT_EQ(texts[0]->Attr("font-family"), "&apos;DejaVu Sans \\&apos;Mono\\&apos;&apos;");
    EXPECT_EQ(std::stod(texts[0]->Attr("font-size")), 10.0);
    EXPECT_EQ(texts[0]->Attr("font-weight"), "bold");
    EXPECT_EQ(texts[0]->Attr("font-style"), "italic");
    EXPECT_EQ(texts[0]->Attr("fill"), "#ff0000");
    EXPECT_NE(svg.find(">Up &lt;&amp;&gt;</text>"), std::string::npos);
    EXPECT_EQ(Numbers(texts[1]->Attr("transform")), (std::vector<double>{-1, 0, 0, 1, 90, -40}));
    EXPECT_EQ(texts[1]->Attr("font-family"), "&apos;Arial&apos;");
    EXPECT_EQ(texts[1]->Attr("font-weight"), "<none>");
    // The box of the texts: the turned one reaches left from x 50 by its height.
    const std::vector<double> box = Numbers(xml[0].Attr("viewBox"));
    EXPECT_LT(box[0], 43.0);
    EXPECT_GT(box[0] + box[2], 90.0);
}

TEST(DocumentSvg, TextIsEscaped) {
    CVelmoDoc doc;
    const int layer = AddLayer(doc, L"A&B <\"x\"> 'y' \x01 \u00e9", GK_Color());
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({0, 0, 0}, {1, 0, 0}), layer)));
    const std::string svg = Svg(doc);
    ParseXml(svg);
    EXPECT_NE(svg.find("data-name=\"A&amp;B &lt;&quot;x&quot;&gt; &apos;y&apos; \xef\xbf\xbd "
                       "\xc3\xa9\""),
              std::string::npos)
        << svg;
    EXPECT_EQ(XmlEscape(L"a\tb\nc\U0001F600"), "a\tb\nc\xf0\x9f\x98\x80");
    EXPECT_EQ(XmlEscape(std::wstring(1, static_cast<wchar_t>(0xFFFE))), "\xef\xbf\xbd");
}

TEST(DocumentSvg, BezierSpansBecomeCurveCommands) {
    GK_NurbsCurve cubic(3, false, 4, 4), quadratic(3, false, 3, 3);
    const GK_3dPoint c[] = {{0, 0, 0}, {1, 2, 0}, {3, 2, 0}, {4, 0, 0}};
    for (int i = 0; i < 4; ++i)
        cubic.SetCV(i, c[i]);
    for (int i = 0; i < 3; ++i)
        quadratic.SetCV(i, c[i]);
    cubic.MakeClampedUniformKnotVector();
    quadratic.MakeClampedUniformKnotVector();
    EXPECT_EQ(CurvePathData(cubic), "M 0 0 C 1 -2 3 -2 4 0");
    EXPECT_EQ(CurvePathData(quadratic), "M 0 0 Q 1 -2 3 -2");

    // Two cubic spans meeting at a triple knot.
    GK_NurbsCurve twoSpans(3, false, 4, 7);
    const double knots[] = {0, 0, 0, 1, 1, 1, 3, 3, 3};
    for (int i = 0; i < 9; ++i)
        twoSpans.SetKnot(i, knots[i]);
    for (int i = 0; i < 7; ++i)
        twoSpans.SetCV(i, GK_3dPoint(i, i % 2, 0));
    EXPECT_EQ(CurvePathData(twoSpans), "M 0 0 C 1 -1 2 0 3 -1 C 4 0 5 -1 6 0");

    // A chain is one path, closed where it comes back to its start.
    GK_PolyCurve chain;
    chain.Append(new GK_LineCurve({4, 0, 0}, {4, 4, 0}));
    GK_SimpleArray<GK_3dPoint> corner;
    for (const GK_3dPoint& p : {GK_3dPoint(4, 4, 0), GK_3dPoint(0, 4, 0), GK_3dPoint(0, 0, 0)})
        corner.Append(p);
    chain.Append(new GK_PolylineCurve(corner));
    chain.Append(cubic.DuplicateCurve());
    EXPECT_EQ(CurvePathData(chain), "M 4 0 L 4 -4 L 0 -4 L 0 0 C 1 -2 3 -2 4 0 Z");
}

TEST(DocumentSvg, OtherSplinesAreSampledOnTheCurve) {
    // A rational quarter circle: every sample lies on the unit circle.
    GK_NurbsCurve arc(3, true, 3, 3);
    const double w = std::sqrt(0.5);
    arc.SetCV(0, GK_4dPoint{1, 0, 0, 1});
    arc.SetCV(1, GK_4dPoint{w, w, 0, w});
    arc.SetCV(2, GK_4dPoint{0, 1, 0, 1});
    arc.MakeClampedUniformKnotVector();
    const std::string d = CurvePathData(arc);
    EXPECT_EQ(d.find_first_of("CQZ"), std::string::npos);
    const std::vector<double> xy = Numbers(d);
    ASSERT_GE(xy.size(), 32u);
    for (std::size_t i = 0; i + 1 < xy.size(); i += 2)
        EXPECT_NEAR(std::hypot(xy[i], xy[i + 1]), 1.0, 1e-12);
    EXPECT_EQ(xy.front(), 1.0);
    EXPECT_EQ(xy.back(), -1.0);

    // Uniform knots are not Bezier spans: sampled, hitting the inner knot exactly.
    GK_NurbsCurve spline(3, false, 4, 5);
    for (int i = 0; i < 5; ++i)
        spline.SetCV(i, GK_3dPoint(i, i * i, 0));
    spline.MakeClampedUniformKnotVector();
    const std::string sd = CurvePathData(spline);
    EXPECT_EQ(sd.find('C'), std::string::npos);
    const GK_3dPoint k = spline.PointAt(1.0);
    const std::vector<double> s = Numbers(sd);
    bool hitKnot = false;
    for (std::size_t i = 0; i + 1 < s.size(); i += 2)
        hitKnot = hitKnot || (s[i] == k.x && s[i + 1] == -k.y);
    EXPECT_TRUE(hitKnot) << sd;
    EXPECT_EQ(std::vector<double>(s.end() - 2, s.end()), (std::vector<double>{4, -16}));
}

TEST(DocumentSvg, HatchesAreFilledWithTheirHoles) {
    CVelmoDoc doc;
    const int walls = AddLayer(doc, L"Walls", GK_Color(90, 90, 90));
    // Two rooms in one wall outline; the second hole starts where the first one ended, and
    // must still be a subpath of its own.
    auto* hatch = new GK_Hatch;
    hatch->AddLoop(new GK_HatchLoop(Rectangle(0, 0, 20, 10), GK_HatchLoop::ltOuter));
    hatch->AddLoop(new GK_HatchLoop(Rectangle(1, 1, 9, 9), GK_HatchLoop::ltInner));
    hatch->AddLoop(new GK_HatchLoop(Rectangle(1, 1, 19, 9), GK_HatchLoop::ltInner));
    CVelmoObjectAttributes attributes;
    attributes.m_layer_index = walls;
    auto* object = new CVelmoHatch(attributes);
    object->SetHatch(hatch);
    ASSERT_TRUE(doc.AddObject(object));
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({0, 0, 0}, {1, 1, 0}), walls)));
    // A loop whose pieces meet only within the tolerance stays one subpath.
    auto* chain = new GK_PolyCurve;
    chain->Append(new GK_LineCurve({0, 0, 0}, {2, 0, 0}));
    chain->Append(new GK_LineCurve({2, 1e-13, 0}, {2, 2, 0}));
    chain->Append(new GK_LineCurve({2, 2, 0}, {0, 0, 0}));
    auto* triangle = new GK_Hatch;
    triangle->AddLoop(new GK_HatchLoop(chain, GK_HatchLoop::ltOuter));
    auto* second = new CVelmoHatch(attributes);
    second->SetHatch(triangle);
    ASSERT_TRUE(doc.AddObject(second));

    const std::vector<Element> xml = ParseXml(Svg(doc));
    const std::vector<const Element*> paths = Paths(xml);
    ASSERT_EQ(paths.size(), 3u);
    EXPECT_EQ(paths[0]->Attr("d"), "M 0 0 L 20 0 L 20 -10 L 0 -10 L 0 0 Z "
                                   "M 1 -1 L 9 -1 L 9 -9 L 1 -9 L 1 -1 Z "
                                   "M 1 -1 L 19 -1 L 19 -9 L 1 -9 L 1 -1 Z");
    EXPECT_EQ(paths[0]->Attr("fill"), "#5a5a5a");
    EXPECT_EQ(paths[0]->Attr("fill-rule"), "evenodd");
    EXPECT_EQ(paths[0]->Attr("stroke"), "none");
    EXPECT_EQ(paths[2]->Attr("d"), "M 0 0 L 2 0 L 2 -1e-13 L 2 -2 L 0 0 Z");
    // The box is the hatch's, not only the short line's.
    const std::vector<double> box = Numbers(xml[0].Attr("viewBox"));
    ASSERT_EQ(box.size(), 4u);
    EXPECT_NEAR(box[2], 20 * 1.06, 1e-9);
    EXPECT_NEAR(box[1], -10 - 0.6, 1e-9);
}

TEST(DocumentSvg, LinetypesWithSegmentsAreDashed) {
    CVelmoDoc doc;
    const auto add = [&](const wchar_t* name, std::initializer_list<double> lengths) {
        GK_SimpleArray<double> segments;
        for (double v : lengths)
            segments.Append(v);
        return doc.LinetypeTable().AddLinetype(name, segments);
    };
    const int dashed = add(L"dashed", {2, -1});
    const int gapFirst = add(L"gap first", {-1, 2, -0.5, 3});
    const int endsDrawn = add(L"ends drawn", {2, -1, 0.5});
    const int solidRun = add(L"solid", {2, 3});
    GK_Layer hidden;
    hidden.SetName(L"Hidden lines");
    hidden.SetLinetypeIndex(dashed);
    const int hiddenLayer = doc.LayerTable().AddLayer(hidden);

    CVelmoObjectAttributes own;
    own.SetLinetypeSource(GK_3dmObjectAttributes::linetype_from_object);
    for (int linetype : {gapFirst, endsDrawn, solidRun, -1}) {
        own.m_linetype_index = linetype;
        auto* object = new CVelmoCurveObject(own);
        object->SetCurve(new GK_LineCurve({0, 0, 0}, {10, 0, 0}));
        ASSERT_TRUE(doc.AddObject(object));
    }
    // From the layer unless the object says otherwise.
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({0, 1, 0}, {10, 1, 0}), hiddenLayer)));

    const std::vector<Element> xml = ParseXml(Svg(doc));
    const std::vector<const Element*> paths = Paths(xml);
    ASSERT_EQ(paths.size(), 5u);
    // A leading gap goes to the end; the offset keeps the first dash one unit in.
    EXPECT_EQ(paths[0]->Attr("stroke-dasharray"), "2 0.5 3 1");
    EXPECT_EQ(paths[0]->Attr("stroke-dashoffset"), "5.5");
    // A trailing dash joins the first one, which then starts half a unit early.
    EXPECT_EQ(paths[1]->Attr("stroke-dasharray"), "2.5 1");
    EXPECT_EQ(paths[1]->Attr("stroke-dashoffset"), "0.5");
    for (int i : {2, 3}) {
        EXPECT_EQ(paths[i]->Attr("stroke-dasharray"), "<none>");
        EXPECT_EQ(paths[i]->Attr("stroke-dashoffset"), "<none>");
    }
    EXPECT_EQ(paths[4]->Attr("stroke-dasharray"), "2 1");
    EXPECT_EQ(paths[4]->Attr("stroke-dashoffset"), "<none>");
}

// A decimal comma in the global locale must not reach either writer.
struct CommaDecimal : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(DocumentSvg, OutputIgnoresTheGlobalLocale) {
    CVelmoDoc doc;
    ASSERT_TRUE(doc.AddObject(Curve(new GK_LineCurve({0.5, 1234.25, 0}, {2, 3, 0}), 0)));
    const std::locale previous =
        std::locale::global(std::locale(std::locale::classic(), new CommaDecimal));
    const std::string svg = Svg(doc);
    std::ostringstream json;
    JsonWriter writer(json, 2);
    WriteDocumentJson(writer, doc, 1, {});
    EXPECT_TRUE(writer.Finish());
    std::locale::global(previous);
    EXPECT_NE(svg.find("M 0.5 -1234.25 L 2 -3"), std::string::npos) << svg;
    EXPECT_NE(json.str().find("[0.5, 1234.25, 0.0]"), std::string::npos) << json.str();
}

} // namespace
