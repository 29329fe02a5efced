#include "host/doc/CVelmoDoc.h"

CVelmoDoc::CVelmoDoc() : m_layers([this] { return NewId(); }) {
    for (const wchar_t* name : {L"Top", L"Front", L"Right", L"Perspective"})
        m_views.push_back(std::make_unique<CVelmoView>(name, 1));
}

bool CVelmoDoc::AddObject(CVelmoObject* object, bool referenceObject, bool /*inHistory*/) {
    std::unique_ptr<CVelmoObject> owned(object);
    if (!owned || !owned->Geometry() || !owned->Geometry()->IsValid())
        return false;
    const int layer = owned->Attributes().m_layer_index;
    if (layer < 0 || layer >= m_layers.LayerCount())
        return false;
    owned->SetReference(referenceObject);
    m_objects.push_back(std::move(owned));
    return true;
}

int CVelmoDoc::GetViewList(std::vector<CVelmoView*>& views, int typeFilter) const {
    views.clear();
    for (const auto& v : m_views)
        if (typeFilter == 0 || v->ViewType() == typeFilter)
            views.push_back(v.get());
    return static_cast<int>(views.size());
}

bool VelmoDollyExtents(CVelmoView* view, bool /*allViews*/) {
    if (!view)
        return false;
    view->NoteExtentsFit();
    return true;
}
