#pragma once
// The document's layers: a flat table in which a layer names its parent by id.
#include "host/doc/GK_Layer.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

class CVelmoLayerTable {
public:
    explicit CVelmoLayerTable(std::function<GK_UUID()> newId);

    int LayerCount() const { return static_cast<int>(m_layers.size()); }
    // Layers change only through ModifyLayer, which keeps the lookups right.
    const GK_Layer& operator[](int index) const { return m_layers[index]; }

    int CurrentLayerIndex() const { return m_current; }
    const GK_Layer& CurrentLayer() const { return m_layers[m_current]; }
    bool SetCurrentLayerIndex(int index);
    // `quiet` would suppress the host's notice of the change; there is none here to suppress.
    bool SetCurrentLayerIndex(int index, bool /*quiet*/) { return SetCurrentLayerIndex(index); }
    const GK_UUID& CurrentLayerId() const { return m_layers[m_current].Id(); }

    // The index of the layer with that name (compared without regard to case) under that
    // parent, or -1. The layer at `ignoreIndex` is passed over; an index outside the table
    // ignores nothing.
    int FindLayerFromParentAndName(const GK_UUID& parentId, const wchar_t* name,
                                   int ignoreIndex) const;
    int FindLayerFromId(const GK_UUID& id) const;
    // The index of the layer whose "Parent::Child" name matches (without regard to case), or
    // `notFound`.
    int FindLayerFromFullPathName(const wchar_t* fullPathName, int notFound) const;
    // Properties of a new layer: black, visible, unlocked, no name, no parent.
    void GetDefaultLayerProperties(GK_Layer& layer) const;
    // Adds a layer and returns its index, or -1 when its name is empty or already used by a
    // sibling, or its parent does not exist. A nil id gets a fresh one.
    int AddLayer(const GK_Layer& layer, bool reference = false);
    // Replaces the properties of the layer at `index`; its id and index stay. False when the
    // index is outside the table, the name is empty or taken by a sibling, or the parent is
    // missing or the layer itself.
    bool ModifyLayer(const GK_Layer& layer, int index, bool quiet = true);
    // "Parent::Child" names from the top of the tree.
    GK_wString FullPathName(int index) const;

private:
    // Lookups go through indexes, so that a file with a million layers costs a million
    // steps, not a million squared. Names are keyed as CompareNoCase compares them.
    static std::wstring FoldedName(const wchar_t* name);
    static std::wstring SiblingKey(const GK_UUID& parentId, const wchar_t* name);
    void IndexLayer(int index);

    std::vector<GK_Layer> m_layers;
    int m_current = 0;
    std::function<GK_UUID()> m_newId;
    std::map<GK_UUID, int> m_byId;
    std::unordered_map<std::wstring, int> m_bySibling; // parent id and folded name
    // Folded full path to the first layer that has it; built when asked for after a change.
    mutable std::unordered_map<std::wstring, int> m_byFullPath;
    mutable bool m_fullPathsValid = false;
};
