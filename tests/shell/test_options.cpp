#include "shell/CQuillonPlugIn.h"

#include "support/TestSupport.h"

#include "host/ui/VmDialogs.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Options : public ::testing::Test {
protected:
    void SetUp() override { tarquil::test::ResetHost(); }
    void TearDown() override {
        VmRegisterNamedCallback(L"ShowImportPDFDialog", {}); // back to the built-in dialog
        tarquil::test::ResetHost();
    }
    int CountKind(const char* kind) const {
        int n = 0;
        for (const VmMessage& m : VmMessages().Messages())
            n += m.kind == kind;
        return n;
    }
    std::wstring FirstPrompt() const {
        for (const VmMessage& m : VmMessages().Messages())
            if (m.kind == "prompt")
                return m.text;
        return L"";
    }
    CQuillonPlugIn plugIn;
};

TEST_F(Options, DefaultsDifferByFormat) {
    EXPECT_EQ(plugIn.pdfOptions.importScale, 1.0);
    EXPECT_EQ(plugIn.aiOptions.velmoScale, 1.0);
    EXPECT_TRUE(plugIn.aiOptions.loadText);
    EXPECT_EQ(plugIn.epsOptions.importScale, 0.0);
    EXPECT_EQ(plugIn.epsOptions.velmoScale, 0.0);
    EXPECT_FALSE(plugIn.epsOptions.loadText);
    EXPECT_FALSE(plugIn.showMissingFontsDialog);
    EXPECT_EQ(plugIn.currentFormatIndex, 0);
}

TEST_F(Options, DialogFillsDictionaryAndCancelsUnlessToldOk) {
    CVmParameterDictionary seen;
    VmRegisterNamedCallback(L"ShowImportPDFDialog", [&](CVmParameterDictionary& d) { seen = d; });
    plugIn.pdfOptions.importUnit = ImportUnitMm;
    plugIn.pdfOptions.boundaryCurves = true;
    const ImportFormatOptions before = plugIn.pdfOptions;
    EXPECT_EQ(plugIn.ShowOptionsDialog(3), 1); // nothing set: cancel
    int type = -1, units = -1, boundary = -1;
    bool weights = true, missing = true;
    EXPECT_TRUE(seen.GetInt(L"FileType", type));
    EXPECT_EQ(type, 3);
    EXPECT_TRUE(seen.GetInt(L"Units", units));
    EXPECT_EQ(units, ImportUnitMm);
    EXPECT_TRUE(seen.GetInt(L"BoundaryCurves", boundary));
    EXPECT_EQ(boundary, 1);
    EXPECT_TRUE(seen.GetBool(L"LineWeights", weights));
    EXPECT_FALSE(weights);
    EXPECT_TRUE(seen.GetBool(L"ShowMissingFontsDialog", missing));
    EXPECT_EQ(plugIn.pdfOptions.importUnit, before.importUnit);

    // The AI dialog carries no PDF-only keys; a nonzero "success" is returned as it is.
    VmRegisterNamedCallback(L"ShowImportPDFDialog", [&](CVmParameterDictionary& d) {
        seen = d;
        d.SetInt(L"success", 5);
    });
    EXPECT_EQ(plugIn.ShowOptionsDialog(1), 5);
    EXPECT_FALSE(seen.Has(L"LineWeights"));
    EXPECT_FALSE(seen.Has(L"ShowMissingFontsDialog"));
    // An index that names no format sends only the type and stores nothing.
    VmRegisterNamedCallback(L"ShowImportPDFDialog", [&](CVmParameterDictionary& d) {
        seen = d;
        d.SetInt(L"success", 0);
    });
    EXPECT_EQ(plugIn.ShowOptionsDialog(9), 0);
    EXPECT_EQ(seen.Values().size(), 1u); // FileType alone
}

TEST_F(Options, DialogOkStoresGuardsAndWarnsOnce) {
    // The built-in dialog answers from the script.
    VmUi().AddScriptAnswer({{"ImportScale", 0.0},
                            {"VelmoScale", 0.0},
                            {"Units", 2},
                            {"LoadText", true},
                            {"LineWeights", true},
                            {"DontShowDialog", true}});
    EXPECT_EQ(plugIn.ShowOptionsDialog(2), 0);
    EXPECT_EQ(plugIn.epsOptions.importScale, 1.0); // zero scales healed
    EXPECT_EQ(plugIn.epsOptions.velmoScale, 1.0);
    EXPECT_EQ(plugIn.epsOptions.importUnit, ImportUnitMm);
    EXPECT_TRUE(plugIn.epsOptions.loadText);
    EXPECT_TRUE(plugIn.epsOptions.importLineWeights); // read even for EPS
    EXPECT_TRUE(plugIn.epsOptions.dontShowDialog);
    // Keys the dialog was not given go to false.
    EXPECT_FALSE(plugIn.epsOptions.preserveUnits);
    EXPECT_FALSE(plugIn.epsOptions.boundaryCurves);
    ASSERT_EQ(CountKind("warning"), 1);

    // Ticking it again warns no more.
    VmUi().AddScriptAnswer({{"DontShowDialog", true}});
    EXPECT_EQ(plugIn.ShowOptionsDialog(2), 0);
    EXPECT_EQ(CountKind("warning"), 1);

    // With the flag set the non-forced dialog is skipped; forced, it shows.
    VmMessages().Clear();
    EXPECT_EQ(plugIn.PromptForOptions(true, 2, false), 0);
    EXPECT_EQ(CountKind("prompt"), 0);
    VmUi().AddScriptAnswer("<cancel>");
    EXPECT_EQ(plugIn.PromptForOptions(true, 2, true), 1);
    EXPECT_EQ(CountKind("prompt"), 1);
    // An unknown index returns at once.
    EXPECT_EQ(plugIn.PromptForOptions(true, 4, false), 0);
}

