#include "host/doc/CVelmoLinetypeTable.h"

#include <cwctype>

GK_Linetype::~GK_Linetype() = default;

namespace {

// The same folding as GK_wString::CompareNoCase, so both agree on what is one name.
std::wstring Folded(const wchar_t* name) {
    std::wstring key(name ? name : L"");
    for (wchar_t& c : key)
        c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return key;
}

} // namespace

int CVelmoLinetypeTable::FindLinetypeFromName(const wchar_t* name) const {
    if (!name)
        return -1;
    const auto found = m_byName.find(Folded(name));
    return found == m_byName.end() ? -1 : found->second;
}

int CVelmoLinetypeTable::AddLinetype(const GK_Linetype& linetype, bool /*reference*/) {
    if (!linetype.IsValid() || FindLinetypeFromName(linetype.Name()) >= 0)
        return -1;
    m_linetypes.push_back(linetype);
    m_linetypes.back().SetIndex(LinetypeCount() - 1);
    m_byName.emplace(Folded(linetype.Name()), LinetypeCount() - 1);
    return LinetypeCount() - 1;
}

int CVelmoLinetypeTable::FindLinePatternFromName(const wchar_t* name, bool /*ignoreDeleted*/,
                                                 int notFound) const {
    const int index = FindLinetypeFromName(name);
    return index >= 0 ? index : notFound;
}

int CVelmoLinetypeTable::AddLinetype(const wchar_t* name, const GK_SimpleArray<double>& segments) {
    GK_Linetype linetype;
    linetype.SetName(name);
    for (double length : segments) {
        GK_LinetypeSegment segment;
        segment.m_seg_type =
            length < 0.0 ? GK_LinetypeSegment::stSpace : GK_LinetypeSegment::stLine;
        segment.m_length = length < 0.0 ? -length : length;
        linetype.AppendSegment(segment);
    }
    return AddLinetype(linetype);
}
