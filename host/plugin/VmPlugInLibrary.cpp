#include "host/plugin/VmPlugInLibrary.h"

#include "host/base/GK_String.h"
#include "host/base/VmResources.h"
#include "host/ui/CVelmoDialog.h"
#include "host/ui/CWinApp.h"
#include "host/ui/VmMessages.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

std::string Hex(unsigned int value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", value);
    return text;
}

// Runs one call into the library. Whatever it throws stays on this side: false, with what
// went wrong in `error`.
template <class Call>
bool Guarded(const std::string& path, const char* what, std::string& error, Call&& call) {
    try {
        call();
        return true;
    } catch (const std::exception& e) {
        error = "the plug-in " + path + " failed in " + what + ": " + e.what();
    } catch (...) {
        error = "the plug-in " + path + " failed in " + what;
    }
    return false;
}

// The start of the library's mapping, which dladdr reports for any address inside it.
const void* LibraryBase(void* handle) {
    link_map* map = nullptr;
    Dl_info info{};
    if (dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0 || !map || !dladdr(map->l_ld, &info))
        return nullptr;
    return info.dli_fbase;
}

bool InModule(const void* address, const void* module) {
    Dl_info info{};
    return address && module && dladdr(address, &info) && info.dli_fbase == module;
}

// An export of the library itself; null when it lacks it (one of the libraries it depends on
// does not count).
void* OwnExport(void* handle, const void* base, const char* name) {
    void* symbol = dlsym(handle, name);
    return InModule(symbol, base) ? symbol : nullptr;
}

void Report(const std::string& text) {
    VmMessages().Add("warning", L"", VmWideFromUtf8(text) + L"\n");
}

} // namespace

std::wstring VmPlugInSettingsSection(const GK_UUID& plugInId) {
    return VmWideFromUtf8(plugInId.ToString());
}

bool VmPlugInLibrary::Load(const std::string& path, SettingsContext& settings, std::string& error) {
    Unload();
    error.clear();
    m_path = path;
    m_exports = {};
    m_identity = {};
    m_fileTypes.Empty();
    // dlopen searches the library path for a bare name; a user who names a file means that file.
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;

    // Its objects were made at its first load; a second one would find none of its own.
    if (void* loaded = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
        dlclose(loaded);
        error = "the plug-in " + path + " is already loaded";
        return false;
    }
    {
        VmModuleLoadScope scope(m_objects);
        // Every symbol is bound now, so that a library which needs something this host lacks
        // is refused here instead of failing halfway through an import. For finding leaks:
        // the leak checker names the frames of a library only while it is mapped, and it runs
        // at exit, so the variable keeps libraries mapped after their unload (which then
        // cannot load again in the same process).
        const bool keepMapped = std::getenv("VELMO_KEEP_PLUGINS_MAPPED") != nullptr;
        m_handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | (keepMapped ? RTLD_NODELETE : 0));
    }
    if (!m_handle) {
        const char* why = dlerror();
        error = "cannot load the plug-in: " + std::string(why ? why : path);
        VmForgetModuleObjects(m_objects);
        return false;
    }
    m_settings = &settings;
    if (!Start(error)) {
        Close();
        return false;
    }
    return true;
}

bool VmPlugInLibrary::ReadExports(std::string& error) {
    const void* base = LibraryBase(m_handle);
    struct Text {
        const char* name;
        std::wstring VelmoPlugInExports::*field;
    };
    const Text texts[] = {
        {"VelmoPlugInDeveloperOrganization", &VelmoPlugInExports::developerOrganization},
        {"VelmoPlugInDeveloperAddress", &VelmoPlugInExports::developerAddress},
        {"VelmoPlugInDeveloperCountry", &VelmoPlugInExports::developerCountry},
        {"VelmoPlugInDeveloperPhone", &VelmoPlugInExports::developerPhone},
        {"VelmoPlugInDeveloperFax", &VelmoPlugInExports::developerFax},
        {"VelmoPlugInDeveloperEmail", &VelmoPlugInExports::developerEmail},
        {"VelmoPlugInDeveloperWebsite", &VelmoPlugInExports::developerWebsite},
        {"VelmoPlugInUpdateURL", &VelmoPlugInExports::updateUrl},
    };
    const char* missing = nullptr;
    auto find = [&](const char* name) {
        void* symbol = OwnExport(m_handle, base, name);
        if (!symbol && !missing)
            missing = name;
        return symbol;
    };
    // Function pointers from dlsym: the names carry the types, which the library's header
    // declares with the same signatures.
    auto* mfc = reinterpret_cast<VelmoPlugInIntExport>(find("VelmoPlugInMfcVersion"));
    auto* msc = reinterpret_cast<VelmoPlugInIntExport>(find("VelmoPlugInMscVersion"));
    auto* usesMfc = reinterpret_cast<VelmoPlugInBoolExport>(find("VelmoPlugInUsesMfc"));
    auto* sdk = reinterpret_cast<VelmoPlugInVersionExport>(find("VelmoPlugInSdkVersion"));
    auto* release =
        reinterpret_cast<VelmoPlugInVersionExport>(find("VelmoPlugInSdkServiceRelease"));
    VelmoPlugInTextExport textExports[std::size(texts)];
    for (std::size_t i = 0; i < std::size(texts); ++i)
        textExports[i] = reinterpret_cast<VelmoPlugInTextExport>(find(texts[i].name));
    if (missing) {
        error = m_path + " is not a plug-in for this host: it lacks the export " + missing;
        return false;
    }
    return Guarded(m_path, "its exports", error, [&] {
        m_exports.mfcVersion = mfc();
        m_exports.mscVersion = msc();
        m_exports.usesMfc = usesMfc();
        m_exports.sdkVersion = sdk();
        m_exports.sdkServiceRelease = release();
        for (std::size_t i = 0; i < std::size(texts); ++i) {
            const wchar_t* text = textExports[i]();
            m_exports.*texts[i].field = text ? text : L"";
        }
    });
}

