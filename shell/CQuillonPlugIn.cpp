#include "shell/CQuillonPlugIn.h"

#include "host/base/VmResources.h"

namespace {

constexpr GK_UUID kPlugInId{{0x5D, 0x2C, 0x7A, 0x14, 0x9E, 0x3B, 0x4C, 0x60, 0x8F, 0x1A, 0x2B, 0x6E,
                             0x07, 0xD4, 0xC3, 0x91}};

} // namespace

CQuillonPlugIn::CQuillonPlugIn() {
    versionString = GK_wString(__DATE__ "  " __TIME__);
    settingsPath = GK_wString(L"Plug-Ins\\5D2C7A14-9E3B-4C60-8F1A-2B6E07D4C391\\Settings");
    // The formats' defaults differ on purpose: EPS starts with zero scales (healed by the
    // dialog's guard) and without text.
    pdfOptions = ImportFormatOptions{};
    showMissingFontsDialog = false;
    aiOptions = ImportFormatOptions{};
    epsOptions = ImportFormatOptions{};
    epsOptions.importScale = 0.0;
    epsOptions.velmoScale = 0.0;
    epsOptions.loadText = false;
    pdfExtension = GK_wString(L"");
    aiExtension = GK_wString(L"");
    epsExtension = GK_wString(L"");
}

GK_UUID CQuillonPlugIn::PlugInGuid() const {
    return kPlugInId;
}

const wchar_t* CQuillonPlugIn::PlugInTitle() const {
    return L"Tarquil";
}

const wchar_t* CQuillonPlugIn::LocalisedPlugInTitle() const {
    return VmLocalizeString(L"Tarquil", 20000);
}

const wchar_t* CQuillonPlugIn::PlugInVersionText() const {
    return versionString;
}

int CQuillonPlugIn::OnLoadPlugIn() {
    return CVelmoFileImportSystemPlugIn::OnLoadPlugIn();
}

void CQuillonPlugIn::OnUnloadPlugIn() {
    CVelmoFileImportSystemPlugIn::OnUnloadPlugIn();
}

void CQuillonPlugIn::RegisterFileTypes(GK_ClassArray<CVelmoFileType>& fileTypes) {
    struct Format {
        GK_wString* extension;
        const wchar_t* text;
        const wchar_t* description;
        int context;
    };
    const Format formats[] = {
        {&pdfExtension, L"pdf", L"PDF (*.pdf)", 34894},
        {&aiExtension, L"ai", L"Adobe Illustrator (*.ai)", 34895},
        {&epsExtension, L"eps", L"Encapsulated PostScript (*.eps)", 34896},
    };
    for (const Format& f : formats) {
        *f.extension = GK_wString(f.text);
        fileTypes.Append(CVelmoFileType(PlugInGuid(), VmLocalizeString(f.description, f.context),
                                        *f.extension, true));
    }
}

void CQuillonPlugIn::ShowImportOptions(void* /*parent*/, const CVelmoFileType& fileType) {
    const GK_wString extension = fileType.ExtensionCount() > 0 ? fileType.Extension(0) : L"";
    int index = 0;
    if (extension.CompareNoCase(aiExtension) == 0)
        index = 1;
    else if (extension.CompareNoCase(epsExtension) == 0)
        index = 2;
    // Forced, so the dialog comes back even after "do not show again".
    (void)PromptForOptions(true, index, true);
}

ImportFormatOptions& CQuillonPlugIn::RecordFor(int formatIndex) {
    if (formatIndex == ImportFormatAi)
        return aiOptions;
    if (formatIndex == ImportFormatEps)
        return epsOptions;
    return pdfOptions;
}
