#pragma once
// Bounds on what decoding may produce, so that a stream of a few kilobytes cannot unpack into
// gigabytes. One stage of a filter chain may produce at most kMaxDecodedStream bytes; all the
// streams a read decodes together at most its budget, which a read sets up with a
// DecodeBudgetScope (without one, only the bound of one stream counts). Real files stay far
// below both: the largest content stream seen in the corpus inflates to 15 MB, the heaviest
// manual to about 130 MB in all.
#include "pdf/token/PDFError.h"

#include <cstddef>
#include <cstdint>

// Half a gigabyte: several times any content stream met in real files, and room for an
// image of a few hundred megapixels.
inline constexpr std::uint64_t kMaxDecodedStream = std::uint64_t{1} << 29;
// Four gigabytes for everything one read decodes, forms decoded each time they are drawn
// included: some thirty times the heaviest real file, a few seconds of inflating.
inline constexpr std::uint64_t kMaxDecodedPerRead = std::uint64_t{1} << 32;

struct DecodeLimit {
    std::size_t bytes; // what one stage may produce now
    PDFStatus status;  // the code of a stage that goes beyond it
};

// The smaller of the bound of one stream and what is left of the read's budget.
DecodeLimit CurrentDecodeLimit();

// Takes `bytes` off the read's budget; false once it is spent.
bool ChargeDecoded(std::size_t bytes);

// Gives a read its budget for its duration, and puts the previous one back after it.
class DecodeBudgetScope {
public:
    explicit DecodeBudgetScope(std::uint64_t budget = kMaxDecodedPerRead);
    ~DecodeBudgetScope();
    DecodeBudgetScope(const DecodeBudgetScope&) = delete;
    DecodeBudgetScope& operator=(const DecodeBudgetScope&) = delete;

private:
    std::uint64_t m_previous;
    bool m_previousActive;
};
