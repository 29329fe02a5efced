#pragma once
// strtod and strtol that read numbers the same whatever the process's locale.

double ClassicStrtod(const char* text, char** end);
long ClassicStrtol(const char* text, char** end);