TEST_F(Options, ClearDontShowFlagsLeavesEps) {
    plugIn.pdfOptions.dontShowDialog = plugIn.aiOptions.dontShowDialog = true;
    plugIn.epsOptions.dontShowDialog = true;
    plugIn.ClearDontShowFlags();
    EXPECT_FALSE(plugIn.pdfOptions.dontShowDialog);
    EXPECT_FALSE(plugIn.aiOptions.dontShowDialog);
    EXPECT_TRUE(plugIn.epsOptions.dontShowDialog);
}

TEST_F(Options, CommandLinePromptStoresOnEnter) {
    VmUi().SetScript({"PreserveUnits=Yes", "AIScale=2.5", "Unit=mm", "VelmoScale=10",
                      "NoSuchOption", "<enter>"});
    EXPECT_EQ(plugIn.PromptForOptions(false, 1, false), 0);
    EXPECT_EQ(FirstPrompt(), L"Choose AI option <Enter> ( PreserveUnits=No ): ");
    EXPECT_TRUE(plugIn.aiOptions.preserveUnits);
    EXPECT_EQ(plugIn.aiOptions.importScale, 2.5);
    EXPECT_EQ(plugIn.aiOptions.importUnit, ImportUnitMm);
    EXPECT_EQ(plugIn.aiOptions.velmoScale, 10.0);
    EXPECT_FALSE(plugIn.pdfOptions.preserveUnits);

    // Cancel keeps the record as it was.
    VmUi().SetScript({"PreserveUnits", "<cancel>"});
    EXPECT_EQ(plugIn.PromptForOptions(false, 1, false), 1);
    EXPECT_TRUE(plugIn.aiOptions.preserveUnits);

    // Once the script has run out, the default is Enter.
    VmUi().SetScript({"PreserveUnits=No"});
    EXPECT_EQ(plugIn.PromptForOptions(false, 1, false), 0);
    EXPECT_FALSE(plugIn.aiOptions.preserveUnits);
}

TEST_F(Options, CommandLinePromptPerFormat) {
    // PDF: the line-weight toggle flips text loading, and line weights stay as they were.
    VmUi().SetScript({"ImportLineWeights", "<enter>"});
    EXPECT_EQ(plugIn.PromptForOptions(false, 0, false), 0);
    EXPECT_FALSE(plugIn.pdfOptions.loadText);
    EXPECT_FALSE(plugIn.pdfOptions.importLineWeights);
    EXPECT_EQ(
        FirstPrompt(),
        L"Choose PDF option <Enter> ( PreserveUnits=No LoadText=Yes ImportLineWeights=Yes ): ");

    // EPS has its own words and no text toggles.
    VmMessages().Clear();
    VmUi().SetScript({"PreserveUnits=Yes", "EPSScale=4", "LoadText", "<enter>"});
    EXPECT_EQ(plugIn.PromptForOptions(false, 2, false), 0);
    EXPECT_EQ(plugIn.epsOptions.importScale, 4.0);
    EXPECT_FALSE(plugIn.epsOptions.loadText);

    // AI(pdf) asks in its own words and writes the PDF record.
    VmMessages().Clear();
    VmUi().SetScript({"PreserveUnits=Yes", "AIScale=3", "<enter>"});
    EXPECT_EQ(plugIn.PromptForOptions(false, 3, false), 0);
    EXPECT_EQ(FirstPrompt().rfind(L"Choose AI(pdf) option", 0), 0u);
    EXPECT_EQ(plugIn.pdfOptions.importScale, 3.0);
    EXPECT_TRUE(plugIn.pdfOptions.preserveUnits);
    EXPECT_EQ(plugIn.aiOptions.importScale, 1.0);

    // An index that names no format reads the PDF record and stores nowhere.
    VmUi().SetScript({"PreserveUnits=No", "<enter>"});
    EXPECT_EQ(plugIn.PromptForOptions(false, 8, false), 0);
    EXPECT_TRUE(plugIn.pdfOptions.preserveUnits);
}

} // namespace
