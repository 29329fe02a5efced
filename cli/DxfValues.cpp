#include "cli/DxfValues.h"

#include "host/base/GK_String.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

struct Rgb {
    int r, g, b;
};

// The standard colour index: 1-9 named colours, 10-249 twenty-four hues in steps of 15
// degrees, each at five brightnesses, full and half saturated, 250-255 greys. Only used to
// choose the nearest index, so a unit off here and there does not matter.
std::array<Rgb, 256> MakePalette() {
    std::array<Rgb, 256> palette{};
    const Rgb named[] = {{0, 0, 0},       {255, 0, 0},    {255, 255, 0}, {0, 255, 0},
                         {0, 255, 255},   {0, 0, 255},    {255, 0, 255}, {255, 255, 255},
                         {128, 128, 128}, {192, 192, 192}};
    for (int i = 0; i < 10; ++i)
        palette[i] = named[i];
    const double value[] = {1.0, 0.8, 0.6, 0.5, 0.3};
    for (int i = 10; i < 250; ++i) {
        const double hue = (i / 10 - 1) * 15.0;
        const double v = value[(i % 10) / 2];
        const double s = i % 2 == 0 ? 1.0 : 0.5;
        const double sector = hue / 60.0;
        const int k = static_cast<int>(sector);
        const double f = sector - k;
        const double p = v * (1 - s), q = v * (1 - s * f), t = v * (1 - s * (1 - f));
        double r = v, g = t, b = p;
        switch (k) {
        case 1:
            r = q, g = v, b = p;
            break;
        case 2:
            r = p, g = v, b = t;
            break;
        case 3:
            r = p, g = q, b = v;
            break;
        case 4:
            r = t, g = p, b = v;
            break;
        case 5:
            r = v, g = p, b = q;
            break;
        default:
            break;
        }
        palette[i] = {static_cast<int>(r * 255), static_cast<int>(g * 255),
                      static_cast<int>(b * 255)};
    }
    const int greys[] = {51, 80, 105, 130, 190, 255};
    for (int i = 0; i < 6; ++i)
        palette[250 + i] = {greys[i], greys[i], greys[i]};
    return palette;
}

int Distance(const Rgb& a, const GK_Color& c) {
    const int dr = a.r - c.Red(), dg = a.g - c.Green(), db = a.b - c.Blue();
    return dr * dr + dg * dg + db * db;
}

constexpr int kLineweights[] = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                                53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

std::uint32_t BigEndian(const unsigned char* p) {
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) |
           std::uint32_t(p[3]);
}

std::optional<std::pair<int, int>> PngSize(std::ifstream& in) {
    unsigned char head[24];
    if (!in.read(reinterpret_cast<char*>(head), sizeof head))
        return std::nullopt;
    if (std::string_view(reinterpret_cast<const char*>(head + 12), 4) != "IHDR")
        return std::nullopt;
    const std::uint32_t w = BigEndian(head + 16), h = BigEndian(head + 20);
    if (w == 0 || h == 0 || w > 0x7FFFFFFF || h > 0x7FFFFFFF)
        return std::nullopt;
    return std::make_pair(static_cast<int>(w), static_cast<int>(h));
}

// The size from the first start-of-frame marker, walking the marker segments. The scan ends at
// the start of the entropy-coded data, which holds no size.
std::optional<std::pair<int, int>> JpegSize(std::ifstream& in) {
    unsigned char b[2];
    if (!in.read(reinterpret_cast<char*>(b), 2) || b[0] != 0xFF || b[1] != 0xD8)
        return std::nullopt;
    for (int segments = 0; segments < 4096; ++segments) {
        int c = in.get();
        while (c == 0xFF)
            c = in.get();
        if (c == EOF || c == 0xD9 || c == 0xDA)
            return std::nullopt;
        if (c == 0x01 || (c >= 0xD0 && c <= 0xD7))
            continue; // markers without a length
        unsigned char len[2];
        if (!in.read(reinterpret_cast<char*>(len), 2))
            return std::nullopt;
        const int length = (len[0] << 8) | len[1];
        if (length < 2)
            return std::nullopt;
        const bool frame = c >= 0xC0 && c <= 0xCF && c != 0xC4 && c != 0xC8 && c != 0xCC;
        if (frame) {
            unsigned char sof[5];
            if (length < 7 || !in.read(reinterpret_cast<char*>(sof), 5))
                return std::nullopt;
            const int h = (sof[1] << 8) | sof[2], w = (sof[3] << 8) | sof[4];
            if (w == 0 || h == 0)
                return std::nullopt;
            return std::make_pair(w, h);
        }
        in.seekg(length - 2, std::ios::cur);
    }
    return std::nullopt;
}

} // namespace

