// The host's loader with small fake plug-in libraries: what it refuses and why, and the order
// of its calls into a library it takes.
#include "host/base/VmResources.h"
#include "host/plugin/VmPlugInLibrary.h"
#include "host/ui/VmMessages.h"
#include "support/TestSupport.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string Fake(const std::string& variant) {
    return TARQUIL_FAKE_PLUGINS "/libfake_plugin_" + variant + ".so";
}

// The calls the fake noted, in order.
std::vector<std::wstring> Calls() {
    std::vector<std::wstring> calls;
    for (const VmMessage& m : VmMessages().Messages())
        calls.push_back(m.text);
    return calls;
}

TEST(PlugInLoader, RefusesWhatIsNoPlugInOfThisHostAndKeepsNothingOfIt) {
    const tarquil::test::TempFile text("notalib.so", "just some text\n");
    const struct {
        std::string path, message;
    } cases[] = {
        {Fake("no_sdk"),
         "is not a plug-in for this host: it lacks the export VelmoPlugInSdkVersion"},
        {Fake("old_sdk"), "was built for the plug-in interface 0x8C006508, but this host has "
                          "0x8C006509; it is not loaded"},
        {Fake("no_object"), "holds no plug-in object"},
        {Fake("throws"), "failed in RegisterFileTypes: no file types today"},
        {text.Path().string(), "cannot load the plug-in: " + text.Path().string() + ": "},
        {"/no/such/folder/libplugin.so", "cannot open shared object file"},
    };
    std::vector<std::wstring> callsOfThrowing;
    for (const auto& c : cases) {
        tarquil::test::ResetHost();
        SettingsContext settings;
        VmPlugInLibrary library;
        std::string error;
        EXPECT_FALSE(library.Load(c.path, settings, error)) << c.path;
        EXPECT_NE(error.find(c.message), std::string::npos) << error;
        EXPECT_FALSE(library.IsLoaded());
        EXPECT_FALSE(tarquil::test::IsLibraryMapped(c.path)) << c.path;
        EXPECT_TRUE(settings.Sections().empty());
        if (c.path == Fake("throws"))
            callsOfThrowing = Calls();
    }
    // What was started is stopped again, in reverse, and no settings are exchanged; the
    // exception stayed on this side.
    EXPECT_EQ(callsOfThrowing,
              (std::vector<std::wstring>{L"InitInstance", L"OnLoadPlugIn", L"RegisterFileTypes",
                                         L"OnUnloadPlugIn", L"ExitInstance", L"~FakePlugIn"}));
}

TEST(PlugInLoader, StartsAndStopsALibraryInOrderAndForgetsItsResources) {
    tarquil::test::ResetHost();
    SettingsContext settings;
    VmPlugInLibrary library;
    std::string error;
    ASSERT_TRUE(library.Load(Fake("good"), settings, error)) << error;
    EXPECT_EQ(library.Exports().sdkServiceRelease, 1u);
    EXPECT_EQ(library.Exports().developerFax, L"VelmoPlugInDeveloperFax");
    ASSERT_EQ(library.FileTypes().Count(), 1);
    EXPECT_EQ(library.FileTypes()[0].Extension(0).str(), L"fake");
    EXPECT_EQ(library.Identity().title, L"Fake");

    // Its objects were made at the first load; a second load could not find them.
    VmPlugInLibrary twice;
    EXPECT_FALSE(twice.Load(Fake("good"), settings, error));
    EXPECT_NE(error.find("is already loaded"), std::string::npos) << error;

    // The resources it registered, found through a probe of the test's own.
    void* probe = dlopen(Fake("good").c_str(), RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(probe, nullptr);
    auto* instance = reinterpret_cast<void* (*)()>(dlsym(probe, "FakeModuleInstance"));
    void* module = instance ? instance() : nullptr;
    dlclose(probe);
    EXPECT_STREQ(VmFindResourceString(module, 1), L"fake text");

    library.Unload();
    EXPECT_FALSE(tarquil::test::IsLibraryMapped(Fake("good")));
    EXPECT_EQ(VmFindResourceString(module, 1), nullptr);
    EXPECT_EQ(library.PlugIn(), nullptr);
    EXPECT_EQ(library.Identity().title, L"Fake") << "kept for reports";
    int saved = 0;
    EXPECT_TRUE(settings.LoadInt(VmPlugInSettingsSection(GK_UUID::FromSerial(42)).c_str(), L"Saved",
                                 saved));
    EXPECT_EQ(Calls(), (std::vector<std::wstring>{
                           L"InitInstance", L"OnLoadPlugIn", L"RegisterFileTypes", L"LoadSettings",
                           L"SaveSettings", L"OnUnloadPlugIn", L"ExitInstance", L"~FakePlugIn"}));
}

} // namespace