bool VmPlugInLibrary::Start(std::string& error) {
    if (!ReadExports(error))
        return false;
    if (m_exports.sdkVersion != kVelmoSdkVersion) {
        error = m_path + " was built for the plug-in interface " + Hex(m_exports.sdkVersion) +
                ", but this host has " + Hex(kVelmoSdkVersion) + "; it is not loaded";
        return false;
    }
    if (m_exports.usesMfc && m_exports.mfcVersion != kVelmoFrameworkVersion) {
        error = m_path + " was built for the framework version " +
                Hex(static_cast<unsigned int>(m_exports.mfcVersion)) + ", but this host has " +
                Hex(kVelmoFrameworkVersion) + "; it is not loaded";
        return false;
    }
    if (m_objects.plugIns.size() != 1) {
        error = m_path + (m_objects.plugIns.empty()
                              ? std::string(" holds no plug-in object")
                              : " holds " + std::to_string(m_objects.plugIns.size()) +
                                    " plug-in objects, where one is expected");
        return false;
    }
    m_plugIn = dynamic_cast<CVelmoFileImportPlugIn*>(m_objects.plugIns.front());
    if (!m_plugIn) {
        error = m_path + " holds a plug-in that imports no files";
        return false;
    }
    if (m_objects.apps.size() > 1 || (m_exports.usesMfc && m_objects.apps.empty())) {
        error = m_path + " holds " + std::to_string(m_objects.apps.size()) +
                " application objects, where it says it uses the framework with one";
        return false;
    }
    if (!m_objects.apps.empty()) {
        m_app = m_objects.apps.front();
        bool started = false;
        if (!Guarded(m_path, "InitInstance", error, [&] { started = m_app->InitInstance(); }))
            return false;
        if (!started) {
            error = "the application object of " + m_path + " did not start";
            return false;
        }
        m_appStarted = true;
    }

    int loaded = CVelmoPlugIn::load_error_silent;
    if (!Guarded(m_path, "OnLoadPlugIn", error, [&] { loaded = m_plugIn->OnLoadPlugIn(); }))
        return false;
    if (loaded != CVelmoPlugIn::load_success) {
        error = "the plug-in " + m_path + " declined to load";
        return false;
    }
    m_plugInStarted = true;

    return Guarded(m_path, "its identity", error,
                   [&] {
                       auto text = [](const wchar_t* t) { return std::wstring(t ? t : L""); };
                       m_identity.id = m_plugIn->PlugInGuid();
                       m_identity.title = text(m_plugIn->PlugInTitle());
                       m_identity.localisedTitle = text(m_plugIn->LocalisedPlugInTitle());
                       m_identity.versionText = text(m_plugIn->PlugInVersionText());
                       m_section = VmPlugInSettingsSection(m_identity.id);
                   }) &&
           Guarded(m_path, "RegisterFileTypes", error,
                   [&] { m_plugIn->RegisterFileTypes(m_fileTypes); }) &&
           Guarded(m_path, "LoadSettings", error,
                   [&] { m_plugIn->LoadSettings(m_section.c_str(), *m_settings); });
}

void VmPlugInLibrary::Unload() {
    if (!m_handle)
        return;
    std::string error;
    if (m_plugInStarted && !Guarded(m_path, "SaveSettings", error, [&] {
            m_plugIn->SaveSettings(m_section.c_str(), *m_settings);
        }))
        Report(error);
    Close();
}

void VmPlugInLibrary::Close() {
    std::string error;
    if (m_plugInStarted &&
        !Guarded(m_path, "OnUnloadPlugIn", error, [&] { m_plugIn->OnUnloadPlugIn(); }))
        Report(error);
    if (m_appStarted && !Guarded(m_path, "ExitInstance", error, [&] { m_app->ExitInstance(); }))
        Report(error);
    m_plugIn = nullptr;
    m_app = nullptr;
    m_plugInStarted = m_appStarted = false;
    m_settings = nullptr;

    // The resources it registered point into its memory, which is about to go.
    const void* base = LibraryBase(m_handle);
    VmForgetStringTables(InModule, base);
    VmForgetDialogTemplates(InModule, base);
    if (dlclose(m_handle) != 0) {
        const char* why = dlerror();
        Report("the plug-in " + m_path + " did not unload: " + (why ? why : ""));
    }
    m_handle = nullptr;
    VmForgetModuleObjects(m_objects);
}
