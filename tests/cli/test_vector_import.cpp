// Whole vector pages through the `tarquil` program: what arrives in the document after
// placement, read from its JSON.
#include "support/PdfTemplate.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace {

using json = nlohmann::json;
using tarquil::test::PdfFromTemplate;
using tarquil::test::TempFile;

// Imports the template `name` from tests/data/vector with drawing units kept at one model unit
// per point; `status` is the exit status expected.
json Import(const std::string& name, const std::string& extra = "", int status = 0) {
    const TempFile pdf(name.substr(0, name.size() - 3), PdfFromTemplate("vector/" + name));
    const std::filesystem::path out = pdf.Path().parent_path() / "out.json";
    const std::string command =
        std::string(TARQUIL_BINARY_DIR) + "/cli/tarquil import '" + pdf.Path().string() +
        "' --settings none --quiet --no-questions --option PreserveModelScale=true "
        "--option PdfUnits=3 --option PDFScale=1 --option VelmoScale=1 --json '" +
        out.string() + "' " + extra + " 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()), status * 256) << command;
    return json::parse(tarquil::test::ReadFileBytes(out), nullptr, false);
}

std::string LayerName(const json& document, int index) {
    for (const json& layer : document["layers"])
        if (layer["index"] == index)
            return layer["name"];
    return "?";
}

TEST(VectorImport, WallsDashesAndCurvesArriveInPlace) {
    const json document = Import("walls-dashes.pdf.in");
    ASSERT_FALSE(document.is_discarded());
    const json& objects = document["objects"];
    ASSERT_EQ(objects.size(), 4u) << objects.dump(1);

    // The wall frame: one hatch, grey, the room a hole, on the layer of its group.
    const json& wall = objects[0];
    EXPECT_EQ(wall["kind"], "hatch");
    EXPECT_EQ(wall["color"], json({128, 128, 128}));
    EXPECT_EQ(LayerName(document, wall["layer"]), "Walls");
    ASSERT_EQ(wall["loops"].size(), 2u);
    EXPECT_EQ(wall["loops"][0]["type"], "outer");
    EXPECT_EQ(wall["loops"][1]["type"], "inner");
    EXPECT_EQ(wall["loops"][0]["curve"]["points"][0], json({10.0, 10.0, 0.0}));

    // Five dashes in a row: one line with the linetype of their dash and gap.
    const json& hidden = objects[1];
    EXPECT_EQ(hidden["kind"], "curve");
    EXPECT_EQ(hidden["color"], json({255, 0, 0}));
    EXPECT_EQ(LayerName(document, hidden["layer"]), "Hidden");
    EXPECT_EQ(hidden["curve"]["points"], json({{30.0, 50.0, 0.0}, {58.0, 50.0, 0.0}}));
    ASSERT_TRUE(hidden["linetype"].is_number());
    EXPECT_EQ(document["linetypes"][hidden["linetype"].get<int>()]["name"], "4 2");

    // The polyline and the arc, outside any group, in blue.
    EXPECT_EQ(objects[2]["curve"]["points"],
              json({{100.0, 20.0, 0.0}, {100.0, 60.0, 0.0}, {150.0, 60.0, 0.0}}));
    EXPECT_EQ(objects[3]["curve"]["type"], "nurbs");
    EXPECT_EQ(objects[3]["color"], json({0, 0, 255}));
    EXPECT_TRUE(objects[3]["linetype"].is_null());

    // Fills as outlines: the hatch arrives as its two loops, still in the fill colour.
    const json outlines = Import("walls-dashes.pdf.in", "--option ImportFillsAsHatches=false");
    ASSERT_EQ(outlines["objects"].size(), 5u);
    for (int i : {0, 1}) {
        EXPECT_EQ(outlines["objects"][i]["kind"], "curve");
        EXPECT_EQ(outlines["objects"][i]["color"], json({128, 128, 128}));
    }
    EXPECT_EQ(outlines["objects"][1]["curve"]["points"][0], json({20.0, 20.0, 0.0}));
}

// Colours set through ICC-based and Separation spaces reach curves, hatches and the layer.
TEST(VectorImport, ColourSpacesColourTheDrawing) {
    const json document = Import("colour-page.pdf.in");
    ASSERT_FALSE(document.is_discarded());
    const json& objects = document["objects"];
    ASSERT_EQ(objects.size(), 4u) << objects.dump(1);
    EXPECT_EQ(objects[0]["kind"], "hatch");
    EXPECT_EQ(objects[0]["color"], json({255, 255, 255}));
    EXPECT_EQ(objects[1]["color"], json({0, 0, 0}));
    EXPECT_EQ(LayerName(document, objects[1]["layer"]), "Ink");
    EXPECT_EQ(objects[2]["kind"], "hatch");
    EXPECT_EQ(objects[2]["color"], json({128, 128, 128}));
    EXPECT_EQ(objects[3]["color"], json({255, 255, 0}));
    // A layer made by the read takes the last colour set while it was current.
    EXPECT_EQ(document["layers"][objects[1]["layer"].get<int>()]["color"], json({128, 128, 128}));
}