int DxfColorIndex(const GK_Color& color) {
    static const std::array<Rgb, 256> palette = MakePalette();
    int best = 7;
    int bestDistance = std::min(Distance({0, 0, 0}, color), Distance({255, 255, 255}, color));
    for (int i = 1; i < 256; ++i) {
        const int d = Distance(palette[i], color);
        if (i != 7 && d < bestDistance) {
            best = i;
            bestDistance = d;
        }
    }
    return best;
}

int DxfTrueColor(const GK_Color& color) {
    return (color.Red() << 16) | (color.Green() << 8) | color.Blue();
}

int DxfLineweight(double millimetres) {
    if (!(millimetres > 0.0))
        return -3;
    const double hundredths = millimetres * 100.0;
    int best = kLineweights[0];
    for (int w : kLineweights)
        if (std::abs(w - hundredths) < std::abs(best - hundredths))
            best = w;
    return best;
}

std::wstring DxfTableName(std::wstring_view name) {
    static const std::wstring_view forbidden = L"<>/\\\":;?*|=`";
    std::wstring out;
    for (const wchar_t c : name) {
        const bool bad = (c >= 0 && c < 0x20) || c == 0x7F || forbidden.find(c) != forbidden.npos;
        out += bad ? L'_' : c;
    }
    const std::size_t first = out.find_first_not_of(L' ');
    if (first == std::wstring::npos)
        return L"_";
    out = out.substr(first, out.find_last_not_of(L' ') - first + 1);
    if (out.size() > 255)
        out.resize(255);
    return out;
}

double Dot(const GK_3dVector& a, const GK_3dVector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

GK_3dVector Cross(const GK_3dVector& a, const GK_3dVector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

std::optional<DxfOcs> DxfOcs::FromNormal(const GK_3dVector& normal) {
    const double length = normal.Length();
    if (!std::isfinite(length) || length == 0.0)
        return std::nullopt;
    DxfOcs ocs;
    ocs.normal = normal * (1.0 / length);
    const GK_3dVector& n = ocs.normal;
    if (n.x == 0.0 && n.y == 0.0)
        ocs.normal = {0.0, 0.0, n.z > 0 ? 1.0 : -1.0};
    // The arbitrary axis rule: near the world's z axis the x axis comes from world y,
    // elsewhere from world z.
    constexpr double kNear = 1.0 / 64.0;
    const GK_3dVector ax = std::abs(n.x) < kNear && std::abs(n.y) < kNear
                               ? Cross({0.0, 1.0, 0.0}, ocs.normal)
                               : Cross({0.0, 0.0, 1.0}, ocs.normal);
    ocs.xaxis = ax * (1.0 / ax.Length());
    const GK_3dVector ay = Cross(ocs.normal, ocs.xaxis);
    ocs.yaxis = ay * (1.0 / ay.Length());
    return ocs;
}

GK_3dPoint DxfOcs::ToOcs(const GK_3dPoint& p) const {
    if (IsWorld())
        return p;
    const GK_3dVector v(p.x, p.y, p.z);
    return {Dot(v, xaxis), Dot(v, yaxis), Dot(v, normal)};
}

std::optional<std::pair<int, int>> ImagePixelSize(const std::wstring& path) {
    std::ifstream in(VmUtf8FromWide(path), std::ios::binary);
    if (!in)
        return std::nullopt;
    const int first = in.peek();
    if (first == 0x89)
        return PngSize(in);
    if (first == 0xFF)
        return JpegSize(in);
    return std::nullopt;
}
