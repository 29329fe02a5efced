#pragma once
// `tarquil import --fonts FILE`: a fixed list of font families, so that font matching gives
// the same answers on every machine.
#include <string>
#include <vector>

// The family names in the file: UTF-8, one a line, in the file's order; empty lines are
// skipped and a line may end in CR LF. Throws UsageError when the file cannot be read.
std::vector<std::wstring> ReadFontsFile(const std::string& path);
