// Runs the built `tarquil` program as a user would and checks what it leaves behind.
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;
using tarquil::test::ReadFileBytes;
using tarquil::test::ShellQuote;

const std::string kProgram = TARQUIL_BINARY_DIR "/cli/tarquil";

const std::string kLines = ShellQuote(TARQUIL_TEST_DATA "/cli/lines.ai");

// A folder of its own per test, which also stands in for the user's home and config
// folders so that no run touches the real ones.
class ProgramTest : public ::testing::Test {
protected:
    struct Result {
        int status = -1;
        std::string out, err;
        json Json() const { return json::parse(out, nullptr, false); }
    };

    void SetUp() override {
        static std::atomic<int> counter{0};
        m_dir = fs::temp_directory_path() /
                ("tarquil-cli-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        fs::remove_all(m_dir);
        fs::create_directories(m_dir / "home");
        fs::create_directories(m_dir / "config");
        ASSERT_TRUE(fs::exists(kProgram)) << "build the tarquil target first";
    }
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(m_dir, ec);
    }

    Result Run(const std::string& arguments) {
        const std::string command = "env XDG_CONFIG_HOME=" + Path("config") +
                                    " HOME=" + Path("home") + " " + ShellQuote(kProgram) + " " +
                                    arguments + " >" + Path("stdout") + " 2>" + Path("stderr") +
                                    " </dev/null";
        const int raw = std::system(command.c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadFileBytes(m_dir / "stdout"),
                ReadFileBytes(m_dir / "stderr")};
    }
    // Quoted, for the command line.
    std::string Path(const std::string& name) const { return ShellQuote((m_dir / name).string()); }
    std::string Write(const std::string& name, const std::string& text) const {
        std::ofstream(m_dir / name, std::ios::binary) << text;
        return Path(name);
    }
    json ReadJson(const std::string& name) const {
        return json::parse(ReadFileBytes(m_dir / name), nullptr, false);
    }
    fs::path DefaultSettings() const { return m_dir / "config" / "tarquil" / "settings.json"; }

    fs::path m_dir;
};

TEST_F(ProgramTest, HelpVersionAndUsageErrors) {
    Result r = Run("--help");
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("import"), std::string::npos) << r.out;
    r = Run("import --help");
    EXPECT_EQ(r.status, 0);
    for (const char* option :
         {"--type", "--option", "--batch", "--fit-views", "--reference", "--no-questions",
          "--interactive", "--answers", "--pages", "--settings", "--json", "--json-indent", "--svg",
          "--dxf", "--quiet", "--plugin", "--temp-dir", "--max-memory"})
        EXPECT_NE(r.out.find(option), std::string::npos) << option;
    r = Run("--version");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out.rfind("tarquil 0.", 0), 0u) << r.out;
    r = Run("");
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("import"), std::string::npos) << "help goes with the error";

    const std::string notAList = Write("object.json", "{\"ImportScale\": 2}");
    for (const std::string& bad : std::vector<std::string>{
             "import", kLines, "export " + kLines, "import " + kLines + " --type svg",
             "import " + kLines + " --option AiUnits=mm", "import " + kLines + " --option NoValue",
             "import " + kLines + " --answers " + Path("missing.json"),
             "import " + kLines + " --answers " + notAList,
             "import " + kLines + " --json - --svg -", "import " + kLines + " --svg - --dxf -",
             "import " + kLines + " --no-such-option",
             "import " + kLines + " --json - --json-indent -1"}) {
        r = Run(bad);
        EXPECT_EQ(r.status, 2) << bad << "\n" << r.err;
        EXPECT_FALSE(r.err.empty()) << bad;
        EXPECT_TRUE(r.out.empty()) << bad;
    }
    EXPECT_NE(Run("import " + kLines + " --option AiUnits=mm").err.find("AiUnits=mm"),
              std::string::npos);
    // A usage error stops before anything is read or written.
    EXPECT_FALSE(fs::exists(DefaultSettings()));
}

TEST_F(ProgramTest, UnreadableInputIsNamedBeforeAnythingLoads) {
    const std::string missing = (m_dir / "missing.pdf").string();
    Result r = Run("import " + ShellQuote(missing) + " --json " + Path("out.json"));
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "tarquil: cannot open " + missing + ": No such file or directory\n");
    r = Run("import " + Path("home") + " --plugin " + Path("no-such-library.so"));
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "tarquil: cannot open " + (m_dir / "home").string() + ": Is a directory\n");
    EXPECT_FALSE(fs::exists(m_dir / "out.json"));
    EXPECT_FALSE(fs::exists(DefaultSettings()));
}

