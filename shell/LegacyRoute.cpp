// The read of PostScript-based Illustrator and EPS files: the line scanner's curves, scaled
// by the format's options or fitted to a default screen, on the scanner's layers.
#include "shell/CQuillonPlugIn.h"
#include "shell/RouteEnd.h"

#include "legacy/LineReader.h"
#include "legacy/PostScriptPathScanner.h"

#include "host/base/VmFile.h"
#include "host/base/VmResources.h"
#include "host/doc/CVelmoObject.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmDialogs.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

constexpr unsigned kWarningBox = 48;

// Owns the curves the scanner made until they are handed to the document.
struct CurveList {
    GK_SimpleArray<GK_Curve*> curves;
    GK_SimpleArray<long> layers;
    ~CurveList() {
        for (GK_Curve* c : curves)
            delete c;
    }
};

// Model length per drawing unit: the two scales, then the unit to points.
double PreservedScale(const ImportFormatOptions& record) {
    double scale = record.velmoScale / record.importScale;
    switch (record.importUnit) {
    case ImportUnitInch:
        scale /= 72.0;
        break;
    case ImportUnitCm:
        scale = scale / 72.0 * 2.54;
        break;
    case ImportUnitMm:
        scale = scale / 72.0 * 25.4;
        break;
    default: // points, and anything unknown, are taken as they are
        break;
    }
    return scale;
}

void ReadDictionaryInto(const GK_ArchivableDictionary& dictionary, ImportFormatOptions& record,
                        const wchar_t* unitsKey, const wchar_t* scaleKey) {
    dictionary.TryGetBool(L"PreserveModelScale", record.preserveUnits);
    dictionary.TryGetDouble(L"VelmoScale", record.velmoScale);
    dictionary.TryGetInt32(unitsKey, record.importUnit);
    dictionary.TryGetDouble(scaleKey, record.importScale);
}

} // namespace

int CQuillonPlugIn::ReadLegacyRoute(const wchar_t* path, CVelmoDoc& doc,
                                    const CVelmoFileReadOptions& options) {
    CVelmoWaitCursor waitCursor;
    const CVelmoLayerTable& layerTable = doc.LayerTable();
    const bool reference = options.Mode(CVelmoFileReadOptions::ReferenceObjectsFlag);
    ResetLegacyScanner(reference, layerTable.CurrentLayer().Color(),
                       layerTable.CurrentLayer().Name(), this);

    GK_wString extension;
    GK_wString::SplitPath(path, nullptr, nullptr, nullptr, &extension);
    const bool isEps = extension.CompareNoCase(L".eps") == 0;
    const wchar_t* label = isEps ? VmLocalizeString(L"EPS", 56325) : VmLocalizeString(L"AI", 56324);
    GK_wString openError, readErrorTitle;
    openError.Format(VmLocalizeString(L"Error opening %ls file.", 20006), label);
    readErrorTitle.Format(VmLocalizeString(L"%ls File Read Error", 20007), label);

    std::FILE* file = VmOpenFile(path, "rb");
    if (!file) {
        if (options.Mode(CVelmoFileReadOptions::BatchModeFlag))
            VelmoApp().Print(L"%ls", openError.Array());
        else
            VelmoMessageBox(openError, readErrorTitle, kWarningBox);
        return 0;
    }

    // A PDF whose raw bytes hold the marker, if it starts with the double-percent header
    // the scanner cannot use, counts as read with nothing in it.
    char firstLine[kScannerLineBuffer];
    if (ReadScannerLine(file, firstLine) && std::strncmp(firstLine, "%%PDF-", 6) == 0) {
        std::fclose(file);
        return 1;
    }

    // The scan goes on after the first line, so a marker on that line is not seen again.
    CurveList list;
    (void)ScanPostScriptPaths(file, list.curves, list.layers, doc);
    std::fclose(file);

    if (list.curves.IsEmpty()) {
        GK_wString text;
        text.Format(VmLocalizeString(
                        L"There are no objects that fit the %ls standard in the file %ls.", 20009),
                    label, path);
        VelmoMessageBox(text, readErrorTitle, kWarningBox);
        return 0;
    }

    ImportFormatOptions& record = isEps ? epsOptions : aiOptions;
    if (static_cast<unsigned>(record.importUnit) > 3)
        record.importUnit = ImportUnitInch;

    const GK_ArchivableDictionary& dictionary = options.OptionsDictionary();
    const bool hasDictionary = dictionary.Count() > 0;
    if (!VelmoApp().IsHeadless() && !doc.IsHeadless() && !hasDictionary) {
        const bool useDialog = !options.Mode(CVelmoFileReadOptions::BatchModeFlag);
        if (PromptForOptions(useDialog, currentFormatIndex, false) != 0)
            return 0;
    } else if (hasDictionary) {
        // By the index the host gave, while the scale below goes by the extension.
        if (currentFormatIndex == ImportFormatAi)
            ReadDictionaryInto(dictionary, aiOptions, L"AiUnits", L"AiScale");
        else if (currentFormatIndex == ImportFormatEps)
            ReadDictionaryInto(dictionary, epsOptions, L"EpsUnits", L"EpsScale");
    }

    GK_SimpleArray<GK_Curve*>& curves = list.curves;
    if (record.preserveUnits) {
        const double scale = PreservedScale(record);
        for (GK_Curve* c : curves)
            if (c->IsValid())
                c->Scale(scale);
    } else {
        GK_BoundingBox box;
        for (GK_Curve* c : curves)
            if (c->IsValid())
                box.Union(c->BoundingBox());
        const double dx = box.Max().x - box.Min().x;
        const double dy = box.Max().y - box.Min().y;
        const double size = std::max(dx, dy);
        const double scale = size > 0.0 ? 40.0 / size : 1.0;
        GK_3dVector toOrigin = box.Center() - GK_3dPoint::Origin;
        toOrigin.Reverse();
        for (GK_Curve* c : curves) {
            if (c->IsValid()) {
                c->Translate(toOrigin);
                c->Scale(scale);
            }
        }
    }

    int added = 0;
    for (int i = 0; i < curves.Count(); ++i) {
        GK_Curve* curve = curves[i];
        curves[i] = nullptr; // handed to the document, or deleted
        if (!curve || !curve->IsValid()) {
            delete curve;
            continue;
        }
        CVelmoObjectAttributes attributes;
        attributes.Default();
        attributes.m_layer_index = static_cast<int>(list.layers[i]);
        auto* object = new CVelmoCurveObject(attributes);
        object->SetCurve(curve);
        doc.AddObject(object, reference, false);
        ++added;
    }

    VelmoApp().Print(VmLocalizeString(L"Imported %d curves from %s\n", 20011), added, path);

    FitViewsAndRedraw(doc, options);
    return 1;
}
