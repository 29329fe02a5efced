#include "output/MissingFonts.h"

#include "host/base/VmFontList.h"
#include "host/base/VmResources.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmDialogs.h"

#include <utility>

namespace {

// Process-wide on purpose: it outlives the sink and is cleared by each finishing pass.
bool fontWasMissing = false;

// Fewer agreeing characters than this is no match.
constexpr std::uint32_t kLeastAgreement = 2;

} // namespace

FontMatcher::FontMatcher(std::vector<std::wstring> systemFonts)
    : m_systemFonts(std::move(systemFonts)) {}

void FontMatcher::MatchFont(const std::string& name, GK_wString& family, bool& found) {
    auto cached = m_matchCache.find(name);
    if (cached == m_matchCache.end()) {
        const std::size_t plus = name.find('+');
        const std::size_t start = plus == std::string::npos ? 0 : plus + 1;
        std::uint32_t best = kLeastAgreement;
        std::uint32_t bestIndex = 0;
        for (std::size_t k = 0; k < m_systemFonts.size() && start < name.size(); ++k) {
            std::uint32_t matched = 0;
            std::size_t p = start;
            for (const wchar_t unit : m_systemFonts[k]) {
                if (p >= name.size())
                    break;
                if (unit == L' ')
                    continue;
                // The PDF byte is taken with its sign, so bytes from 0x80 up never agree.
                if (static_cast<long>(unit) != static_cast<signed char>(name[p]))
                    break;
                ++matched;
                ++p;
            }
            if (matched > best) {
                best = matched;
                bestIndex = static_cast<std::uint32_t>(k + 1);
            }
        }
        cached = m_matchCache.emplace(name, bestIndex).first;
    }
    if (cached->second != 0) {
        family = GK_wString(m_systemFonts[cached->second - 1]);
        found = true;
        return;
    }
    fontWasMissing = true;
    found = false;
    family = GK_wString(L"Arial");
}

std::vector<std::wstring> EnumerateSystemFonts() {
    return VmInstalledFontFamilies();
}

bool FontWasMissing() {
    return fontWasMissing;
}

void ClearFontWasMissing() {
    fontWasMissing = false;
}

void ReportMissingFonts(std::uint32_t missingCount, bool batchMode, bool showDialog) {
    GK_wString first;
    if (missingCount == 1)
        first = VmLocalizeString(L"This file references a font not found on this computer.", 54801);
    else
        first.Format(
            VmLocalizeString(L"This file references %u fonts not found on this computer.", 54802),
            missingCount);
    const GK_wString second = VmLocalizeString(L"Velmo will use Arial as a substitute.", 44315);
    if (batchMode || !showDialog) {
        VelmoApp().Print(L"%ls %ls\n", first.Array(), second.Array());
        return;
    }
    GK_wString text;
    text.Format(VmLocalizeString(
                    L"%ls\n\n%ls\n\nSee the Velmo command - line for more information.\n", 54803),
                first.Array(), second.Array());
    VelmoMessageBox(text, VmLocalizeString(L"Import PDF Missing Fonts", 54804), 64);
}
