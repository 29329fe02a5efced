// Layers made while the file is interpreted: from the optional-content groups of the
// catalogue, and from marked-content names met on the way.
#include "host/doc/CVelmoDoc.h"
#include "output/PDFToVelmo.h"
#include "pdf/xref/PDFDocument.h"

GK_wString WidenLayerName(const std::string& name) {
    std::wstring wide;
    wide.reserve(name.size());
    for (const char byte : name)
        wide.push_back(static_cast<wchar_t>(static_cast<char16_t>(static_cast<signed char>(byte))));
    return GK_wString(std::move(wide));
}

void PDFToVelmo::SetOptionalContentName(const std::string& name) {
    optionalContentName = name;
    const auto known = layerIndexByName.find(name);
    if (known != layerIndexByName.end()) {
        layerIndex = known->second;
        return;
    }
    CVelmoLayerTable& table = doc->LayerTable();
    GK_Layer layer;
    table.GetDefaultLayerProperties(layer);
    layer.SetName(WidenLayerName(name));
    layer.SetVisible(true);
    // A layer that cannot be added leaves layerIndex at -1; the document then refuses the
    // objects drawn on it.
    const int index = table.AddLayer(layer, false);
    layerIndex = index;
    layerIndexByName[name] = index;
    layerColours[index] = layer.Color().Packed();
}

void PDFToVelmo::OptionalContentLoaded(const std::map<std::string, OptionalContentGroup>& groups) {
    CVelmoLayerTable& table = doc->LayerTable();
    std::map<std::string, GK_UUID> layerIds;
    int firstLayer = 0;

    // Records a layer made for `name` and makes it current, so that its id can be read.
    const auto record = [&](const std::string& name, int index) {
        if (layerIds.empty())
            firstLayer = index;
        table.SetCurrentLayerIndex(index, true);
        layerIds[name] = table.CurrentLayerId();
        layerColours[index] = table[index].Color().Packed();
        layerIndexByName[name] = index;
    };
    const auto makeLayer = [&](const std::string& name, const OptionalContentGroup& group) {
        GK_Layer layer;
        table.GetDefaultLayerProperties(layer);
        layer.SetName(WidenLayerName(name));
        layer.SetVisible(group.visible);
        if (!group.parentName.empty())
            layer.SetParentId(layerIds[group.parentName]);
        return layer;
    };

    for (const auto& [name, group] : groups) {
        if (!group.parentName.empty())
            continue;
        const GK_Layer layer = makeLayer(name, group);
        int index = table.AddLayer(layer, false);
        // A name already in the document (this file or an earlier read) reuses that layer.
        if (index == -1)
            index = table.FindLayerFromFullPathName(layer.Name(), -1);
        // Neither added nor found (an empty name): there is no layer to record.
        if (index < 0)
            continue;
        record(name, index);
    }

    // Children are made once their parent exists; the pass limit bounds the depth, and a
    // group whose parent never appears gets no layer.
    for (int pass = 0; pass < 15; ++pass) {
        bool created = false;
        for (const auto& [name, group] : groups) {
            if (layerIds.contains(name) || !layerIds.contains(group.parentName))
                continue;
            const int index = table.AddLayer(makeLayer(name, group), false);
            // Refused (a sibling of the same name): the group stays without a layer.
            if (index < 0)
                continue;
            record(name, index);
            created = true;
        }
        if (!created)
            break;
    }
    table.SetCurrentLayerIndex(firstLayer, true);
}
