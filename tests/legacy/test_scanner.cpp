#include "legacy/PostScriptPathScanner.h"

#include "host/geometry/GK_Curve.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

namespace {

class TestPlugIn : public CVelmoFileImportPlugIn {
public:
    GK_UUID PlugInGuid() const override { return GK_UUID::FromSerial(7); }
    const wchar_t* PlugInTitle() const override { return L"test"; }
    const wchar_t* PlugInVersionText() const override { return L"0"; }
    void RegisterFileTypes(GK_ClassArray<CVelmoFileType>&) override {}
    int ImportFile(const wchar_t*, int, CVelmoDoc&, const CVelmoFileReadOptions&) override {
        return 0;
    }
};

struct ScanResult {
    int status = 0;
    GK_SimpleArray<GK_Curve*> curves;
    GK_SimpleArray<long> layers;
    ~ScanResult() {
        for (GK_Curve* c : curves)
            delete c;
    }
};

// Scans `body` as the part of a file after its setup.
void Scan(const std::string& body, CVelmoDoc& doc, ScanResult& out, bool reference = false,
          const CVelmoFileImportPlugIn* plugIn = nullptr) {
    const std::string bytes = "%%EndSetup\n" + body;
    ResetLegacyScanner(reference, doc.LayerTable().CurrentLayer().Color(),
                       doc.LayerTable().CurrentLayer().Name(), plugIn);
    std::FILE* f = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb");
    ASSERT_NE(f, nullptr);
    out.status = ScanPostScriptPaths(f, out.curves, out.layers, doc);
    std::fclose(f);
}

void ExpectPoint(const GK_3dPoint& p, double x, double y) {
    EXPECT_DOUBLE_EQ(p.x, x);
    EXPECT_DOUBLE_EQ(p.y, y);
    EXPECT_DOUBLE_EQ(p.z, 0.0);
}

void ExpectCubic(const GK_Curve* curve, const double (&cv)[4][2]) {
    const auto* n = dynamic_cast<const GK_NurbsCurve*>(curve);
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(n->Order(), 4);
    EXPECT_EQ(n->CVCount(), 4);
    EXPECT_FALSE(n->IsRational());
    const double knots[] = {0, 0, 0, 1, 1, 1};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(n->Knot(i), knots[i]);
    for (int i = 0; i < 4; ++i) {
        GK_3dPoint p;
        n->GetCV(i, p);
        ExpectPoint(p, cv[i][0], cv[i][1]);
    }
}

TEST(LastOperator, ShortFormsWordsAndLayerOperators) {
    EXPECT_EQ(LastOperator("S"), "S");
    EXPECT_EQ(LastOperator("10 20 m"), "m");
    EXPECT_EQ(LastOperator("30 40 L"), "L");
    EXPECT_EQ(LastOperator("1 1 1 1 0 0 0 255 0 0 Lb"), "Lb");
    EXPECT_EQ(LastOperator("(Rim) Ln"), "Ln");
    EXPECT_EQ(LastOperator("xLz"), "Lz"); // any word ending in L and one byte
    EXPECT_EQ(LastOperator("1 2 MoveTo"), "m");
    EXPECT_EQ(LastOperator("1 2 3 4 5 6 curveto"), "c");
    EXPECT_EQ(LastOperator("3 4 li"), "l");
    EXPECT_EQ(LastOperator("closepath"), "f");
    EXPECT_EQ(LastOperator("STROKE"), "f");
    EXPECT_EQ(LastOperator("eofill"), "f");
    EXPECT_EQ(LastOperator("gsave"), std::string(1, '\0'));
    EXPECT_EQ(LastOperator("[6 3]0 d"), "d");
}

TEST(Scanner, StrokedLineAndPaintOperators) {
    CVelmoDoc doc;
    {
        ScanResult r;
        Scan("10 20 m\n30 40 L\nS\n", doc, r);
        EXPECT_EQ(r.status, 1);
        ASSERT_EQ(r.curves.Count(), 1);
        const auto* line = dynamic_cast<const GK_LineCurve*>(r.curves[0]);
        ASSERT_NE(line, nullptr);
        ExpectPoint(line->m_line.from, 10, 20);
        ExpectPoint(line->m_line.to, 30, 40);
        EXPECT_EQ(r.layers[0], 0); // no "Ln": the current layer
    }
    {
        ScanResult r; // "n" paints nothing
        Scan("10 20 m\n30 40 l\nn\n", doc, r);
        EXPECT_EQ(r.curves.Count(), 0);
    }
    {
        ScanResult r; // no painting operator before the trailer; what follows it is not read
        Scan("10 20 m\n30 40 l\n%%PageTrailer\nS\n50 50 m\n60 60 l\nS\n", doc, r);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.curves.Count(), 0);
    }
    {
        ScanResult r; // closepath paints; the stroke after it finds no lines
        Scan("1 2 moveto\n3 4 lineto\nclosepath\nstroke\n", doc, r);
        ASSERT_EQ(r.curves.Count(), 1);
        ExpectPoint(r.curves[0]->PointAtStart(), 1, 2);
        ExpectPoint(r.curves[0]->PointAtEnd(), 3, 4);
    }
    {
        ScanResult r; // lines with unknown operators between path lines leave the path whole
        Scan("0 0 m\n0 g\n10 0 l\n[]0 d\n10 10 l\nF\n", doc, r);
        ASSERT_EQ(r.curves.Count(), 1);
        EXPECT_NE(dynamic_cast<const GK_PolyCurve*>(r.curves[0]), nullptr);
        ExpectPoint(r.curves[0]->PointAtEnd(), 10, 10);
    }
    ScanResult none; // without the marker the scan fails
    std::string bytes = "10 20 m\n30 40 L\nS\n";
    std::FILE* f = fmemopen(bytes.data(), bytes.size(), "rb");
    EXPECT_EQ(ScanPostScriptPaths(f, none.curves, none.layers, doc), 0);
    std::fclose(f);
}

