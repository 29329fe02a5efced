#pragma once
// PDF font names against the installed families: a loose prefix match, "Arial" where none
// fits, and one report per file of what was missing.
#include "host/base/GK_String.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// One text pass's view of the installed fonts, with the answer for each name it was asked.
class FontMatcher {
public:
    // `systemFonts` in the order the font service gave them; duplicates do no harm.
    explicit FontMatcher(std::vector<std::wstring> systemFonts);

    // The installed family whose name agrees longest with `name` from the start, at least 3
    // characters, compared case-sensitively. A subset prefix ("ABCDEF+") is skipped on the
    // PDF side and blanks on the system side, so TimesNewRomanPSMT finds Times New Roman; a
    // tie goes to the family listed first. Without a match: "Arial", `found` false, and the
    // process-wide missing-font flag is set.
    void MatchFont(const std::string& name, GK_wString& family, bool& found);

private:
    std::vector<std::wstring> m_systemFonts;
    // Per PDF name, the 1-based position of its family; 0 for none.
    std::map<std::string, std::uint32_t> m_matchCache;
};

// The installed families, from the host's font service.
std::vector<std::wstring> EnumerateSystemFonts();

// Set by a failed match, cleared at the start of each finishing pass.
bool FontWasMissing();
void ClearFontWasMissing();

// The closing report of a pass in which a match failed: on the command line in batch mode or
// when the box is turned off, else in an information box.
void ReportMissingFonts(std::uint32_t missingCount, bool batchMode, bool showDialog);
