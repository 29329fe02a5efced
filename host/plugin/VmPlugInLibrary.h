#pragma once
// The host's loader of plug-in libraries. Only the exports (VelmoPlugInExports.h) and the
// plug-in interface (CVelmoPlugIn.h) cross between the host and the library, and nothing
// thrown crosses: every call into the library is guarded.
//
// Loading, in order: open the library (its static initialisation makes its application and
// plug-in objects), read the exports and refuse a library built for another plug-in interface
// or framework, find the one plug-in object and the application object, start the application
// (InitInstance), OnLoadPlugIn, RegisterFileTypes, LoadSettings.
// Unloading, in order: SaveSettings, OnUnloadPlugIn, ExitInstance, forget the library's
// registered resources, close the library. Nothing of the library is used after that.
#include "host/base/GK_Array.h"
#include "host/doc/GK_UUID.h"
#include "host/doc/SettingsContext.h"
#include "host/plugin/CVelmoPlugIn.h"
#include "host/plugin/VelmoPlugInExports.h"
#include "host/plugin/VmModuleObjects.h"

#include <string>

// The plug-in's identity, copied at load so that it can be reported after the unload.
struct VmPlugInIdentity {
    GK_UUID id{};
    std::wstring title;
    std::wstring localisedTitle;
    std::wstring versionText;
};

// The section of the settings store that belongs to a plug-in: its id as text.
std::wstring VmPlugInSettingsSection(const GK_UUID& plugInId);

class VmPlugInLibrary {
public:
    VmPlugInLibrary() = default;
    ~VmPlugInLibrary() { Unload(); }
    VmPlugInLibrary(const VmPlugInLibrary&) = delete;
    VmPlugInLibrary& operator=(const VmPlugInLibrary&) = delete;

    // Loads the library at `path` (a name without a slash is taken in the current folder, not
    // searched for) and starts its plug-in, its settings read from `settings`, which is
    // borrowed until Unload saves into it. False, with one line in `error`, when the library
    // is refused; then nothing of it stays loaded.
    [[nodiscard]] bool Load(const std::string& path, SettingsContext& settings, std::string& error);
    // Saves the settings and unloads; nothing when nothing is loaded. Failures of the plug-in
    // on the way out are reported as host messages, and the unload goes on.
    void Unload();

    bool IsLoaded() const { return m_handle != nullptr; }
    const std::string& Path() const { return m_path; }
    // Borrowed; valid until Unload, null when nothing is loaded.
    CVelmoFileImportPlugIn* PlugIn() const { return m_plugIn; }
    // What the library presented. Kept after Unload.
    const VelmoPlugInExports& Exports() const { return m_exports; }
    const VmPlugInIdentity& Identity() const { return m_identity; }
    const GK_ClassArray<CVelmoFileType>& FileTypes() const { return m_fileTypes; }

private:
    [[nodiscard]] bool Start(std::string& error);
    [[nodiscard]] bool ReadExports(std::string& error);
    void Close();

    std::string m_path;
    void* m_handle = nullptr;                   // of dlopen
    CVelmoFileImportPlugIn* m_plugIn = nullptr; // borrowed: owned by the library
    CWinApp* m_app = nullptr;                   // borrowed: owned by the library
    bool m_appStarted = false;
    bool m_plugInStarted = false;
    SettingsContext* m_settings = nullptr; // borrowed from Load's caller
    std::wstring m_section;
    VmModuleObjects m_objects;
    VelmoPlugInExports m_exports;
    VmPlugInIdentity m_identity;
    GK_ClassArray<CVelmoFileType> m_fileTypes;
};
