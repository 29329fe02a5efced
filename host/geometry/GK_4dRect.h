#pragma once
// An axis-aligned rectangle by its four sides.

struct GK_4dRect {
    double left = 0.0, bottom = 0.0, right = 0.0, top = 0.0;

    GK_4dRect() = default;
    GK_4dRect(double l, double b, double r, double t) : left(l), bottom(b), right(r), top(t) {}
    double Width() const { return right - left; }
    double Height() const { return top - bottom; }
    double CenterX() const { return 0.5 * (left + right); }
    double CenterY() const { return 0.5 * (bottom + top); }
    // Moves each side outward: left and right by dx, bottom and top by dy.
    void InflateRect(double dx, double dy) {
        left -= dx;
        right += dx;
        bottom -= dy;
        top += dy;
    }
};
