#pragma once
// The `tarquil` program: its subcommands and exit statuses.
//   0  the command did what it was asked (for import: the importer returned 1)
//   1  it ran but failed (the importer returned 0, or a report could not be written)
//   2  the command line could not be used
// Help and the version go to standard output, errors to standard error.

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

int RunTarquil(int argc, const char* const* argv);
