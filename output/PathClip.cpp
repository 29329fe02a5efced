#include "output/PathClip.h"

#include <algorithm>

PathClip::PathClip(const std::vector<PathElement>* elements_) : elements(elements_) {
    active = elements && elements->size() >= 2;
    if (!active)
        return;
    // The box is what outcodes test against; it does not change during one painting
    // operation, so it is worked out once.
    minX = maxX = elements->front().x;
    minY = maxY = elements->front().y;
    for (const PathElement& e : *elements) {
        minX = std::min(minX, e.x);
        maxX = std::max(maxX, e.x);
        minY = std::min(minY, e.y);
        maxY = std::max(maxY, e.y);
    }
}

int PathClip::Outcode(double x, double y) const {
    if (!active)
        return 0;
    int code = 0;
    if (x < minX)
        code |= 1;
    if (y < minY)
        code |= 2;
    if (x > maxX)
        code |= 4;
    if (y > maxY)
        code |= 8;
    return code;
}

int PathClip::WindingNumber(double x, double y) const {
    int winding = 0;
    const std::vector<PathElement>& v = *elements;
    for (std::size_t i = 1; i < v.size(); ++i) {
        const PathElement& a = v[i - 1];
        const PathElement& b = v[i];
        const double cross = (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
        if (a.y <= y && b.y > y && cross > 0.0)
            ++winding;
        else if (a.y > y && b.y <= y && cross < 0.0)
            --winding;
    }
    return winding;
}

void PathClip::ClipSegment(double ax, double ay, double bx, double by,
                           std::vector<double>& out) const {
    out.clear();
    if (!active) {
        out.push_back(0.0);
        out.push_back(1.0);
        return;
    }
    const std::vector<PathElement>& v = *elements;
    const double dx = bx - ax;
    const double dy = by - ay;
    const auto side = [&](const PathElement& p) {
        const double cross = dx * (p.y - ay) - dy * (p.x - ax);
        return (cross > 0.0) - (cross < 0.0);
    };

    std::vector<double>& ts = scratch;
    ts.assign({0.0, 1.0});
    // A crossing whose parameters cannot be computed keeps the previous ones, which at the
    // start are 0: a crossing at 0 adds nothing, as 0 is in the list already.
    double t = 0.0;
    double u = 0.0;
    int previousSide = side(v[0]);
    for (std::size_t i = 1; i < v.size(); ++i) {
        const int currentSide = side(v[i]);
        if (currentSide != previousSide) {
            const PathElement& p = v[i - 1];
            const double ex = v[i].x - p.x;
            const double ey = v[i].y - p.y;
            // a + t*d = p + u*e, solved by cross products with d and with e.
            const double denominatorU = ex * dy - ey * dx;
            if (denominatorU != 0.0)
                u = ((ax - p.x) * dy - (ay - p.y) * dx) / denominatorU;
            const double denominatorT = dx * ey - dy * ex;
            if (denominatorT != 0.0)
                t = ((p.x - ax) * ey - (p.y - ay) * ex) / denominatorT;
            if (t >= 0.0 && t <= 1.0 && u >= 0.0 && u <= 1.0)
                ts.push_back(t);
        }
        previousSide = currentSide;
    }
    std::sort(ts.begin(), ts.end());
    for (std::size_t i = 1; i < ts.size(); ++i) {
        const double t0 = ts[i - 1];
        const double t1 = ts[i];
        if (t0 == t1)
            continue;
        const double mid = 0.5 * (t0 + t1);
        if (WindingNumber(ax + mid * dx, ay + mid * dy) != 0) {
            out.push_back(t0);
            out.push_back(t1);
        }
    }
}
