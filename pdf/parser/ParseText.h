#pragma once
// Reading one object written as PDF text, as tools and tests give dictionaries.
#include "pdf/token/PDFToken.h"

#include <string>

// The dictionary that `text` reads as, with its one reference, or null when the text does
// not read (without a document) as exactly one dictionary.
PDFToken* ParseDictionaryText(const std::string& text);