TEST(Scanner, CubicForms) {
    CVelmoDoc doc;
    ScanResult r;
    // Separate paths, so nothing is merged.
    Scan("0 0 m\n1 2 3 4 5 6 c\nS\n"
         "10 10 m\n11 12 13 14 v\nS\n"
         "20 20 m\n21 22 23 24 y\nS\n",
         doc, r);
    ASSERT_EQ(r.curves.Count(), 3);
    ExpectCubic(r.curves[0], {{0, 0}, {1, 2}, {3, 4}, {5, 6}});
    ExpectCubic(r.curves[1], {{10, 10}, {10, 10}, {11, 12}, {13, 14}});
    ExpectCubic(r.curves[2], {{20, 20}, {21, 22}, {23, 24}, {23, 24}});
}

TEST(Scanner, MoveForms) {
    CVelmoDoc doc;
    {
        ScanResult r; // "M" reads no numbers and moves to the earlier first point
        Scan("1 2 m\n10 20 M\n5 5 l\nS\n", doc, r);
        ASSERT_EQ(r.curves.Count(), 1);
        ExpectPoint(r.curves[0]->PointAtStart(), 1, 2);
    }
    {
        ScanResult r; // a line whose numbers run out is not acted on; points keep what they got
        Scan("0 0 m\n7 8 9 c\n1 1 l\nS\n", doc, r);
        ASSERT_EQ(r.curves.Count(), 1);
        ExpectPoint(r.curves[0]->PointAtStart(), 0, 0);
        ExpectPoint(r.curves[0]->PointAtEnd(), 1, 1);
    }
    {
        ScanResult r; // a 300-byte line is cut at 254 bytes and each piece is read alone
        const std::string first = "7" + std::string(250, ' ') + "8 l"; // 254 bytes
        const std::string rest = std::string(38, ' ') + "20 30 l";     // 45 bytes
        ASSERT_EQ(first.size(), 254u);
        Scan("0 0 m\n" + first + "X" + rest + "\nS\n", doc, r);
        ASSERT_EQ(r.curves.Count(), 1); // two segments, joined
        GK_SimpleArray<GK_3dPoint> points;
        ASSERT_EQ(r.curves[0]->IsPolyline(&points), 3);
        ExpectPoint(points[1], 7, 8);
        ExpectPoint(points[2], 20, 30);
    }
}

