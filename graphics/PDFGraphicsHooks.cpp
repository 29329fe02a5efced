// Hooks for colour-space evaluation and font loading. They have no logic yet: colour
// operators set only the space's name, and Tf keeps only the font's name and size. The
// operands the colour hooks would read stay on the stack, as for a space that is not
// understood.
#include "graphics/PDFGraphics.h"

void PDFGraphics::SetAlternateColour(PDFToken* /*alternate*/, std::uint8_t /*which*/,
                                     std::uint64_t /*count*/) {}

void PDFGraphics::ApplyColour(std::uint8_t /*which*/) {}

void PDFGraphics::LoadFont(const std::string& /*name*/) {}
