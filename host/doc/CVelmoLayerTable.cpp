#include "host/doc/CVelmoLayerTable.h"

CVelmoLayerTable::CVelmoLayerTable(std::function<GK_UUID()> newId) : m_newId(std::move(newId)) {
    GK_Layer layer;
    GetDefaultLayerProperties(layer);
    layer.SetName(L"Default");
    AddLayer(layer, false);
    m_current = 0;
}

bool CVelmoLayerTable::SetCurrentLayerIndex(int index) {
    if (index < 0 || index >= LayerCount())
        return false;
    m_current = index;
    return true;
}

int CVelmoLayerTable::FindLayerFromParentAndName(const GK_UUID& parentId, const wchar_t* name,
                                                 int ignoreIndex) const {
    if (!name)
        return -1;
    for (int i = 0; i < LayerCount(); ++i) {
        if (i == ignoreIndex)
            continue;
        const GK_Layer& layer = m_layers[i];
        if (layer.ParentId() == parentId && layer.Name().CompareNoCase(name) == 0)
            return i;
    }
    return -1;
}

int CVelmoLayerTable::FindLayerFromId(const GK_UUID& id) const {
    for (int i = 0; i < LayerCount(); ++i)
        if (m_layers[i].Id() == id)
            return i;
    return -1;
}

void CVelmoLayerTable::GetDefaultLayerProperties(GK_Layer& layer) const {
    layer = GK_Layer();
}

int CVelmoLayerTable::AddLayer(const GK_Layer& layer, bool reference) {
    if (layer.Name().IsEmpty())
        return -1;
    if (!layer.ParentId().IsNil() && FindLayerFromId(layer.ParentId()) < 0)
        return -1;
    if (FindLayerFromParentAndName(layer.ParentId(), layer.Name(), -1) >= 0)
        return -1;
    GK_Layer added = layer;
    if (added.Id().IsNil() || FindLayerFromId(added.Id()) >= 0)
        added.SetId(m_newId());
    added.SetReference(reference);
    added.SetIndex(LayerCount());
    m_layers.push_back(added);
    return LayerCount() - 1;
}

GK_wString CVelmoLayerTable::FullPathName(int index) const {
    if (index < 0 || index >= LayerCount())
        return {};
    std::wstring path = m_layers[index].Name().str();
    GK_UUID parent = m_layers[index].ParentId();
    // A table built by AddLayer has no cycles, but stop after LayerCount steps regardless.
    for (int guard = 0; !parent.IsNil() && guard < LayerCount(); ++guard) {
        const int p = FindLayerFromId(parent);
        if (p < 0)
            break;
        path = m_layers[p].Name().str() + L"::" + path;
        parent = m_layers[p].ParentId();
    }
    return GK_wString(path);
}

int CVelmoLayerTable::FindLayerFromFullPathName(const wchar_t* fullPathName, int notFound) const {
    if (!fullPathName)
        return notFound;
    for (int i = 0; i < LayerCount(); ++i)
        if (FullPathName(i).CompareNoCase(fullPathName) == 0)
            return i;
    return notFound;
}

bool CVelmoLayerTable::ModifyLayer(const GK_Layer& layer, int index, bool /*quiet*/) {
    if (index < 0 || index >= LayerCount() || layer.Name().IsEmpty())
        return false;
    const GK_UUID& parent = layer.ParentId();
    if (!parent.IsNil() && (parent == m_layers[index].Id() || FindLayerFromId(parent) < 0))
        return false;
    if (FindLayerFromParentAndName(parent, layer.Name(), index) >= 0)
        return false;
    GK_Layer modified = layer;
    modified.SetId(m_layers[index].Id());
    modified.SetIndex(index);
    m_layers[index] = modified;
    return true;
}
