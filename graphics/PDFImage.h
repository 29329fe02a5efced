#pragma once
// One image as handed to the sink by DrawImage, which takes ownership. Only the record: the
// code that fills it from an image XObject lives with the Do operator.
#include <array>
#include <cstdint>
#include <string>

struct PDFImage {
    std::int32_t width = 0;            // /Width, 0 if absent
    std::int32_t height = 0;           // /Height, 0 if absent
    std::int32_t bitsPerComponent = 0; // /BitsPerComponent; 8 once an Indexed image is expanded
    std::string colorSpace;            // name of the colour space; may be empty
    std::string data;                  // decoded samples, or the tagged JPEG data for DCT
    // (0, 0), (1, 0), (1, 1), (0, 1) through the matrix at the time of Do, in this order; each
    // pair is x, y.
    std::array<std::array<double, 2>, 4> corners{};
};
