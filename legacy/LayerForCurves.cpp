#include "legacy/PostScriptPathScanner.h"

#include "host/doc/GK_UUID.h"

long LayerForCurves(CVelmoDoc& doc) {
    const LegacyScannerState& s = LegacyScanner();
    CVelmoLayerTable& table = doc.LayerTable();
    // Ignores no layer: an index no table reaches.
    const int kIgnoreNone = static_cast<int>(0x80000001u);

    GK_wString name;
    if (s.referenceObjects) {
        const wchar_t* base = s.layerNameSeen ? s.layerName.Array() : L"Layer";
        if (!s.plugIn || !s.plugIn->MakeReferenceTableName(base, name))
            return -1;
    } else {
        name = s.layerName;
    }

    const int found = table.FindLayerFromParentAndName(GK_nil_uuid, name, kIgnoreNone);
    if (found >= 0)
        return found;
    GK_Layer layer;
    table.GetDefaultLayerProperties(layer);
    layer.SetColor(s.layerColor);
    layer.SetName(name);
    return table.AddLayer(layer, s.referenceObjects);
}
