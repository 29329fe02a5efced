#pragma once
// Opening files by wide path; on this platform the path goes to the system as UTF-8.
#include <cstdio>

std::FILE* VmOpenFile(const wchar_t* path, const char* mode);
