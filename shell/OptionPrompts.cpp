// Asking for a format's options: the host's dialog, reached by a named callback, or the
// command-line prompt.
#include "shell/CQuillonPlugIn.h"

#include "host/base/VmResources.h"
#include "host/ui/CVelmoGet.h"
#include "host/ui/VmDialogs.h"

namespace {

// Null for an index that names no format.
ImportFormatOptions* DialogRecord(CQuillonPlugIn& plugIn, int formatIndex) {
    switch (formatIndex) {
    case ImportFormatPdf:
    case ImportFormatAiPdf:
        return &plugIn.pdfOptions;
    case ImportFormatAi:
        return &plugIn.aiOptions;
    case ImportFormatEps:
        return &plugIn.epsOptions;
    default:
        return nullptr;
    }
}

const wchar_t* FormatLabel(int formatIndex) {
    switch (formatIndex) {
    case ImportFormatAi:
        return VmLocalizeString(L"AI", 24500);
    case ImportFormatEps:
        return VmLocalizeString(L"EPS", 40380);
    case ImportFormatAiPdf:
        return VmLocalizeString(L"AI(pdf)", 44017);
    default:
        return VmLocalizeString(L"PDF", 24499);
    }
}

} // namespace

int CQuillonPlugIn::PromptForOptions(bool useDialog, int formatIndex, bool force) {
    if (useDialog) {
        if (force)
            return ShowOptionsDialog(formatIndex);
        const ImportFormatOptions* record = DialogRecord(*this, formatIndex);
        if (!record || record->dontShowDialog)
            return 0;
        return ShowOptionsDialog(formatIndex);
    }

    // The command line works on a copy; only Enter (or any end but cancel) stores it.
    ImportFormatOptions local = RecordFor(formatIndex);

    const wchar_t* prompt = VmLocalizeString(L"Choose PDF option", 24495);
    CVelmoCommandOptionName scaleName = VmLocalizeCommandOptionName(L"PDFScale", 24497);
    if (formatIndex == ImportFormatAi) {
        prompt = VmLocalizeString(L"Choose AI option", 24496);
        scaleName = VmLocalizeCommandOptionName(L"AIScale", 20033);
    } else if (formatIndex == ImportFormatEps) {
        prompt = VmLocalizeString(L"Choose EPS option", 40378);
        scaleName = VmLocalizeCommandOptionName(L"EPSScale", 40379);
    } else if (formatIndex == ImportFormatAiPdf) {
        prompt = VmLocalizeString(L"Choose AI(pdf) option", 44016);
        scaleName = VmLocalizeCommandOptionName(L"AIScale", 20033);
    }

    GK_ClassArray<CVelmoCommandOptionValue> units;
    units.Append(VmLocalizeCommandOptionValue(L"inch", 20019));
    units.Append(VmLocalizeCommandOptionValue(L"cm", 20016));
    units.Append(VmLocalizeCommandOptionValue(L"mm", 20017));
    units.Append(VmLocalizeCommandOptionValue(L"point", 20018));
    const CVelmoCommandOptionValue no = VmLocalizeCommandOptionValue(L"No", 20027);
    const CVelmoCommandOptionValue yes = VmLocalizeCommandOptionValue(L"Yes", 20028);

    CVelmoGetOption get;
    get.SetCommandPrompt(prompt);
    get.AcceptNothing(true);
    for (;;) {
        get.ClearCommandOptions();
        get.AddCommandOptionToggle(VmLocalizeCommandOptionName(L"PreserveUnits", 20031), no, yes,
                                   &local.preserveUnits);
        int unitOption = -1;
        if (local.preserveUnits) {
            get.AddCommandOptionNumber(scaleName, &local.importScale);
            unitOption = get.AddCommandOptionList(VmLocalizeCommandOptionName(L"Unit", 20034),
                                                  units, local.importUnit);
            get.AddCommandOptionNumber(VmLocalizeCommandOptionName(L"VelmoScale", 20035),
                                       &local.velmoScale);
        }
        if (formatIndex == ImportFormatPdf || formatIndex == ImportFormatAiPdf) {
            get.AddCommandOptionToggle(VmLocalizeCommandOptionName(L"LoadText", 24498), no, yes,
                                       &local.loadText);
            // Bound to loadText as well: this toggle flips text loading, and line weights
            // cannot be changed from the command line. Kept as users know it.
            get.AddCommandOptionToggle(VmLocalizeCommandOptionName(L"ImportLineWeights", 54641), no,
                                       yes, &local.loadText);
        }

        const CVelmoGet::result result = get.GetOption();
        if (result == CVelmoGet::option) {
            const CVelmoCommandOption* chosen = get.Option();
            if (!chosen)
                return 3;
            if (chosen->m_option_index == unitOption)
                local.importUnit = chosen->m_list_option_current;
            continue; // toggles and numbers wrote through their bindings
        }
        if (result == CVelmoGet::cancel)
            return 1;
        break; // Enter, or any other end, accepts
    }

    ImportFormatOptions* target = DialogRecord(*this, formatIndex);
    if (target) {
        target->importScale = local.importScale;
        target->velmoScale = local.velmoScale;
        target->loadText = local.loadText;
        target->boundaryCurves = local.boundaryCurves;
        target->importLineWeights = local.importLineWeights;
        target->preserveUnits = local.preserveUnits;
        target->importUnit = local.importUnit;
    }
    return 0;
}

