// The option records in the host's settings store: one key per format and field.
#include "shell/CQuillonPlugIn.h"

#include <string>

namespace {
const wchar_t* const kPrefixes[] = {L"PDF_", L"AI_", L"EPS_"};

std::wstring Key(int format, const wchar_t* field) {
    return std::wstring(kPrefixes[format]) + field;
}
} // namespace

void CQuillonPlugIn::LoadSettings(const wchar_t* section, SettingsContext& context) {
    ImportFormatOptions* records[] = {&pdfOptions, &aiOptions, &epsOptions};
    // A field changes only when its key was found, so unsaved keys keep the defaults.
    for (int f = 0; f < 3; ++f)
        context.LoadDouble(section, Key(f, L"VelmoScale").c_str(), records[f]->velmoScale);
    for (int f = 0; f < 3; ++f)
        context.LoadDouble(section, Key(f, L"ImportScale").c_str(), records[f]->importScale);
    for (int f = 0; f < 3; ++f)
        context.LoadBool(section, Key(f, L"PreserveUnits").c_str(), records[f]->preserveUnits);
    for (int f = 0; f < 3; ++f)
        context.LoadBool(section, Key(f, L"LoadText").c_str(), records[f]->loadText);
    for (int f = 0; f < 3; ++f)
        context.LoadBool(section, Key(f, L"BoundaryCurves").c_str(), records[f]->boundaryCurves);
    for (int f = 0; f < 3; ++f)
        context.LoadBool(section, Key(f, L"ImportLineWeights").c_str(),
                         records[f]->importLineWeights);
    for (int f = 0; f < 3; ++f)
        context.LoadBool(section, Key(f, L"DontShowDialog").c_str(), records[f]->dontShowDialog);
    for (int f = 0; f < 3; ++f)
        context.LoadInt(section, Key(f, L"ImportUnit").c_str(), records[f]->importUnit);
}

void CQuillonPlugIn::SaveSettings(const wchar_t* section, SettingsContext& context) {
    const ImportFormatOptions* records[] = {&pdfOptions, &aiOptions, &epsOptions};
    for (int f = 0; f < 3; ++f)
        context.SaveDouble(section, Key(f, L"VelmoScale").c_str(), records[f]->velmoScale);
    for (int f = 0; f < 3; ++f)
        context.SaveDouble(section, Key(f, L"ImportScale").c_str(), records[f]->importScale);
    for (int f = 0; f < 3; ++f)
        context.SaveBool(section, Key(f, L"PreserveUnits").c_str(), records[f]->preserveUnits);
    for (int f = 0; f < 3; ++f)
        context.SaveBool(section, Key(f, L"LoadText").c_str(), records[f]->loadText);
    for (int f = 0; f < 3; ++f)
        context.SaveBool(section, Key(f, L"BoundaryCurves").c_str(), records[f]->boundaryCurves);
    // All three line-weight keys carry the PDF record's value: the AI and EPS values do not
    // survive a restart on their own. Kept so, since stored settings depend on it.
    for (int f = 0; f < 3; ++f)
        context.SaveBool(section, Key(f, L"ImportLineWeights").c_str(),
                         pdfOptions.importLineWeights);
    for (int f = 0; f < 3; ++f)
        context.SaveBool(section, Key(f, L"DontShowDialog").c_str(), records[f]->dontShowDialog);
    for (int f = 0; f < 3; ++f)
        context.SaveInt(section, Key(f, L"ImportUnit").c_str(), records[f]->importUnit);
}
