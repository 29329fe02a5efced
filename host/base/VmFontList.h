#pragma once
// The platform's font service: the family names of the installed fonts.
#include <optional>
#include <string>
#include <vector>

// Every family name of the installed fonts, from fontconfig, sorted by their UTF-8 bytes and
// each once, so that the same machine gives the same order every time. A font known by
// several names (a localised one, say) contributes each of them. With a list set by
// VmSetFontFamilies, that list instead, as it was given.
std::vector<std::wstring> VmInstalledFontFamilies();

// Fixes the answer of VmInstalledFontFamilies, so that runs give the same matches on every
// machine; nullopt goes back to the installed fonts.
void VmSetFontFamilies(std::optional<std::vector<std::wstring>> families);

// How many times the list has been asked for since the process started.
int VmFontFamilyRequests();
