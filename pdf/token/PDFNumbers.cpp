#include "pdf/token/PDFNumbers.h"

#include <cctype>
#include <cstdlib>
#include <limits>
#include <locale.h>

std::int32_t PdfAtol(const char* text) {
    const char* p = text;
    while (std::isspace(static_cast<unsigned char>(*p)))
        ++p;
    bool negative = false;
    if (*p == '+' || *p == '-')
        negative = *p++ == '-';
    std::int64_t value = 0;
    constexpr std::int64_t kLimit = std::int64_t(std::numeric_limits<std::int32_t>::max()) + 1;
    for (; *p >= '0' && *p <= '9'; ++p)
        if (value <= kLimit)
            value = value * 10 + (*p - '0');
    if (negative)
        value = -value;
    if (value > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::int32_t>::max();
    if (value < std::numeric_limits<std::int32_t>::min())
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

double PdfAtof(const char* text) {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return strtod_l(text, nullptr, classic);
}
