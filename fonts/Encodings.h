#pragma once
// The encoding maps a font's /Encoding can select. Only their sizes matter to the text
// decoding (65536 entries read strings two bytes at a time); their values are kept as the
// font describes them but translate nothing.
#include "fonts/EncodingMap.h"

#include <string_view>

// "MacRomanEncoding" and "WinAnsiEncoding" give 256 entries from their code pages,
// "Identity-H" 65536 entries of code + 29, and every other name (the empty one, Identity-V,
// StandardEncoding included) 65536 entries of code to itself.
EncodingMap EncodingByName(std::string_view name);

// The fixed table for fonts whose registry and ordering read "PDFAUTOCAD-Indentity0": 65536
// entries, 0 except for the printable range and a few accented letters.
EncodingMap AutocadIdentityEncoding();