TEST(Scanner, SegmentsJoinIntoOneCurvePerPath) {
    CVelmoDoc doc;
    ScanResult r;
    // A closed square, then a separate stroke: two curves.
    Scan("0 0 m\n10 0 l\n10 10 l\n0 10 l\n0 0 l\ns\n20 0 m\n30 0 l\nS\n", doc, r);
    ASSERT_EQ(r.curves.Count(), 2);
    EXPECT_TRUE(r.curves[0]->IsClosed());
    GK_SimpleArray<GK_3dPoint> points;
    EXPECT_EQ(r.curves[0]->IsPolyline(&points), 5);
    EXPECT_NE(dynamic_cast<const GK_LineCurve*>(r.curves[1]), nullptr);
}

TEST(Scanner, LayersFromLbAndLn) {
    CVelmoDoc doc;
    ScanResult r;
    Scan("1 1 1 1 0 0 0 255 0 0 Lb\n(Rim) Ln\n0 0 m\n1 1 l\nS\n"
         "0 0 0 0 0 0 0 0 0 255 Lb\n(rim) Ln\n2 2 m\n3 3 l\nS\n"
         "(Hub) trailing) Ln\n4 4 m\n5 5 l\nS\n",
         doc, r);
    ASSERT_EQ(r.curves.Count(), 3);
    const CVelmoLayerTable& layers = doc.LayerTable();
    ASSERT_EQ(layers.LayerCount(), 3);
    EXPECT_EQ(r.layers[0], 1);
    EXPECT_EQ(layers[1].Name().str(), L"Rim");
    EXPECT_EQ(layers[1].Color(), GK_Color(255, 0, 0));
    EXPECT_FALSE(layers[1].IsReference());
    EXPECT_EQ(r.layers[1], 1); // found again without regard to case, not made twice
    EXPECT_EQ(r.layers[2], 2);
    EXPECT_EQ(layers[2].Name().str(), L"Hub"); // cut at the first ")"
    EXPECT_EQ(layers[2].Color(), GK_Color(0, 0, 255));
}

TEST(Scanner, ReferenceLayersTakeTheFileName) {
    CVelmoDoc doc;
    TestPlugIn plugIn;
    plugIn.SetFileBeingRead(L"/drawings/part.ai");
    ScanResult r;
    Scan("0 0 m\n1 1 l\nS\n0 0 0 0 0 0 0 0 128 0 Lb\n(Rim) Ln\n0 0 m\n2 2 l\nS\n", doc, r, true,
         &plugIn);
    ASSERT_EQ(r.curves.Count(), 2);
    const CVelmoLayerTable& layers = doc.LayerTable();
    ASSERT_EQ(layers.LayerCount(), 3);
    EXPECT_EQ(layers[static_cast<int>(r.layers[0])].Name().str(), L"part.ai : Layer");
    EXPECT_EQ(layers[static_cast<int>(r.layers[1])].Name().str(), L"part.ai : Rim");
    EXPECT_TRUE(layers[2].IsReference());
    EXPECT_EQ(layers[2].Color(), GK_Color(0, 128, 0));

    ScanResult unnamed; // no plug-in to name reference layers: no layer
    Scan("0 0 m\n1 1 l\nS\n", doc, unnamed, true, nullptr);
    ASSERT_EQ(unnamed.layers.Count(), 1);
    EXPECT_EQ(unnamed.layers[0], -1);
}

} // namespace
