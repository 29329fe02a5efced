#pragma once
// Model components with a name and an id, and the layer.
#include "host/base/GK_String.h"
#include "host/doc/GK_Color.h"
#include "host/doc/GK_UUID.h"
#include "host/geometry/GK_Object.h"

class GK_ModelComponent : public GK_Object {
public:
    ~GK_ModelComponent() override;
    const GK_wString& Name() const { return m_name; }
    bool SetName(const wchar_t* name) {
        m_name = GK_wString(name);
        return true;
    }
    const GK_UUID& Id() const { return m_id; }
    void SetId(const GK_UUID& id) { m_id = id; }
    const GK_UUID& ParentId() const { return m_parentId; }
    void SetParentId(const GK_UUID& id) { m_parentId = id; }
    int Index() const { return m_index; }
    void SetIndex(int index) { m_index = index; }

private:
    GK_wString m_name;
    GK_UUID m_id{};
    GK_UUID m_parentId{};
    int m_index = -1;
};

class GK_Layer : public GK_ModelComponent {
public:
    ~GK_Layer() override;
    bool IsValid(GK_TextLog* = nullptr) const override { return !Name().IsEmpty(); }

    GK_Color Color() const { return m_color; }
    void SetColor(GK_Color color) { m_color = color; }
    bool IsVisible() const { return m_visible; }
    void SetVisible(bool visible) { m_visible = visible; }
    bool IsLocked() const { return m_locked; }
    void SetLocked(bool locked) { m_locked = locked; }
    bool IsReference() const { return m_reference; }
    void SetReference(bool reference) { m_reference = reference; }
    int LinetypeIndex() const { return m_linetypeIndex; }
    void SetLinetypeIndex(int index) { m_linetypeIndex = index; }
    double PlotWeight() const { return m_plotWeight; }
    void SetPlotWeight(double weight) { m_plotWeight = weight; }

private:
    GK_Color m_color;
    bool m_visible = true;
    bool m_locked = false;
    bool m_reference = false;
    int m_linetypeIndex = -1;
    double m_plotWeight = 0.0;
};
