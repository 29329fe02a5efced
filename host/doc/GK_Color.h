#pragma once
// Colours as the host stores them: red in the low byte, then green, then blue, top byte 0.
#include <cstdint>

class GK_Color {
public:
    GK_Color() = default;
    explicit GK_Color(std::uint32_t packed) : m_color(packed & 0x00FFFFFFu) {}
    GK_Color(int red, int green, int blue)
        : m_color((static_cast<std::uint32_t>(red) & 0xFF) |
                  ((static_cast<std::uint32_t>(green) & 0xFF) << 8) |
                  ((static_cast<std::uint32_t>(blue) & 0xFF) << 16)) {}

    int Red() const { return static_cast<int>(m_color & 0xFF); }
    int Green() const { return static_cast<int>((m_color >> 8) & 0xFF); }
    int Blue() const { return static_cast<int>((m_color >> 16) & 0xFF); }
    std::uint32_t Packed() const { return m_color; }
    operator std::uint32_t() const { return m_color; }
    bool operator==(const GK_Color&) const = default;

private:
    std::uint32_t m_color = 0;
};
