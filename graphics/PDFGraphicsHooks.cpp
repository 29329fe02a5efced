// Hooks for colour-space evaluation and font loading. Only the device colour spaces are
// evaluated so far; any other space, and the alternates of special spaces, leave the colour
// as it was and their operands on the stack, as for a space that is not understood. Tf keeps
// only the font's name and size.
#include "graphics/PDFGraphics.h"

void PDFGraphics::SetAlternateColour(PDFToken* /*alternate*/, std::uint8_t /*which*/,
                                     std::uint64_t /*count*/) {}

void PDFGraphics::ApplyColour(std::uint8_t which) {
    const std::string& name = colorSpaceName[which];
    if (name == "DeviceGray") {
        const double v = PopFloat(0.0);
        state->SetColour(which, v, v, v);
    } else if (name == "DeviceRGB") {
        const double b = PopFloat(0.0);
        const double g = PopFloat(0.0);
        const double r = PopFloat(0.0);
        state->SetColour(which, r, g, b);
    } else if (name == "DeviceCMYK") {
        const double k = PopFloat(0.0);
        const double y = PopFloat(0.0);
        const double m = PopFloat(0.0);
        const double c = PopFloat(0.0);
        state->SetColour(which, 1.0 - (c * (1.0 - k) + k), 1.0 - (m * (1.0 - k) + k),
                         1.0 - (y * (1.0 - k) + k));
    }
}
