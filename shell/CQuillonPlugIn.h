#pragma once
// The face of the importer library towards the host: the exports, which the host reads by name
// before it trusts the library, and the plug-in class, whose one object the library makes when
// it is loaded. Nothing else of the library is visible outside it.
#include "shell/ImportFormat.h"

#include "host/plugin/CVelmoPlugIn.h"

#define TARQUIL_EXPORT __attribute__((visibility("default")))

// They return constants and cannot fail. The two interface versions have their top bit set,
// hence unsigned.
extern "C" {
TARQUIL_EXPORT int VelmoPlugInMfcVersion();
TARQUIL_EXPORT int VelmoPlugInMscVersion();
TARQUIL_EXPORT bool VelmoPlugInUsesMfc();
TARQUIL_EXPORT unsigned int VelmoPlugInSdkVersion();
TARQUIL_EXPORT unsigned int VelmoPlugInSdkServiceRelease();
TARQUIL_EXPORT const wchar_t* VelmoPlugInDeveloperOrganization();
TARQUIL_EXPORT const wchar_t* VelmoPlugInDeveloperAddress();
TARQUIL_EXPORT const wchar_t* VelmoPlugInDeveloperCountry();
TARQUIL_EXPORT const wchar_t* VelmoPlugInDeveloperPhone();
TARQUIL_EXPORT const wchar_t* VelmoPlugInDeveloperFax();
TARQUIL_EXPORT const wchar_t* VelmoPlugInDeveloperEmail();
TARQUIL_EXPORT const wchar_t* VelmoPlugInDeveloperWebsite();
TARQUIL_EXPORT const wchar_t* VelmoPlugInUpdateURL();
}

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
