// The importer library as the host loads it: its exports, identity and file types, its
// options button, a whole load-import-unload-load cycle, and what its symbol table shows.
#include "host/plugin/VmPlugInLibrary.h"
#include "host/ui/VmDialogs.h"
#include "shell/CQuillonPlugIn.h" // the declarations of the exports only; nothing is linked
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

// The library's header and the host's loader agree on every export's type.
static_assert(std::is_same_v<decltype(&VelmoPlugInMfcVersion), VelmoPlugInIntExport>);
static_assert(std::is_same_v<decltype(&VelmoPlugInMscVersion), VelmoPlugInIntExport>);
static_assert(std::is_same_v<decltype(&VelmoPlugInUsesMfc), VelmoPlugInBoolExport>);
static_assert(std::is_same_v<decltype(&VelmoPlugInSdkVersion), VelmoPlugInVersionExport>);
static_assert(std::is_same_v<decltype(&VelmoPlugInSdkServiceRelease), VelmoPlugInVersionExport>);
static_assert(std::is_same_v<decltype(&VelmoPlugInDeveloperOrganization), VelmoPlugInTextExport>);
static_assert(std::is_same_v<decltype(&VelmoPlugInUpdateURL), VelmoPlugInTextExport>);
static_assert(sizeof(int) == 4 && sizeof(unsigned int) == 4);

const std::string kPlugIn = TARQUIL_PLUGIN;
const std::wstring kSection = L"5d2c7a14-9e3b-4c60-8f1a-2b6e07d4c391";
using tarquil::test::CommandOutput;

TEST(ImporterLibrary, ExportsIdentityAndFileTypes) {
    SettingsContext settings;
    VmPlugInLibrary library;
    std::string error;
    ASSERT_TRUE(library.Load(kPlugIn, settings, error)) << error;
    const VelmoPlugInExports& e = library.Exports();
    EXPECT_EQ(e.mfcVersion, 3584);
    EXPECT_EQ(e.mscVersion, 1929);
    EXPECT_TRUE(e.usesMfc);
    EXPECT_EQ(e.sdkVersion, 0x8C006509u);
    EXPECT_EQ(e.sdkServiceRelease, 0x908C9905u);
    EXPECT_EQ(e.developerOrganization, L"Tarquil team");
    for (const std::wstring* text :
         {&e.developerAddress, &e.developerCountry, &e.developerPhone, &e.developerFax,
          &e.developerEmail, &e.developerWebsite, &e.updateUrl})
        EXPECT_FALSE(text->empty());

    const VmPlugInIdentity& id = library.Identity();
    EXPECT_EQ(id.id.ToString(), "5d2c7a14-9e3b-4c60-8f1a-2b6e07d4c391");
    EXPECT_EQ(id.title, L"Tarquil");
    EXPECT_EQ(id.localisedTitle, L"Tarquil");
    // The build's date and time: "Mmm dd yyyy  hh:mm:ss", the day padded with a blank.
    EXPECT_TRUE(std::regex_match(VmUtf8FromWide(id.versionText),
                                 std::regex("[A-Z][a-z]{2} [ 1-3][0-9] [0-9]{4}  "
                                            "[0-2][0-9]:[0-5][0-9]:[0-6][0-9]")))
        << VmUtf8FromWide(id.versionText);

    const struct {
        const wchar_t* extension;
        const wchar_t* description;
    } expected[] = {{L"pdf", L"PDF (*.pdf)"},
                    {L"ai", L"Adobe Illustrator (*.ai)"},
                    {L"eps", L"Encapsulated PostScript (*.eps)"}};
    const auto& types = library.FileTypes();
    ASSERT_EQ(types.Count(), 3);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(types[i].ExtensionCount(), 1);
        EXPECT_EQ(types[i].Extension(0).str(), expected[i].extension);
        EXPECT_EQ(types[i].Description().str(), expected[i].description);
        EXPECT_EQ(types[i].PlugInId(), id.id);
        EXPECT_TRUE(types[i].ShowInFileDialogs());
    }
}

TEST(ImporterLibrary, OptionsButtonPicksTheRecordByExtensionAndAlwaysShowsTheDialog) {
    tarquil::test::ResetHost();
    // "Do not show again" everywhere: the button shows the dialog all the same.
    SettingsContext settings;
    for (const wchar_t* key : {L"PDF_DontShowDialog", L"AI_DontShowDialog", L"EPS_DontShowDialog"})
        settings.SaveBool(kSection.c_str(), key, true);
    // The host's dialog: notes the file type, and takes a scale for EPS only.
    std::vector<int> shown;
    VmRegisterNamedCallback(L"ShowImportPDFDialog", [&shown](CVmParameterDictionary& d) {
        int type = -1;
        d.GetInt(L"FileType", type);
        shown.push_back(type);
        if (type == 2) {
            d.SetDouble(L"ImportScale", 2.5);
            d.SetInt(L"success", 0);
        }
    });
    VmPlugInLibrary library;
    std::string error;
    ASSERT_TRUE(library.Load(kPlugIn, settings, error)) << error;
    const GK_UUID id = library.Identity().id;
    for (const auto& type : library.FileTypes())
        EXPECT_TRUE(VelmoShowImportOptions(*library.PlugIn(), type));
    // An extension of no registered type reads the PDF record; case does not matter.
    EXPECT_TRUE(VelmoShowImportOptions(*library.PlugIn(), CVelmoFileType(id, L"", L"svg", true)));
    EXPECT_TRUE(VelmoShowImportOptions(*library.PlugIn(), CVelmoFileType(id, L"", L"AI", true)));
    library.Unload();
    VmRegisterNamedCallback(L"ShowImportPDFDialog", {});

    EXPECT_EQ(shown, (std::vector<int>{0, 1, 2, 0, 1}));
    double scale = 0.0;
    EXPECT_TRUE(settings.LoadDouble(kSection.c_str(), L"EPS_ImportScale", scale));
    EXPECT_EQ(scale, 2.5) << "saved at the unload, as after an import";
}

