#include "host/doc/CVelmoLayerTable.h"

#include <cwctype>

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

std::wstring CVelmoLayerTable::FoldedName(const wchar_t* name) {
    std::wstring folded;
    for (const wchar_t* c = name ? name : L""; *c; ++c)
        folded += static_cast<wchar_t>(std::towlower(static_cast<wint_t>(*c)));
    return folded;
}

std::wstring CVelmoLayerTable::SiblingKey(const GK_UUID& parentId, const wchar_t* name) {
    std::wstring key(parentId.bytes.begin(), parentId.bytes.end());
    return key + FoldedName(name);
}

void CVelmoLayerTable::IndexLayer(int index) {
    const GK_Layer& layer = m_layers[index];
    m_byId.emplace(layer.Id(), index);
    m_bySibling.emplace(SiblingKey(layer.ParentId(), layer.Name()), index);
    m_fullPathsValid = false;
}

int CVelmoLayerTable::FindLayerFromParentAndName(const GK_UUID& parentId, const wchar_t* name,
                                                 int ignoreIndex) const {
    if (!name)
        return -1;
    // Siblings never share a name, so the one match is the answer unless it is ignored.
    const auto it = m_bySibling.find(SiblingKey(parentId, name));
    return it == m_bySibling.end() || it->second == ignoreIndex ? -1 : it->second;
}

int CVelmoLayerTable::FindLayerFromId(const GK_UUID& id) const {
    const auto it = m_byId.find(id);
    return it == m_byId.end() ? -1 : it->second;
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
    IndexLayer(LayerCount() - 1);
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
    if (!m_fullPathsValid) {
        m_byFullPath.clear();
        for (int i = 0; i < LayerCount(); ++i)
            m_byFullPath.emplace(FoldedName(FullPathName(i)), i);
        m_fullPathsValid = true;
    }
    const auto it = m_byFullPath.find(FoldedName(fullPathName));
    return it == m_byFullPath.end() ? notFound : it->second;
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
    m_bySibling.erase(SiblingKey(m_layers[index].ParentId(), m_layers[index].Name()));
    m_layers[index] = modified;
    IndexLayer(index);
    return true;
}
