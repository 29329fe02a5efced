#pragma once
// The document's annotation styles. A new document has none; the first import that brings
// text adds what it needs.
#include "host/doc/GK_DimStyle.h"

#include <vector>

class CVelmoDimStyleTable {
public:
    int DimStyleCount() const { return static_cast<int>(m_styles.size()); }
    const GK_DimStyle& operator[](int index) const { return m_styles[index]; }
    // The style new annotations take: the table's current one, or the system default while
    // the table is empty.
    const GK_DimStyle& CurrentDimStyle() const;
    int CurrentDimStyleIndex() const { return m_styles.empty() ? -1 : m_current; }
    // The properties of a new style: the system default, with no name.
    GK_DimStyle GetDefaultDimStyleProperties() const;
    // Adds a copy of a valid style and returns its index, or -1. An empty name becomes the
    // font's description, and a name already in the table gets " (2)", " (3)", ... added.
    int AddDimStyle(const GK_DimStyle& style, bool reference = false);
    // The first style with exactly this font (the same managed font) and model-space scale.
    // When none has them and `create` is set, a copy of `templateStyle` (the default style
    // when null) with this font and scale is added. Returns its index, or -1.
    int FindDimStyleFromFont(const GK_Font* font, double modelSpaceScale,
                             const GK_DimStyle* templateStyle, bool create);

private:
    bool NameTaken(const GK_wString& name) const;

    std::vector<GK_DimStyle> m_styles;
    int m_current = 0;
};
