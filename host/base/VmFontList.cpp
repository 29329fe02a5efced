#include "host/base/VmFontList.h"

#include "host/base/GK_String.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

std::optional<std::vector<std::wstring>>& FixedFamilies() {
    static std::optional<std::vector<std::wstring>> families;
    return families;
}

int requests = 0;

struct PatternDeleter {
    void operator()(FcPattern* p) const { FcPatternDestroy(p); }
};
struct ObjectSetDeleter {
    void operator()(FcObjectSet* s) const { FcObjectSetDestroy(s); }
};
struct FontSetDeleter {
    void operator()(FcFontSet* s) const { FcFontSetDestroy(s); }
};

std::vector<std::wstring> FontconfigFamilies() {
    // fontconfig loads its configuration and caches on first use and keeps them for the
    // process; they are handed back when it ends.
    static const bool finishAtExit = [] {
        std::atexit(FcFini);
        return true;
    }();
    (void)finishAtExit;
    std::vector<std::string> names;
    // FcFontList on the current configuration, which fontconfig loads on first use.
    const std::unique_ptr<FcPattern, PatternDeleter> any(FcPatternCreate());
    const std::unique_ptr<FcObjectSet, ObjectSetDeleter> wanted(
        FcObjectSetBuild(FC_FAMILY, static_cast<char*>(nullptr)));
    if (!any || !wanted)
        return {};
    const std::unique_ptr<FcFontSet, FontSetDeleter> fonts(
        FcFontList(nullptr, any.get(), wanted.get()));
    if (!fonts)
        return {};
    for (int i = 0; i < fonts->nfont; ++i) {
        FcChar8* family = nullptr;
        for (int n = 0; FcPatternGetString(fonts->fonts[i], FC_FAMILY, n, &family) == FcResultMatch;
             ++n)
            names.emplace_back(reinterpret_cast<const char*>(family));
    }
    // fontconfig lists fonts in the order of its caches, which differs from machine to
    // machine and after a font is installed; sorted, the answer depends on the names alone.
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    std::vector<std::wstring> families;
    families.reserve(names.size());
    for (const std::string& name : names)
        families.push_back(VmWideFromUtf8(name));
    return families;
}

} // namespace

std::vector<std::wstring> VmInstalledFontFamilies() {
    ++requests;
    if (FixedFamilies())
        return *FixedFamilies();
    return FontconfigFamilies();
}

void VmSetFontFamilies(std::optional<std::vector<std::wstring>> families) {
    FixedFamilies() = std::move(families);
}

int VmFontFamilyRequests() {
    return requests;
}
