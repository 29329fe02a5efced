#include "host/doc/CVelmoDoc.h"

GK_HatchPattern::~GK_HatchPattern() = default;

CVelmoDoc::CVelmoDoc() : m_layers([this] { return NewId(); }) {
    for (const wchar_t* name : {L"Top", L"Front", L"Right", L"Perspective"})
        m_views.push_back(std::make_unique<CVelmoView>(name, 1));
    m_solidPattern.SetName(L"Solid");
    m_solidPattern.SetFillType(GK_HatchPattern::HatchFillType::Solid);
}

int CVelmoHatchPatternTable::FindHatchPatternFromName(const wchar_t* name) const {
    if (!name)
        return -1;
    for (int i = 0; i < HatchPatternCount(); ++i)
        if (m_patterns[i].Name().CompareNoCase(name) == 0)
            return i;
    return -1;
}

bool CVelmoHatchPatternTable::AddHatchPattern(const GK_HatchPattern* pattern, bool /*reference*/,
                                              int* index) {
    if (!pattern || !pattern->IsValid())
        return false;
    int found = FindHatchPatternFromName(pattern->Name());
    if (found < 0) {
        m_patterns.push_back(*pattern);
        found = HatchPatternCount() - 1;
        m_patterns.back().SetIndex(found);
    }
    if (index)
        *index = found;
    return true;
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

const CVelmoTextObject* CVelmoDoc::AddTextObject(const GK_wString& text, const GK_Plane& plane,
                                                 const GK_3dPoint& point, const GK_DimStyle& style,
                                                 const CVelmoObjectAttributes& attributes) {
    GK_Plane placed = plane;
    placed.origin = point;
    // The height is the style's: a zero or undefined one is refused here with the plane, so
    // that no text without a size reaches the document.
    auto* object = new CVelmoTextObject(GK_Text(text, placed, style.TextHeight()), style);
    object->SetAttributes(attributes);
    if (!AddObject(object, false, false))
        return nullptr;
    return static_cast<const CVelmoTextObject*>(m_objects.back().get());
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
