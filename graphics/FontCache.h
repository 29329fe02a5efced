#pragma once
// Fonts already read in one import, by their font dictionary. A font is read when a page first
// names it, and most documents name the same fonts on every page: reading one again built its
// 65,536-entry encoding table again, a tenth of a large manual's import. The answer depends
// only on the font dictionary, so the cached one is the same.
#include "fonts/FontRecord.h"
#include "graphics/PDFGraphicsState.h"

#include <map>

class PDFToken;

struct CachedFont {
    // As the loader gave it, without its tables; missingWidth is NaN when the font sets none,
    // so that the width in force stays.
    FontRecord record;
    SharedEncodingMap encoding;   // null without /Encoding
    SharedToUnicodeMap toUnicode; // null without a usable /ToUnicode
};

// Keyed by the font dictionary's token: loaded objects live as long as the document, so a key
// never stands for another object within one read.
using FontCache = std::map<const PDFToken*, CachedFont>;