// Under the sanitizers this also shows that a load, an import and an unload leak nothing.
TEST(ImporterLibrary, LoadImportUnloadAndLoadAgain) {
    tarquil::test::ResetHost();
    SettingsContext settings;
    CVelmoDoc doc;
    {
        VmPlugInLibrary library;
        std::string error;
        ASSERT_TRUE(library.Load(kPlugIn, settings, error)) << error;
        CVelmoFileReadOptions options;
        GK_ArchivableDictionary& script = options.OptionsDictionary();
        script.SetBool(L"PreserveModelScale", true);
        script.SetInt32(L"AiUnits", 3);
        script.SetDouble(L"AiScale", 1.0);
        script.SetDouble(L"VelmoScale", 2.0);
        const std::wstring file = VmWideFromUtf8(TARQUIL_TEST_DATA "/cli/lines.ai");
        EXPECT_EQ(VelmoReadFile(*library.PlugIn(), file.c_str(), 1, doc, options), 1);
    }
    EXPECT_FALSE(tarquil::test::IsLibraryMapped(kPlugIn)) << "the library is really gone";

    // The objects the plug-in made are the host's and work without it.
    ASSERT_EQ(doc.ObjectCount(), 3);
    for (int i = 0; i < doc.ObjectCount(); ++i) {
        EXPECT_EQ(doc.Object(i).ObjectKind(), CVelmoObject::curve_object);
        EXPECT_TRUE(doc.Object(i).Geometry()->BoundingBox().IsValid());
    }
    // The scripted values went into the AI record, which the unload saved.
    double scale = 0.0;
    EXPECT_TRUE(settings.LoadDouble(kSection.c_str(), L"AI_VelmoScale", scale));
    EXPECT_EQ(scale, 2.0);

    // A fresh library: made again at load, with the saved settings.
    settings.SaveInt(kSection.c_str(), L"EPS_ImportUnit", 2);
    VmPlugInLibrary again;
    std::string error;
    ASSERT_TRUE(again.Load(kPlugIn, settings, error)) << error;
    EXPECT_EQ(again.FileTypes().Count(), 3);
    again.Unload();
    int unit = 0;
    EXPECT_TRUE(settings.LoadInt(kSection.c_str(), L"EPS_ImportUnit", unit));
    EXPECT_EQ(unit, 2);
}

TEST(ImporterLibrary, ShowsOnlyItsExportsAndCopiesNothingOfTheHost) {
    // Its exports and nothing else: the loader has shown that all thirteen are there.
    std::istringstream dynamic(
        CommandOutput("nm -D --defined-only --format=posix '" + kPlugIn + "'"));
    int exported = 0;
    for (std::string line; std::getline(dynamic, line); ++exported)
        EXPECT_EQ(line.rfind("VelmoPlugIn", 0), 0u) << line;
    EXPECT_EQ(exported, 13);

    // A vtable, type information or variable of the host's inside the library is a second copy
    // of something the host has once: objects made with it would not outlive the library.
    auto isHostName = [](const std::string& name) {
        for (const char* prefix : {"GK_", "CVelmo", "CVm", "Vm", "Velmo", "CWinApp", "Settings"})
            if (name.rfind(prefix, 0) == 0)
                return true;
        return false;
    };
    const std::string symbols = CommandOutput("nm -C --defined-only '" + kPlugIn + "'");
    std::istringstream lines(symbols);
    std::string copies;
    for (std::string address, type, name; lines >> address >> type && std::getline(lines, name);) {
        name.erase(0, 1);
        std::string entity = name;
        for (const char* kind :
             {"vtable for ", "typeinfo for ", "typeinfo name for ", "guard variable for "})
            if (name.rfind(kind, 0) == 0)
                entity = name.substr(std::strlen(kind));
        const bool variable = std::string("bBdDvV").find(type) != std::string::npos;
        if (isHostName(entity) && (variable || entity != name))
            copies += type + " " + name + "\n";
    }
    EXPECT_EQ(copies, "");
    EXPECT_NE(symbols.find("CQuillonPlugIn"), std::string::npos) << "symbols were read";

    // And the program has no importer of its own: what it runs is the library.
    EXPECT_EQ(CommandOutput("nm -C '" TARQUIL_PROGRAM "' | grep -c CQuillonPlugIn"), "0\n");
}

} // namespace
