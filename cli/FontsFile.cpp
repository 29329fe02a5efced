#include "cli/FontsFile.h"

#include "cli/UsageError.h"
#include "host/base/GK_String.h"

#include <fstream>

std::vector<std::wstring> ReadFontsFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw UsageError("--fonts: cannot read " + path);
    std::vector<std::wstring> families;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty())
            families.push_back(VmWideFromUtf8(line));
    }
    return families;
}
