#pragma once
// The Lab arithmetic shared by alternate spaces and tint transforms.
#include "graphics/PDFGraphicsState.h"

#include <cstdint>

class PDFToken;

// The /WhitePoint of a Lab space array's dictionary, when it has exactly three items.
bool LabWhitePoint(const PDFToken* labSpace, double (&white)[3]);

// Sets the colour from L*, a*, b* under `white`: X, Y and Z go out as red, green and blue.
void SetLabColour(PDFGraphicsState& state, std::uint8_t which, const double (&white)[3], double l,
                  double a, double b);
