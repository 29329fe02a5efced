#pragma once
// Code tables of the fax decoder, private to filters/CcittFax.cpp.
//
// Each table is indexed by the next kLookupBits bits of input (most significant first,
// zeros past the end of the data) and answers the code those bits start with and its
// length, so that one lookup replaces a bit-by-bit walk of a prefix tree. A bit pattern
// that starts no code answers kInvalid with the length at which it left every code: when
// the input has fewer bits left than an entry's length, the code is cut off, whatever it
// would have been.
#include <array>
#include <cstdint>

namespace ccitt {

// The longest code is 13 bits (black make-up codes 512 to 1728).
inline constexpr int kLookupBits = 13;

struct CodeEntry {
    std::int16_t value;  // a run length, a mode, kEol or kInvalid
    std::uint8_t length; // bits taken by the code
};

using CodeTable = std::array<CodeEntry, std::size_t{1} << kLookupBits>;

// Values shared by all tables.
inline constexpr std::int16_t kEol = -1;     // 000000000001
inline constexpr std::int16_t kInvalid = -2; // a pattern no code starts with

// Values of the mode table. Vertical offsets -3..3 are kVertical0 + offset.
inline constexpr std::int16_t kVertical0 = 3;
inline constexpr std::int16_t kPass = 7;
inline constexpr std::int16_t kHorizontal = 8;
inline constexpr std::int16_t kExtension = 9;      // 0000001000 .. 0000001110
inline constexpr std::int16_t kExtensionStop = 10; // 0000001111

// Terminating codes answer 0..63, make-up codes their multiple of 64 (up to 2560).
extern const CodeTable kWhiteCodes;
extern const CodeTable kBlackCodes;
extern const CodeTable kModeCodes;

} // namespace ccitt