TEST_F(ProgramTest, PlugInAsTheHostSeesItAndItsOptionsButton) {
    // The values themselves are the library's tests; here, the report's shape.
    Result r = Run("plugin info --json");
    ASSERT_EQ(r.status, 0) << r.err;
    const json info = r.Json();
    EXPECT_EQ(info["exports"].size(), 13u);
    EXPECT_EQ(info["plugIn"]["title"], "Tarquil");
    EXPECT_EQ(info["fileTypes"][2]["extensions"], json({"eps"}));
    EXPECT_NE(Run("plugin info").out.find("  1  ai   Adobe Illustrator (*.ai)\n"),
              std::string::npos);

    // The options button saves what the dialog took, as an import would.
    const std::string answers = Write("answers.json", R"([{"ImportScale": 2.5, "Units": 2}])");
    r = Run("plugin options --type EPS --answers " + answers + " --settings " + Path("s.json"));
    EXPECT_EQ(r.status, 0) << r.err;
    const json section = ReadJson("s.json")["sections"]["5d2c7a14-9e3b-4c60-8f1a-2b6e07d4c391"];
    EXPECT_EQ(section["EPS_ImportScale"]["value"], 2.5);
    EXPECT_EQ(section["EPS_ImportUnit"]["value"], 2);

    // A file that is no library is refused with the loader's reason.
    const std::string text = Write("fake.so", "not a library");
    for (const std::string& command : {"plugin info --plugin " + text,
                                       "import " + kLines + " --settings none --plugin " + text}) {
        r = Run(command);
        EXPECT_EQ(r.status, 1) << command;
        EXPECT_NE(r.err.find("tarquil: error: cannot load the plug-in: "), std::string::npos)
            << r.err;
    }
}

TEST_F(ProgramTest, ReportsOnStandardOutputAndModeFlags) {
    Result r = Run("import " + kLines + " --json -");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.find('\n'), r.out.size() - 1) << "compact unless asked";
    const json report = r.Json();
    const Result indented = Run("import " + kLines + " --json - --json-indent 3");
    EXPECT_EQ(indented.out.rfind("{\n   \"result\": 1,\n", 0), 0u) << indented.out;
    EXPECT_EQ(json::parse(indented.out), report);
    ASSERT_EQ(report["objects"].size(), 3u) << r.out;
    EXPECT_EQ(report["result"], 1);
    EXPECT_EQ(report["objects"][1]["curve"]["type"], "nurbs");
    EXPECT_EQ(report["objects"][2]["curve"]["type"], "polycurve");
    EXPECT_EQ(report["layers"][1]["color"], json({200, 40, 60}));
    EXPECT_EQ(report["views"]["fits"], 0);
    EXPECT_EQ(report["objects"][0]["reference"], false);
    EXPECT_NE(r.err.find("Imported 3 curves"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find('\r'), std::string::npos) << "no spinner in a file";
    // Without options the drawing is fitted to the default screen, 40 units across.
    const json& line = report["objects"][0]["curve"]["points"];
    EXPECT_NEAR(line[1][0].get<double>() - line[0][0].get<double>(), 20.0, 1e-9);

    const json flagged = Run("import " + kLines + " --fit-views --reference --json -").Json();
    EXPECT_EQ(flagged["views"]["fits"], 4);
    EXPECT_EQ(flagged["objects"][0]["reference"], true);

    r = Run("import " + kLines + " --quiet --svg -");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out.rfind("<?xml", 0), 0u);
    EXPECT_NE(r.out.find("data-name=\"Frame\""), std::string::npos);
}

