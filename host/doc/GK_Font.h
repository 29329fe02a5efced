#pragma once
// A font as the document uses it: an installed family with a weight and a slant. Fonts are
// shared: GetManagedFont hands out one object per distinct font for the whole process, so
// that styles and text can compare fonts by address.
#include "host/base/GK_String.h"

class GK_Font {
public:
    // The process-wide font of that family, weight and slant, made on first request and
    // kept until the process ends. The pointer is borrowed and never null. An empty or null
    // family gives the default family.
    static const GK_Font* GetManagedFont(const wchar_t* family, bool bold, bool italic);
    // The default font of new styles: regular Arial.
    static const GK_Font* Default();

    const GK_wString& FamilyName() const { return m_family; }
    bool IsBold() const { return m_bold; }
    bool IsItalic() const { return m_italic; }
    // "Family", "Family Bold", "Family Italic" or "Family Bold Italic".
    GK_wString Description() const;

private:
    GK_Font(const wchar_t* family, bool bold, bool italic)
        : m_family(family), m_bold(bold), m_italic(italic) {}

    GK_wString m_family;
    bool m_bold = false;
    bool m_italic = false;
};
