#include "legacy/ClassicNumbers.h"

#include <clocale>
#include <cstdlib>
#include <locale.h>

namespace {
locale_t ClassicLocale() {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return classic;
}
} // namespace

double ClassicStrtod(const char* text, char** end) {
    return strtod_l(text, end, ClassicLocale());
}

long ClassicStrtol(const char* text, char** end) {
    return strtol_l(text, end, 10, ClassicLocale());
}
