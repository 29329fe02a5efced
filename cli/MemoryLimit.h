#pragma once
// The last line of defence of a headless import: a bound on the memory the importer may hold,
// so that a file nobody foresaw ends with the importer's out-of-memory message instead of the
// kernel killing the process. The program lowers its address-space limit for the import:
// allocations past it fail, operator new throws std::bad_alloc, and the importer's entry
// catches it. Sanitizer builds reserve terabytes of address space for their own use, so there
// the program counts its C++ allocations instead (it replaces the global operator new).
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

// Bytes of a size such as "512M", "2G", "4096K" or "1073741824"; "0" and "none" mean no
// bound. Nothing for text that is no size.
std::optional<std::size_t> ParseMemorySize(const std::string& text);

// Half of the machine's physical memory: room for any real drawing, and some left for the
// modeller that the importer runs in.
std::size_t DefaultMemoryLimit();

// Bytes the process's C++ allocations hold now, where they are counted (else 0).
std::size_t AllocatedBytes();

// Holds the bound for its lifetime on the thread that makes it (the import's): allocations
// beyond `limit` bytes more than were held at its start fail. 0 means no bound.
class MemoryLimitScope {
public:
    explicit MemoryLimitScope(std::size_t limit);
    ~MemoryLimitScope();
    MemoryLimitScope(const MemoryLimitScope&) = delete;
    MemoryLimitScope& operator=(const MemoryLimitScope&) = delete;

private:
    std::ptrdiff_t m_previous;
    bool m_addressSpaceSet = false;
    unsigned long long m_addressSpace[2] = {0, 0}; // the soft and hard limits before
};
