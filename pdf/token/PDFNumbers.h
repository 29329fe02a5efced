#pragma once
// Number conversions of the PDF layer, the same in every locale.
#include <cstdint>

// Leading white space, an optional sign, then decimal digits up to the first other byte;
// 0 without digits. Values beyond 32 bits saturate.
std::int32_t PdfAtol(const char* text);
// strtod of the classic locale from the start of the text; 0.0 when nothing is read.
double PdfAtof(const char* text);

// The value of a hexadecimal digit, either case; -1 for any other byte.
inline int PdfHexDigit(int c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}
