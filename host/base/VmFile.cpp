#include "host/base/VmFile.h"

#include "host/base/GK_String.h"

std::FILE* VmOpenFile(const wchar_t* path, const char* mode) {
    if (!path || !mode)
        return nullptr;
    return std::fopen(VmUtf8FromWide(path).c_str(), mode);
}