// Forms are drawn in place, images arrive as picture frames over files in the temporary
// folder: the importer's own PNG, and JPEG data as they came.
TEST(VectorImport, FormsAndImages) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / "tarquil-forms-images";
    std::filesystem::remove_all(folder);
    const json document = Import("forms-images.pdf.in", "--temp-dir '" + folder.string() + "'");
    const json& objects = document["objects"];
    ASSERT_EQ(objects.size(), 4u) << objects.dump(1);
    const auto near = [](const json& points, std::vector<double> expected) {
        std::vector<double> flat;
        for (const json& point : points)
            for (const json& v : point)
                flat.push_back(v.get<double>());
        ASSERT_EQ(flat.size(), expected.size());
        for (std::size_t i = 0; i < flat.size(); ++i)
            EXPECT_NEAR(flat[i], expected[i], 1e-9) << points;
    };
    near(objects[0]["curve"]["points"], {20, 20, 0, 40, 40, 0});
    near(objects[1]["curve"]["points"], {60, 20, 0, 80, 40, 0});
    EXPECT_EQ(objects[1]["color"], json({0, 0, 255}));

    const json& scan = objects[2];
    EXPECT_EQ(scan["kind"], "picture");
    near(json::array({scan["plane"]["origin"]}), {100, 50, 0});
    EXPECT_EQ(scan["plane"]["xaxis"], json({1.0, 0.0, 0.0}));
    EXPECT_NEAR(scan["width"].get<double>(), 40.0, 1e-9);
    EXPECT_NEAR(scan["height"].get<double>(), 20.0, 1e-9);
    const std::filesystem::path png = scan["path"].get<std::string>();
    EXPECT_EQ(png.parent_path(), folder);
    EXPECT_EQ(tarquil::test::ReadFileBytes(png).substr(1, 3), "PNG");

    // Turned a quarter: the frame's x axis runs up the page.
    const json& photo = objects[3];
    near(json::array({photo["plane"]["origin"]}), {180, 10, 0});
    EXPECT_EQ(photo["plane"]["xaxis"], json({0.0, 1.0, 0.0}));
    EXPECT_EQ(photo["plane"]["yaxis"], json({-1.0, 0.0, 0.0}));
    const std::filesystem::path jpeg = photo["path"].get<std::string>();
    EXPECT_EQ(jpeg.extension(), ".jpg");
    EXPECT_EQ(tarquil::test::ReadFileBytes(jpeg), "not really a JPEG, but written as it came");
    std::filesystem::remove_all(folder);
}

// A page of text against a fixed list of families: one object per run in the matching family,
// the missing one reported, and a list that cannot be read a usage error.
TEST(VectorImport, TextInTheListedFamilies) {
    const TempFile fonts("fonts.txt", "Arial\r\nHelvetica Narrow\n\nTimes New Roman\n");
    const json document =
        Import("text-page.pdf.in", "--fonts '" + fonts.Path().string() + "' --svg /dev/null");
    const json& objects = document["objects"];
    ASSERT_EQ(objects.size(), 4u) << objects.dump(1); // the run left of the page is dropped
    EXPECT_EQ(objects[0]["text"], "Title");
    EXPECT_EQ(objects[1]["text"], " block");
    EXPECT_EQ(objects[1]["plane"]["origin"], json({30.56, 80.0, 0.0}));
    EXPECT_EQ(objects[0]["font"],
              json({{"family", "Helvetica Narrow"}, {"bold", true}, {"italic", false}}));
    EXPECT_EQ(objects[2]["font"],
              json({{"family", "Times New Roman"}, {"bold", false}, {"italic", true}}));
    EXPECT_EQ(objects[2]["height"], 13.0);
    EXPECT_EQ(objects[3]["text"], "\u4e2d\u6587");
    EXPECT_EQ(objects[3]["plane"]["xaxis"], json({-1.0, 0.0, 0.0}));
    EXPECT_EQ(objects[3]["font"]["family"], "Arial");
    EXPECT_EQ(document["dimStyles"].size(), 3u);
    ASSERT_EQ(document["messages"].size(), 2u);
    EXPECT_EQ(document["messages"][0]["text"],
              "Could not find embedded font \"GHIJKL+NotoSansCJK\"\n");

    EXPECT_TRUE(Import("text-page.pdf.in", "--fonts /nonexistent", 2).is_discarded());
}

} // namespace
