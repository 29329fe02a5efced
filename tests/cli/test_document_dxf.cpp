// The DXF drawing read back by an independent reader: tests/cli/check_dxf.py runs ezdxf's
// audit on it and holds every layer, linetype and entity against the JSON report of the same
// document. Without ezdxf (Debian's python3-ezdxf) those tests are skipped.
#include "cli/DocumentDxf.h"
#include "cli/DocumentJson.h"
#include "cli/DxfEntities.h"
#include "cli/DxfWriter.h"
#include "cli/JsonWriter.h"

#include "support/Curves.h"
#include "support/PdfTemplate.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using tarquil::test::Polyline;
using tarquil::test::TempFile;

const std::string kChecker = std::string(TARQUIL_TEST_DATA) + "/../cli/check_dxf.py";

bool HaveEzdxf() {
    static const bool have = std::system("/usr/bin/python3 -c 'import ezdxf' >/dev/null 2>&1") == 0;
    return have;
}

// Runs the checker; its output names every difference.
void ExpectAgrees(const fs::path& dxf, const fs::path& json) {
    int status = -1;
    const std::string output = tarquil::test::CommandOutput(
        "/usr/bin/python3 '" + kChecker + "' '" + dxf.string() + "' '" + json.string() + "' 2>&1",
        &status);
    EXPECT_EQ(status, 0) << output;
    EXPECT_EQ(output.rfind("agrees:", 0), 0u) << output;
}

// Imports `input` with drawing units kept at one model unit per point, into a JSON report and
// a DXF drawing in `folder`; returns the importer's standard error.
std::string Import(const fs::path& input, const fs::path& folder, const std::string& extra = "") {
    const std::string command =
        std::string(TARQUIL_BINARY_DIR) + "/cli/tarquil import '" + input.string() +
        "' --settings none --quiet --no-questions --pages all "
        "--option PreserveModelScale=true --option PdfUnits=3 "
        "--option PDFScale=1 --option VelmoScale=1 --temp-dir '" +
        (folder / "images").string() + "' --json '" + (folder / "out.json").string() + "' --dxf '" +
        (folder / "out.dxf").string() + "' " + extra + " 2>'" + (folder / "err.txt").string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return tarquil::test::ReadFileBytes(folder / "err.txt");
}

