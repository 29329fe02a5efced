#pragma once
// Sorting a file by content: a "%%EndSetup" marker means a PostScript-based file.
#include <cstdio>

// Passes over the stream for the marker, case-insensitive, for at most 2,000,000 passes.
// Each pass reads a byte; a "%" starts a chain of single reads that a wrong byte ends, and
// the next pass starts after that byte. The chain's bytes do not count as passes.
bool ScanForLegacyMarker(std::FILE* file);
