#include "filters/DecodeLimit.h"

#include <algorithm>

namespace {

// Process-wide, as reads run one at a time on the host's thread.
std::uint64_t remainingBudget = 0;
bool budgetActive = false;

} // namespace

DecodeLimit CurrentDecodeLimit() {
    if (budgetActive && remainingBudget < kMaxDecodedStream)
        return {static_cast<std::size_t>(remainingBudget), kPdfDecodeBudgetExceeded};
    return {static_cast<std::size_t>(kMaxDecodedStream), kPdfStreamTooLarge};
}

bool ChargeDecoded(std::size_t bytes) {
    if (!budgetActive)
        return true;
    if (bytes > remainingBudget) {
        remainingBudget = 0;
        return false;
    }
    remainingBudget -= bytes;
    return true;
}

DecodeBudgetScope::DecodeBudgetScope(std::uint64_t budget)
    : m_previous(remainingBudget), m_previousActive(budgetActive) {
    remainingBudget = budget;
    budgetActive = true;
}

DecodeBudgetScope::~DecodeBudgetScope() {
    remainingBudget = m_previous;
    budgetActive = m_previousActive;
}
