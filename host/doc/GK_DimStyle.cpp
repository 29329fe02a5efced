#include "host/doc/GK_DimStyle.h"

#include <cmath>

bool GK_DimStyle::IsValid(GK_TextLog*) const {
    return std::isfinite(m_textHeight) && m_textHeight > 0.0 && std::isfinite(m_dimScale) &&
           m_dimScale > 0.0;
}

const GK_DimStyle& GK_DimStyle::DimStyleOrDefault(const GK_DimStyle* style) {
    static const GK_DimStyle systemDefault = [] {
        GK_DimStyle s;
        s.SetName(L"Default");
        return s;
    }();
    return style ? *style : systemDefault;
}

GK_DimStyle GK_DimStyle::CreateFromProperties(const GK_DimStyle& parent, int annotationType,
                                              const GK_DimStyle* overrides,
                                              double modelViewTextScale, double textHeight,
                                              VmLengthUnit unitSystem, int verticalAlignment,
                                              int horizontalAlignment) {
    GK_DimStyle style = parent;
    // An override style has no name and no place in a table of its own.
    style.SetName(L"");
    style.SetIndex(-1);
    style.m_parentIndex = parent.Index();
    if (overrides)
        style.m_font = overrides->m_font;
    style.m_annotationType = annotationType;
    style.m_modelViewTextScale = modelViewTextScale;
    style.m_textHeight = textHeight;
    style.m_unitSystem = unitSystem;
    style.m_verticalAlignment = verticalAlignment;
    style.m_horizontalAlignment = horizontalAlignment;
    return style;
}
