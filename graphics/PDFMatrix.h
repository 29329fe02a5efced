#pragma once
// A PDF transformation matrix: a point maps to (a·x + c·y + e, b·x + d·y + f).

struct PDFMatrix {
    double a = 1.0;
    double b = 0.0;
    double c = 0.0;
    double d = 1.0;
    double e = 0.0;
    double f = 0.0;

    void Transform(double x, double y, double& outX, double& outY) const {
        outX = a * x + c * y + e;
        outY = b * x + d * y + f;
    }

    bool operator==(const PDFMatrix&) const = default;
};
