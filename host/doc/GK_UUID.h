#pragma once
// 128-bit identifiers of model components.
#include <array>
#include <cstdint>
#include <string>

struct GK_UUID {
    std::array<std::uint8_t, 16> bytes{};

    bool IsNil() const {
        for (auto b : bytes)
            if (b)
                return false;
        return true;
    }
    bool operator==(const GK_UUID&) const = default;
    auto operator<=>(const GK_UUID&) const = default;
    // The usual 8-4-4-4-12 lower-case text.
    std::string ToString() const;
    // A version-4-shaped id whose last bytes carry `serial`; documents number their
    // components so that an import is reproducible.
    static GK_UUID FromSerial(std::uint64_t serial);
};

inline constexpr GK_UUID GK_nil_uuid{};
