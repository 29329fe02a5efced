// The font-loading hook. Tf keeps only the font's name and size so far.
#include "graphics/PDFGraphics.h"

void PDFGraphics::LoadFont(const std::string& /*name*/) {}