TEST(DocumentDxf, ImportsReadBackAsTheirReports) {
    if (!HaveEzdxf())
        GTEST_SKIP() << "python3-ezdxf is not installed: the DXF is not read back";
    const fs::path folder = fs::temp_directory_path() / "tarquil-dxf-imports";
    fs::remove_all(folder);
    fs::create_directories(folder);
    const TempFile fonts("fonts.txt", "Arial\nHelvetica Narrow\nTimes New Roman\n");
    const std::string data = TARQUIL_TEST_DATA;
    struct Case {
        std::string name;
        fs::path path;
        std::string text;     // a template to expand, when not empty
        std::string extra;    // more options
        std::string warnings; // what the DXF writer says on standard error
    };
    const std::vector<Case> cases = {
        {"floor plan", fs::path(TARQUIL_SAMPLES) / "floorplan.pdf", "", "", ""},
        {"text page", "", data + "/vector/text-page.pdf.in", "", ""},
        {"images", "", data + "/vector/forms-images.pdf.in", "", ""},
        {"dashes", "", data + "/vector/walls-dashes.pdf.in", "", ""},
        {"legacy AI as reference", fs::path(TARQUIL_SAMPLES) / "bracket.ai", "", "--reference",
         "tarquil: warning: DXF: 3 layer names changed to names DXF allows\n"},
        {"non-ASCII", "", data + "/dxf/non-ascii.pdf.in", "",
         "tarquil: warning: DXF: 2 layer names changed to names DXF allows\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        fs::path input = c.path;
        std::unique_ptr<TempFile> expanded;
        if (!c.text.empty()) {
            expanded = std::make_unique<TempFile>(
                "page.pdf", tarquil::test::ExpandPdfTemplate(tarquil::test::ReadFileBytes(c.text)));
            input = expanded->Path();
        }
        const std::string errors =
            Import(input, folder, "--fonts '" + fonts.Path().string() + "' " + c.extra);
        EXPECT_EQ(errors, c.warnings);
        ExpectAgrees(folder / "out.dxf", folder / "out.json");
    }
    fs::remove_all(folder);
}

CVelmoObjectAttributes Attributes(int layer) {
    CVelmoObjectAttributes a;
    a.m_layer_index = layer;
    return a;
}

void AddCurve(CVelmoDoc& doc, GK_Curve* curve, const CVelmoObjectAttributes& a) {
    auto* object = new CVelmoCurveObject(a);
    object->SetCurve(curve);
    ASSERT_TRUE(doc.AddObject(object));
}

// A quarter circle as a rational quadratic from `from` about the origin.
GK_NurbsCurve* Arc(double r) {
    auto* arc = new GK_NurbsCurve(3, true, 3, 3);
    const double w = std::sqrt(0.5);
    arc->SetCV(0, GK_4dPoint{r, 0, 0, 1});
    arc->SetCV(1, GK_4dPoint{r * w, r * w, 0, w});
    arc->SetCV(2, GK_4dPoint{0, r, 0, 1});
    for (int i = 0; i < 4; ++i)
        arc->SetKnot(i, i < 2 ? 0.0 : 1.0);
    return arc;
}

// What the importer never makes but a document may hold: rational splines, polycurves of
// both kinds, a polyline off the ground, hatch loops with spline edges, mirrored, slanted and
// long texts, names DXF forbids, nested hidden and locked layers, a reference layer, a
// linetype that begins with a gap, and units that DXF has no name for.
TEST(DocumentDxf, FormsBeyondTheImporterReadBack) {
    if (!HaveEzdxf())
        GTEST_SKIP() << "python3-ezdxf is not installed: the DXF is not read back";
    CVelmoDoc doc;
    doc.SetModelUnits(VmLengthUnit::Points);
    GK_Layer layer;
    layer.SetName(L"Plan: A/B");
    layer.SetVisible(false);
    layer.SetColor(GK_Color(10, 20, 30));
    layer.SetPlotWeight(0.35);
    const int parent = doc.LayerTable().AddLayer(layer);
    layer.SetName(L"Türen");
    layer.SetVisible(true);
    layer.SetLocked(true);
    layer.SetParentId(doc.LayerTable()[parent].Id());
    const int child = doc.LayerTable().AddLayer(layer);
    layer.SetName(L"0");
    layer.SetLocked(false);
    layer.SetReference(true);
    layer.SetParentId({});
    const int zero = doc.LayerTable().AddLayer(layer);
    ASSERT_GE(zero, 0);
    GK_SimpleArray<double> gapFirst;
    for (double v : {-1.0, 3.0, -0.5})
        gapFirst.Append(v);
    const int linetype = doc.LinetypeTable().AddLinetype(L"gap first|odd", gapFirst);
    ASSERT_GE(linetype, 0);

    CVelmoObjectAttributes own = Attributes(child);
    own.m_color = GK_Color(250, 128, 0);
    own.SetColorSource(GK_3dmObjectAttributes::color_from_object);
    own.m_linetype_index = linetype;
    own.SetLinetypeSource(GK_3dmObjectAttributes::linetype_from_object);
    own.m_plot_weight_mm = 0.26;
    own.SetPlotWeightSource(GK_3dmObjectAttributes::plot_weight_from_object);
    AddCurve(doc, Arc(10.0), own);
    AddCurve(doc, Polyline({{0, 0, 0}, {1, 0, 1}, {2, 1, 2}}), Attributes(zero));
    auto* straight = new GK_PolyCurve;
    straight->Append(new GK_LineCurve({0, 0, 0}, {5, 0, 0}));
    straight->Append(Polyline({{5, 0, 0}, {5, 5, 0}, {0, 5, 0}}));
    straight->Append(new GK_LineCurve({0, 5, 0}, {0, 0, 0}));
    AddCurve(doc, straight, Attributes(0));
    auto* mixed = new GK_PolyCurve;
    mixed->Append(new GK_LineCurve({0, 0, 0}, {10, 0, 0}));
    mixed->Append(Arc(10.0));
    mixed->Append(new GK_LineCurve({0, 10, 0}, {0, 0, 0}));
    AddCurve(doc, mixed->DuplicateCurve(), Attributes(0));

    // A quarter disc with a square hole: an edge path of lines and a rational spline edge,
    // and a polyline path.
    auto* hatch = new GK_Hatch;
    hatch->AddLoop(new GK_HatchLoop(mixed, GK_HatchLoop::ltOuter));
    hatch->AddLoop(new GK_HatchLoop(
        Polyline({{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}, {1, 1, 0}}), GK_HatchLoop::ltInner));
    auto* hatchObject = new CVelmoHatch(Attributes(child));
    hatchObject->SetHatch(hatch);
    ASSERT_TRUE(doc.AddObject(hatchObject));

    GK_DimStyle style = doc.DimStyleTable().GetDefaultDimStyleProperties();
    style.SetFont(GK_Font::GetManagedFont(L"DejaVu Sans", true, true));
    style.SetTextHeight(2.5);
    const double s = std::sqrt(0.5);
    const GK_Plane mirrored({20, 0, 0}, {1, 0, 0}, {s, -s, 0});
    ASSERT_NE(
        doc.AddTextObject(L"Spiegel ^ \u4e2d\t!", mirrored, mirrored.origin, style, Attributes(0)),
        nullptr);
    const GK_Plane upright({0, 30, 0}, {0, 1, 0}, {-1, 0, 0});
    ASSERT_NE(doc.AddTextObject(std::wstring(600, L'x'), upright, upright.origin, style,
                                Attributes(child)),
              nullptr);

    const fs::path folder = fs::temp_directory_path() / "tarquil-dxf-forms";
    fs::create_directories(folder);
    std::vector<std::string> warnings;
    {
        std::ofstream dxf(folder / "out.dxf", std::ios::binary);
        ASSERT_TRUE(WriteDocumentDxf(dxf, doc, warnings));
        std::ofstream json(folder / "out.json", std::ios::binary);
        JsonWriter writer(json, -1);
        WriteDocumentJson(writer, doc, 1, {});
        ASSERT_TRUE(writer.Finish());
    }
    ExpectAgrees(folder / "out.dxf", folder / "out.json");
    std::ostringstream said;
    for (const std::string& w : warnings)
        said << w << "\n";
    EXPECT_EQ(said.str(),
              "the model unit, points, has no DXF unit; the drawing is unitless\n"
              "2 layer names changed to names DXF allows\n"
              "1 linetype names changed to names DXF allows\n"
              "1 linetypes began with a gap, now moved to their end\n"
              "1 polylines not parallel to the ground written as splines\n"
              "1 texts longer than 250 characters written in pieces placed by estimated width\n");
    fs::remove_all(folder);
}

// What holds without a reader: numbers that read back exactly, text that stays on its line,
// and a record with a number that is not finite left out whole.
TEST(DocumentDxf, WriterKeepsValuesAndDropsWhatIsNotFinite) {
    for (double v : {0.1, 1.0 / 3.0, 1e-300, -2.5e17, 123456789.0, 5e-324}) {
        const std::string text = DxfNumber(v);
        EXPECT_NE(text.find('.'), std::string::npos) << text;
        EXPECT_EQ(std::strtod(text.c_str(), nullptr), v) << text;
    }
    EXPECT_EQ(DxfNumber(-0.0), "0.0");
    EXPECT_EQ(DxfNumber(2.0), "2.0");
    EXPECT_EQ(DxfNumber(2.5e-8), "2.5e-08");
    EXPECT_EQ(DxfText(L"a\nb^c\u00e9"), "a^Jb^ c\xc3\xa9");
    EXPECT_EQ(DxfTextValue(L"5% of %%d"), "5% of %%%%%%d");

    std::ostringstream out;
    DxfWriter w(out);
    w.BeginRecord();
    w.Text(0, "LINE").Real(10, 1.0);
    EXPECT_TRUE(w.EndRecord());
    w.BeginRecord();
    w.Text(0, "LINE").Real(10, NAN);
    EXPECT_FALSE(w.EndRecord());
    w.Handle(5, 0x2AF);
    EXPECT_TRUE(w.Finish());
    EXPECT_EQ(out.str(), "  0\nLINE\n 10\n1.0\n  5\n2AF\n");
}

} // namespace
