#include "pdf/token/PDFNumbers.h"

#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>
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
    // The usual forms (digits, a point, a minus, an exponent) go through from_chars, which
    // takes the same longest prefix and rounds as correctly as strtod, at a fraction of the
    // cost. What it refuses (a leading blank or plus, a value out of range, where strtod
    // still gives infinity or a subnormal) goes to strtod in the classic locale.
    const char first = text[0];
    if (first == '-' || first == '.' || (first >= '0' && first <= '9')) {
        double value = 0.0;
        const auto result = std::from_chars(text, text + std::strlen(text), value);
        if (result.ec == std::errc())
            return value;
    }
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return strtod_l(text, nullptr, classic);
}
