#include "host/doc/GK_Font.h"

#include <map>
#include <memory>
#include <tuple>

namespace {

using FontKey = std::tuple<std::wstring, bool, bool>;

// Owned here for the life of the process: styles and text objects hold borrowed pointers.
std::map<FontKey, std::unique_ptr<GK_Font>>& ManagedFonts() {
    static std::map<FontKey, std::unique_ptr<GK_Font>> fonts;
    return fonts;
}

constexpr const wchar_t* kDefaultFamily = L"Arial";

} // namespace

const GK_Font* GK_Font::GetManagedFont(const wchar_t* family, bool bold, bool italic) {
    // Families are compared as written: the names come from the list of installed families,
    // which spells each one way.
    const std::wstring name = family && *family ? family : kDefaultFamily;
    auto& slot = ManagedFonts()[FontKey(name, bold, italic)];
    if (!slot)
        slot.reset(new GK_Font(name.c_str(), bold, italic));
    return slot.get();
}

const GK_Font* GK_Font::Default() {
    return GetManagedFont(kDefaultFamily, false, false);
}

GK_wString GK_Font::Description() const {
    GK_wString text = m_family;
    if (m_bold)
        text += L" Bold";
    if (m_italic)
        text += L" Italic";
    return text;
}
