#pragma once
// Line reading as the legacy reader does it: a fixed buffer, CR and LF as line ends, blank
// lines skipped, white space trimmed.
#include <cstdio>

inline constexpr int kScannerLineBuffer = 255;

// Reads the next line that is not empty after trimming into `line` (NUL-terminated) and
// returns true; false when the input is exhausted. A line longer than 254 bytes is cut:
// the 255th byte is dropped and what follows reads as a new line.
bool ReadScannerLine(std::FILE* file, char (&line)[kScannerLineBuffer]);

// Trims white space (as isspace sees it) in place, leading then trailing; a byte with the
// high bit set is never taken for white space. Returns the new length.
int TrimScannerLine(char* line);