TEST_F(ProgramTest, ScriptedOptionsAndAnswersReachTheImporter) {
    auto firstLine = [this](const std::string& arguments) {
        const json report =
            Run("import " + kLines + " --settings none --json - " + arguments).Json();
        return report.is_discarded() || report["objects"].empty()
                   ? json()
                   : report["objects"][0]["curve"]["points"];
    };
    // Drawing points at model scale 2: the line from (10,20) to (110,20) doubles.
    EXPECT_EQ(firstLine("--option PreserveModelScale=true --option AiUnits=3 --option AiScale=1 "
                        "--option VelmoScale=2"),
              json({{20.0, 40.0, 0.0}, {220.0, 40.0, 0.0}}));
    // A person at the options dialog, then at the command-line prompt, both scripted.
    const std::string dialog =
        Write("dialog.json",
              R"([{"PreserveUnits": 1, "ImportScale": 1.0, "Units": 3, "VelmoScale": 3.0}])");
    EXPECT_EQ(firstLine("--interactive --answers " + dialog),
              json({{30.0, 60.0, 0.0}, {330.0, 60.0, 0.0}}));
    const std::string prompt =
        Write("prompt.json", R"(["PreserveUnits=Yes", "Unit=point", "VelmoScale=0.5", "<enter>"])");
    EXPECT_EQ(firstLine("--interactive --batch --answers " + prompt),
              json({{5.0, 10.0, 0.0}, {55.0, 10.0, 0.0}}));
    // Without --interactive nobody is asked, so the answers are not used.
    EXPECT_NE(firstLine("--answers " + dialog)[0][0], 30.0);
    // Anything but an object cancels the dialog, and the import with it.
    const Result r = Run("import " + kLines + " --settings none --json - --interactive --answers " +
                         Write("cancel.json", "[\"<cancel>\"]"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.Json()["result"], 0);
}

TEST_F(ProgramTest, SettingsAreKeptBetweenRuns) {
    const std::string store = Path("settings.json");
    EXPECT_EQ(Run("import " + kLines + " --settings " + store).status, 0);
    json saved = ReadJson("settings.json");
    ASSERT_EQ(saved["sections"].size(), 1u) << saved;
    json& section = saved["sections"].begin().value();
    EXPECT_EQ(section["PDF_VelmoScale"]["type"], "double");
    EXPECT_EQ(section["AI_PreserveUnits"]["value"], false);
    EXPECT_FALSE(fs::exists(DefaultSettings())) << "--settings replaces the default store";

    // What the next run finds in the store is what the importer works with.
    section["AI_PreserveUnits"]["value"] = true;
    section["AI_ImportUnit"]["value"] = 3;
    section["AI_ImportScale"]["value"] = 1.0;
    section["AI_VelmoScale"]["value"] = 2.0;
    Write("settings.json", saved.dump(2));
    const Result r = Run("import " + kLines + " --settings " + store + " --json -");
    EXPECT_EQ(r.Json()["objects"][0]["curve"]["points"][0], json({20.0, 40.0, 0.0})) << r.err;
    EXPECT_EQ(ReadJson("settings.json")["sections"].begin().value()["AI_VelmoScale"]["value"], 2.0);

    // "none" reads and writes nothing; by default the store is under XDG_CONFIG_HOME.
    EXPECT_EQ(Run("import " + kLines + " --settings none").status, 0);
    EXPECT_TRUE(fs::is_empty(m_dir / "config") && fs::is_empty(m_dir / "home"));
    EXPECT_EQ(Run("import " + kLines).status, 0);
    EXPECT_TRUE(fs::exists(DefaultSettings()));
}

TEST_F(ProgramTest, BundledSampleArrivesWithItsLayersAndColours) {
    const Result r =
        Run("import " + ShellQuote(TARQUIL_SAMPLES "/bracket.ai") + " --settings none --json -");
    ASSERT_EQ(r.status, 0) << r.err;
    const json doc = r.Json();
    // Layer records give the colours; "Ln" the names.
    const json& layers = doc["layers"];
    ASSERT_EQ(layers.size(), 4u);
    EXPECT_EQ(layers[1]["name"], "Outline");
    EXPECT_EQ(layers[1]["color"], json({0, 64, 200}));
    EXPECT_EQ(layers[2]["name"], "Holes");
    EXPECT_EQ(layers[2]["color"], json({220, 30, 30}));
    EXPECT_EQ(layers[3]["name"], "Centerlines");
    EXPECT_EQ(layers[3]["color"], json({20, 150, 60}));
    // The plate and the slot, two holes, three centre lines; the clipping path makes none.
    std::vector<int> perLayer(4, 0);
    for (const json& o : doc["objects"])
        ++perLayer[o["layer"].get<int>()];
    EXPECT_EQ(perLayer, (std::vector<int>{0, 2, 2, 3}));
    // Joined outlines are closed polycurves; the drawing is fitted to 40 units about the origin.
    const json& plate = doc["objects"][0]["curve"];
    EXPECT_EQ(plate["type"], "polycurve");
    EXPECT_EQ(plate["segments"].size(), 8u);
    EXPECT_EQ(plate["segments"][0]["points"][0],
              json({-17.333333333333332, -13.333333333333334, 0.0}));
    EXPECT_EQ(doc["objects"][4]["curve"]["type"], "line");
}

TEST_F(ProgramTest, InspectFilterDecodesAndReportsTheStatus) {
    const std::string data = Write("data.txt", "414243 4>");
    Result r = Run("inspect filter --dict '<</Filter/ASCIIHexDecode>>' " + data);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "ABC\x40");
    EXPECT_EQ(r.err, "status: 0\n");
    // A failing filter still writes what it made, and the exit status says it failed.
    r = Run("inspect filter --dict '<</Filter[/ASCIIHexDecode/ASCIIHexDecode]>>' -o " +
            Path("out.bin") + " " + Write("bad.txt", "34317A>"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "status: 10022\n");
    EXPECT_EQ(ReadFileBytes(m_dir / "out.bin"), "A");
    r = Run("inspect filter --dict '<</Filter/LZWDecode>>' " + data);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "status: 10021\n");
    EXPECT_EQ(r.out, "414243 4>"); // the raw bytes, as no filter replaced them
    // The dictionary must be one; the option must be given.
    EXPECT_EQ(Run("inspect filter --dict '[1 2]' " + data).status, 2);
    EXPECT_EQ(Run("inspect filter " + data).status, 2);
}

} // namespace
