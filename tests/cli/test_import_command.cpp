#include "cli/ImportCommand.h"
#include "cli/SettingsStore.h"
#include "cli/UsageError.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace {

using tarquil::test::TempFile;

TEST(ImportCommand, FormatIndexFromTypeOrExtension) {
    EXPECT_EQ(FormatIndexFor("", "drawing.pdf"), 0);
    EXPECT_EQ(FormatIndexFor("", "drawing.ai"), 1);
    EXPECT_EQ(FormatIndexFor("", "drawing.AI"), 1);
    EXPECT_EQ(FormatIndexFor("", "/a/b/Drawing.Eps"), 2);
    EXPECT_EQ(FormatIndexFor("", "drawing.svg"), 0);
    EXPECT_EQ(FormatIndexFor("", "drawing"), 0);
    EXPECT_EQ(FormatIndexFor("", "dir.ai/drawing"), 0); // a dot in a folder is no extension
    EXPECT_EQ(FormatIndexFor("", "archive.eps.pdf"), 0);
    // An explicit type wins over the extension.
    EXPECT_EQ(FormatIndexFor("eps", "drawing.ai"), 2);
    EXPECT_EQ(FormatIndexFor("AI", "drawing.pdf"), 1);
    EXPECT_EQ(FormatIndexFor("pdf", "drawing.eps"), 0);
}

TEST(ImportCommand, AnswersFileMustHoldAList) {
    const TempFile good("answers.json", R"(["PreserveUnits=Yes", {"ImportScale": 2.0}, null])");
    const nlohmann::json answers = ReadAnswersFile(good.Path().string());
    ASSERT_EQ(answers.size(), 3u);
    EXPECT_EQ(answers[0], "PreserveUnits=Yes");
    EXPECT_EQ(answers[1]["ImportScale"], 2.0);

    const TempFile object("object.json", R"({"ImportScale": 2.0})");
    const TempFile broken("broken.json", R"(["unterminated)");
    EXPECT_THROW(ReadAnswersFile(object.Path().string()), UsageError);
    EXPECT_THROW(ReadAnswersFile(broken.Path().string()), UsageError);
    EXPECT_THROW(ReadAnswersFile(good.Path().string() + ".missing"), UsageError);
}

TEST(SettingsStore, PathFromOptionOrEnvironment) {
    std::map<std::string, std::string> env;
    const EnvironmentLookup lookup = [&env](const char* name) -> const char* {
        const auto it = env.find(name);
        return it == env.end() ? nullptr : it->second.c_str();
    };
    EXPECT_EQ(ResolveSettingsPath("", lookup), std::nullopt);
    env["HOME"] = "/home/u";
    EXPECT_EQ(ResolveSettingsPath("", lookup), "/home/u/.config/tarquil/settings.json");
    env["XDG_CONFIG_HOME"] = "relative/ignored";
    EXPECT_EQ(ResolveSettingsPath("", lookup), "/home/u/.config/tarquil/settings.json");
    env["XDG_CONFIG_HOME"] = "/cfg";
    EXPECT_EQ(ResolveSettingsPath("", lookup), "/cfg/tarquil/settings.json");
    EXPECT_EQ(ResolveSettingsPath("my.json", lookup), "my.json");
    EXPECT_EQ(ResolveSettingsPath("none", lookup), std::nullopt);
}

TEST(SettingsStore, KeepsOtherSectionsAndSparesDamagedFiles) {
    const TempFile file("settings.json", "");
    const std::string path = file.Path().string();
    SettingsContext context;
    context.SaveInt(L"other", L"Keep", 7);
    context.SaveDouble(L"plug-in", L"AI_VelmoScale", 2.5);
    ASSERT_TRUE(context.WriteFileAtomic(path));

    std::ostringstream warnings;
    SettingsStore store(path);
    store.Read(warnings);
    double scale = 0.0;
    EXPECT_TRUE(store.Context().LoadDouble(L"plug-in", L"AI_VelmoScale", scale) && scale == 2.5);
    store.Context().SaveInt(L"plug-in", L"EPS_ImportUnit", 2);
    EXPECT_TRUE(store.Write(warnings));
    EXPECT_EQ(warnings.str(), "");
    ASSERT_TRUE(context.ReadFile(path));
    int kept = 0, unit = 0;
    EXPECT_TRUE(context.LoadInt(L"other", L"Keep", kept) && kept == 7);
    EXPECT_TRUE(context.LoadInt(L"plug-in", L"EPS_ImportUnit", unit) && unit == 2);

    // A damaged file gives a warning and is left as it was.
    const TempFile damaged("damaged.json", "{ not json");
    SettingsStore spared(damaged.Path().string());
    spared.Read(warnings);
    EXPECT_NE(warnings.str().find("damaged"), std::string::npos) << warnings.str();
    spared.Context().SaveInt(L"plug-in", L"EPS_ImportUnit", 1);
    EXPECT_TRUE(spared.Write(warnings));
    EXPECT_EQ(tarquil::test::ReadFileBytes(damaged.Path()), "{ not json");
}

} // namespace
