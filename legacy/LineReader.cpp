#include "legacy/LineReader.h"

#include <cctype>
#include <cstring>

namespace {

inline int NextByte(std::FILE* file) {
#if defined(_POSIX_C_SOURCE) || defined(__unix__)
    return getc_unlocked(file); // one thread reads; the locked form costs for nothing
#else
    return std::getc(file);
#endif
}

inline bool IsTrimmable(unsigned char c) {
    return c < 0x80 && std::isspace(c);
}

} // namespace

int TrimScannerLine(char* line) {
    const int n = static_cast<int>(std::strlen(line));
    int b = 0;
    while (b < n && IsTrimmable(static_cast<unsigned char>(line[b])))
        ++b;
    int e = n;
    while (e > b && IsTrimmable(static_cast<unsigned char>(line[e - 1])))
        --e;
    if (b > 0)
        std::memmove(line, line + b, static_cast<std::size_t>(e - b));
    line[e - b] = '\0';
    return e - b;
}

bool ReadScannerLine(std::FILE* file, char (&line)[kScannerLineBuffer]) {
    for (;;) {
        int n = 0;
        bool atEnd = false;
        for (;;) {
            const int c = NextByte(file);
            if (c == EOF) {
                atEnd = true;
                break;
            }
            if (c == '\r' || c == '\n') {
                if (n == 0)
                    continue; // a line end at the start: blank lines end nothing
                break;
            }
            if (n == kScannerLineBuffer - 1)
                break; // the byte just read is dropped; the rest reads as a new line
            line[n++] = static_cast<char>(c);
        }
        line[n] = '\0';
        if (TrimScannerLine(line) > 0)
            return true;
        if (atEnd)
            return false;
    }
}
