#include "host/doc/CVelmoDimStyleTable.h"

const GK_DimStyle& CVelmoDimStyleTable::CurrentDimStyle() const {
    if (m_styles.empty())
        return GK_DimStyle::DimStyleOrDefault(nullptr);
    return m_styles[m_current];
}

GK_DimStyle CVelmoDimStyleTable::GetDefaultDimStyleProperties() const {
    GK_DimStyle style = GK_DimStyle::DimStyleOrDefault(nullptr);
    style.SetName(L"");
    style.SetIndex(-1);
    return style;
}

bool CVelmoDimStyleTable::NameTaken(const GK_wString& name) const {
    for (const GK_DimStyle& style : m_styles)
        if (style.Name().CompareNoCase(name) == 0)
            return true;
    return false;
}

int CVelmoDimStyleTable::AddDimStyle(const GK_DimStyle& style, bool /*reference*/) {
    if (!style.IsValid())
        return -1;
    GK_DimStyle added = style;
    const GK_wString base = style.Name().IsEmpty() ? style.Font().Description() : style.Name();
    GK_wString name = base;
    for (int n = 2; NameTaken(name); ++n)
        name = GK_wString(base.str() + L" (" + std::to_wstring(n) + L")");
    added.SetName(name);
    added.SetIndex(DimStyleCount());
    m_styles.push_back(added);
    return added.Index();
}

int CVelmoDimStyleTable::FindDimStyleFromFont(const GK_Font* font, double modelSpaceScale,
                                              const GK_DimStyle* templateStyle, bool create) {
    if (!font)
        return -1;
    for (const GK_DimStyle& style : m_styles)
        if (&style.Font() == font && style.DimScale() == modelSpaceScale)
            return style.Index();
    if (!create)
        return -1;
    GK_DimStyle style = GK_DimStyle::DimStyleOrDefault(templateStyle);
    style.SetName(L"");
    style.SetFont(font);
    style.SetDimScale(modelSpaceScale);
    return AddDimStyle(style);
}
