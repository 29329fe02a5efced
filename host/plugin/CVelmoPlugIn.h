#pragma once
// Base classes of plug-ins, as the host loads and calls them.
#include "host/base/GK_Array.h"
#include "host/base/GK_String.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "host/doc/GK_UUID.h"
#include "host/doc/SettingsContext.h"
#include "host/geometry/GK_Object.h"

class CVelmoPlugIn : public GK_Object {
public:
    enum LoadReturnCode { load_error_silent = -1, load_error_show_dialog = 0, load_success = 1 };

    // A plug-in object is a global of its library; construction notes it with the library
    // being loaded (VmModuleObjects), which is how the host finds it.
    CVelmoPlugIn();
    ~CVelmoPlugIn() override;
    CVelmoPlugIn(const CVelmoPlugIn&) = delete;
    CVelmoPlugIn& operator=(const CVelmoPlugIn&) = delete;

    bool IsValid(GK_TextLog* = nullptr) const override { return true; }
    virtual GK_UUID PlugInGuid() const = 0;
    virtual const wchar_t* PlugInTitle() const = 0;
    virtual const wchar_t* LocalisedPlugInTitle() const { return PlugInTitle(); }
    virtual const wchar_t* PlugInVersionText() const = 0;
    virtual int OnLoadPlugIn() { return load_success; }
    virtual void OnUnloadPlugIn() {}
    virtual void LoadSettings(const wchar_t* /*section*/, SettingsContext& /*context*/) {}
    virtual void SaveSettings(const wchar_t* /*section*/, SettingsContext& /*context*/) {}
};

// One entry of the host's Open and Import dialogs.
class CVelmoFileType {
public:
    CVelmoFileType() = default;
    CVelmoFileType(const GK_UUID& plugInId, const wchar_t* description, const wchar_t* extension,
                   bool showInFileDialogs)
        : m_plugInId(plugInId), m_description(description), m_show(showInFileDialogs) {
        m_extensions.Append(GK_wString(extension));
    }
    const GK_UUID& PlugInId() const { return m_plugInId; }
    const GK_wString& Description() const { return m_description; }
    int ExtensionCount() const { return m_extensions.Count(); }
    const GK_wString& Extension(int index) const { return m_extensions[index]; }
    bool ShowInFileDialogs() const { return m_show; }

private:
    GK_UUID m_plugInId{};
    GK_wString m_description;
    GK_SimpleArray<GK_wString> m_extensions;
    bool m_show = true;
};

class CVelmoFileImportPlugIn : public CVelmoPlugIn {
public:
    ~CVelmoFileImportPlugIn() override;
    virtual void RegisterFileTypes(GK_ClassArray<CVelmoFileType>& fileTypes) = 0;
    // Returns 1 when the file was read, 0 when it failed or was cancelled.
    virtual int ImportFile(const wchar_t* path, int formatIndex, CVelmoDoc& doc,
                           const CVelmoFileReadOptions& options) = 0;
    virtual void ShowImportOptions(void* /*parent*/, const CVelmoFileType& /*fileType*/) {}
    virtual void ClearDontShowFlags() {}

    // The name of a table entry (a layer) that holds reference objects of the file being
    // read: "<file name> : <name>". False when no file is being read or the name is empty.
    bool MakeReferenceTableName(const wchar_t* name, GK_wString& result) const;

    // Set by the host around each read.
    void SetFileBeingRead(const wchar_t* path) { m_fileBeingRead = GK_wString(path); }

private:
    GK_wString m_fileBeingRead;
};

class CVelmoFileImportSystemPlugIn : public CVelmoFileImportPlugIn {
public:
    ~CVelmoFileImportSystemPlugIn() override;
};

// The host's read command: notes the file for the plug-in, runs its ImportFile, and turns
// anything thrown into a message so that nothing escapes into the host.
int VelmoReadFile(CVelmoFileImportPlugIn& plugIn, const wchar_t* path, int formatIndex,
                  CVelmoDoc& doc, const CVelmoFileReadOptions& options);

// The "Options" button of the host's Open and Import dialogs for one file type: the plug-in's
// ShowImportOptions, with anything thrown turned into a message. False when it threw.
[[nodiscard]] bool VelmoShowImportOptions(CVelmoFileImportPlugIn& plugIn,
                                          const CVelmoFileType& fileType);
