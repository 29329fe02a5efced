#pragma once
// The plug-in object: identity, file types, option records, and the import entry.
#include "shell/ImportFormat.h"

#include "host/plugin/CVelmoPlugIn.h"

class CQuillonPlugIn : public CVelmoFileImportSystemPlugIn {
public:
    CQuillonPlugIn();
    ~CQuillonPlugIn() override = default;

    GK_UUID PlugInGuid() const override;
    const wchar_t* PlugInTitle() const override;
    const wchar_t* LocalisedPlugInTitle() const override;
    const wchar_t* PlugInVersionText() const override;
    int OnLoadPlugIn() override;
    void OnUnloadPlugIn() override;
    void LoadSettings(const wchar_t* section, SettingsContext& context) override;
    void SaveSettings(const wchar_t* section, SettingsContext& context) override;
    void ClearDontShowFlags() override;
    void RegisterFileTypes(GK_ClassArray<CVelmoFileType>& fileTypes) override;
    int ImportFile(const wchar_t* path, int formatIndex, CVelmoDoc& doc,
                   const CVelmoFileReadOptions& options) override;
    void ShowImportOptions(void* parent, const CVelmoFileType& fileType) override;

    // 0 to go on with the import, nonzero when the user cancelled.
    [[nodiscard]] int PromptForOptions(bool useDialog, int formatIndex, bool force);
    [[nodiscard]] int ShowOptionsDialog(int formatIndex);

    int ReadLegacyRoute(const wchar_t* path, CVelmoDoc& doc, const CVelmoFileReadOptions& options);
    int ReadPdfRoute(const wchar_t* path, CVelmoDoc& doc, const CVelmoFileReadOptions& options);

    // The record that a format index reads: 1 AI, 2 EPS, everything else PDF.
    ImportFormatOptions& RecordFor(int formatIndex);

    GK_wString pdfExtension;
    GK_wString aiExtension;
    GK_wString epsExtension;
    GK_wString versionString;
    GK_wString settingsPath;
    ImportFormatOptions pdfOptions;
    bool showMissingFontsDialog = false;
    ImportFormatOptions aiOptions;
    ImportFormatOptions epsOptions;
    int currentFormatIndex = 0;
};

// The one plug-in object of the library.
CQuillonPlugIn& ThePlugIn();

// The module handle under which the plug-in's string table is registered.
void* QuillonModuleInstance();