int CQuillonPlugIn::ShowOptionsDialog(int formatIndex) {
    CVmParameterDictionary dictionary;
    dictionary.SetInt(L"FileType", formatIndex);
    ImportFormatOptions* record = DialogRecord(*this, formatIndex);
    const bool isPdf = formatIndex == ImportFormatPdf || formatIndex == ImportFormatAiPdf;
    if (record) {
        dictionary.SetDouble(L"ImportScale", record->importScale);
        dictionary.SetDouble(L"VelmoScale", record->velmoScale);
        dictionary.SetBool(L"LoadText", record->loadText);
        dictionary.SetInt(L"BoundaryCurves", record->boundaryCurves ? 1 : 0);
        if (isPdf)
            dictionary.SetBool(L"LineWeights", record->importLineWeights);
        dictionary.SetInt(L"PreserveUnits", record->preserveUnits ? 1 : 0);
        dictionary.SetInt(L"Units", record->importUnit);
        dictionary.SetBool(L"DontShowDialog", record->dontShowDialog);
        if (isPdf)
            dictionary.SetBool(L"ShowMissingFontsDialog", showMissingFontsDialog);
    }

    VmExecuteNamedCallback(L"ShowImportPDFDialog", dictionary);

    // Nonzero stops the import, whatever the key's name suggests: only an explicit 0 is OK,
    // so a dialog that sets nothing cancels.
    int success = 1;
    dictionary.GetInt(L"success", success);
    if (success != 0)
        return success;
    if (!record)
        return 0;

    bool dontShow = false;
    dictionary.GetBool(L"DontShowDialog", dontShow);
    if (!record->dontShowDialog && dontShow)
        VmPluginOptionIOWarningDialog(FormatLabel(formatIndex), false);

    // Zero scales would make a division by zero; this is what heals the EPS defaults.
    double scale = 0.0;
    if (dictionary.GetDouble(L"ImportScale", scale) && scale == 0.0)
        dictionary.SetDouble(L"ImportScale", 1.0);
    if (dictionary.GetDouble(L"VelmoScale", scale) && scale == 0.0)
        dictionary.SetDouble(L"VelmoScale", 1.0);

    dictionary.GetDouble(L"ImportScale", record->importScale);
    dictionary.GetInt(L"Units", record->importUnit);
    int preserve = 0;
    dictionary.GetInt(L"PreserveUnits", preserve);
    record->preserveUnits = preserve == 1;
    dictionary.GetDouble(L"VelmoScale", record->velmoScale);
    dictionary.GetBool(L"LoadText", record->loadText);
    int boundary = 0;
    dictionary.GetInt(L"BoundaryCurves", boundary);
    record->boundaryCurves = boundary == 1;
    dictionary.GetBool(L"LineWeights", record->importLineWeights);
    dictionary.GetBool(L"DontShowDialog", record->dontShowDialog);
    if (isPdf)
        dictionary.GetBool(L"ShowMissingFontsDialog", showMissingFontsDialog);
    return 0;
}

void CQuillonPlugIn::ClearDontShowFlags() {
    // EPS keeps its flag; users have relied on that.
    pdfOptions.dontShowDialog = false;
    aiOptions.dontShowDialog = false;
}
