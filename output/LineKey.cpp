#include "output/LineKey.h"

#include <cmath>

LineKey MakeLineKey(double x0, double y0, double x1, double y1) {
    LineKey key;
    double dx = x1 - x0;
    double dy = y1 - y0;
    // One direction per line, whichever way the segment was drawn.
    if (dy < 0.0) {
        dx = -dx;
        dy = -dy;
    }
    const double len = std::sqrt(dx * dx + dy * dy);
    key.degenerate = kDegenerateLength > len;
    if (key.degenerate)
        return key;
    key.ux = dx / len;
    key.uy = dy / len;
    key.offset = ((key.ux * y0 - key.uy * x0) + (key.ux * y1 - key.uy * x1)) * 0.5;
    return key;
}
