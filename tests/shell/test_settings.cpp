#include "shell/CQuillonPlugIn.h"

#include <gtest/gtest.h>

namespace {

const wchar_t* const kSection = L"Tarquil";

TEST(Settings, SavesTwentyFourKeysAndLineWeightsFromPdf) {
    CQuillonPlugIn saved;
    saved.aiOptions.importLineWeights = true; // lost: all three keys carry the PDF value
    saved.epsOptions.velmoScale = 2.5;
    saved.epsOptions.importUnit = ImportUnitPoint;
    saved.aiOptions.dontShowDialog = true;
    saved.pdfOptions.boundaryCurves = true;
    SettingsContext context;
    saved.SaveSettings(kSection, context);
    EXPECT_EQ(context.Sections().at(kSection).size(), 24u);

    CQuillonPlugIn loaded;
    loaded.LoadSettings(kSection, context);
    EXPECT_FALSE(loaded.aiOptions.importLineWeights);
    EXPECT_EQ(loaded.epsOptions.velmoScale, 2.5);
    EXPECT_EQ(loaded.epsOptions.importUnit, ImportUnitPoint);
    EXPECT_TRUE(loaded.aiOptions.dontShowDialog);
    EXPECT_TRUE(loaded.pdfOptions.boundaryCurves);
    EXPECT_FALSE(loaded.epsOptions.loadText);

    // With the PDF value set, every format reads it back.
    saved.pdfOptions.importLineWeights = true;
    saved.SaveSettings(kSection, context);
    loaded.LoadSettings(kSection, context);
    EXPECT_TRUE(loaded.aiOptions.importLineWeights);
    EXPECT_TRUE(loaded.epsOptions.importLineWeights);
}

TEST(Settings, LoadKeepsDefaultsForMissingKeys) {
    SettingsContext context;
    context.SaveDouble(kSection, L"AI_ImportScale", 4.0);
    context.SaveInt(kSection, L"PDF_ImportUnit", 9); // not checked on loading
    context.SaveInt(kSection, L"EPS_LoadText", 1);   // wrong type: not found
    CQuillonPlugIn plugIn;
    plugIn.LoadSettings(kSection, context);
    EXPECT_EQ(plugIn.aiOptions.importScale, 4.0);
    EXPECT_EQ(plugIn.aiOptions.velmoScale, 1.0);
    EXPECT_EQ(plugIn.pdfOptions.importUnit, 9);
    EXPECT_FALSE(plugIn.epsOptions.loadText);
    EXPECT_EQ(plugIn.epsOptions.importScale, 0.0);
    // Another section holds nothing for us.
    CQuillonPlugIn other;
    other.LoadSettings(L"Elsewhere", context);
    EXPECT_EQ(other.aiOptions.importScale, 1.0);
}

TEST(Settings, FileRoundTrip) {
    const std::string path = ::testing::TempDir() + "tarquil-settings-test/settings.json";
    CQuillonPlugIn saved;
    saved.pdfOptions.importScale = 0.1; // a value with no exact binary form survives
    SettingsContext out;
    saved.SaveSettings(kSection, out);
    ASSERT_TRUE(out.WriteFileAtomic(path));
    SettingsContext in;
    ASSERT_TRUE(in.ReadFile(path));
    CQuillonPlugIn loaded;
    loaded.LoadSettings(kSection, in);
    EXPECT_EQ(loaded.pdfOptions.importScale, 0.1);
    // A damaged store reads as empty and says so.
    {
        FILE* f = std::fopen(path.c_str(), "wb");
        std::fputs("{ not json", f);
        std::fclose(f);
    }
    std::string error;
    EXPECT_FALSE(in.ReadFile(path, &error));
    EXPECT_FALSE(error.empty());
    EXPECT_TRUE(in.Sections().empty());
}

} // namespace
