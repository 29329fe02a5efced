#include "host/base/CVelmoFileUtilities.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

std::wstring& ChosenTempFolder() {
    static std::wstring folder;
    return folder;
}

std::filesystem::path PathOf(const wchar_t* path) {
    return std::filesystem::path(VmUtf8FromWide(path ? path : L""));
}

} // namespace

GK_wString CVelmoFileUtilities::GetVelmoRoamingProfileTempFolder() {
    if (!ChosenTempFolder().empty())
        return GK_wString(ChosenTempFolder().c_str());
    const char* tmp = std::getenv("TMPDIR");
    const std::string base = tmp && *tmp ? tmp : "/tmp";
    return GK_wString(VmWideFromUtf8((std::filesystem::path(base) / "tarquil").string()).c_str());
}

void CVelmoFileUtilities::SetTempFolder(const wchar_t* folder) {
    ChosenTempFolder() = folder ? folder : L"";
}

bool CVelmoFileUtilities::DirExists(const wchar_t* path) {
    std::error_code error;
    return std::filesystem::is_directory(PathOf(path), error);
}

bool CVelmoFileUtilities::CreateDir(const wchar_t* path) {
    std::error_code error;
    std::filesystem::create_directories(PathOf(path), error);
    return DirExists(path);
}

bool CVelmoFileUtilities::MakeFullPath(GK_wString& out, const wchar_t* folder, const wchar_t* name,
                                       const wchar_t* extension) {
    if (!folder || !name)
        return false;
    std::wstring full = folder;
    if (!full.empty() && full.back() != L'/')
        full += L'/';
    full += name;
    if (extension)
        full += extension;
    out = GK_wString(full.c_str());
    return true;
}
