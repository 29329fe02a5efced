#include "host/doc/CVelmoDoc.h"
#include "output/PDFToVelmo.h"

int PDFToVelmo::FindOrAddLinetype(const std::vector<double>& dash) {
    const std::size_t n = dash.size();
    const auto value = [&](std::size_t i) { return i < n ? dash[i] : 0.0; };
    // The name carries the lengths, so one dash at two scales gives two linetypes.
    const std::wstring name =
        n == 2 ? VmFormat(L"%g %g", value(0), value(1))
               : VmFormat(L"%g %g %g %g", value(0), value(1), value(2), value(3));
    CVelmoLinetypeTable& table = doc->LinetypeTable();
    const int unset = CVelmoLinetypeTable::UnsetIndex;
    const int found = table.FindLinePatternFromName(name.c_str(), false, unset);
    if (found != unset)
        return found;
    GK_SimpleArray<double> segments;
    for (std::size_t i = 0; i < n; i += 2) {
        segments.Append(value(i));
        segments.Append(-value(i + 1));
    }
    return table.AddLinetype(name.c_str(), segments);
}
