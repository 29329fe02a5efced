#include "host/doc/CVelmoLinetypeTable.h"

int CVelmoLinetypeTable::FindLinetypeFromName(const wchar_t* name) const {
    if (!name)
        return -1;
    for (int i = 0; i < LinetypeCount(); ++i)
        if (m_linetypes[i].Name().CompareNoCase(name) == 0)
            return i;
    return -1;
}

int CVelmoLinetypeTable::AddLinetype(const GK_Linetype& linetype, bool /*reference*/) {
    if (!linetype.IsValid() || FindLinetypeFromName(linetype.Name()) >= 0)
        return -1;
    m_linetypes.push_back(linetype);
    m_linetypes.back().SetIndex(LinetypeCount() - 1);
    return LinetypeCount() - 1;
}
