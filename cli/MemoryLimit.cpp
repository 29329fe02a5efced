#include "cli/MemoryLimit.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define TARQUIL_COUNT_ALLOCATIONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARQUIL_COUNT_ALLOCATIONS 1
#endif
#endif
#ifndef TARQUIL_COUNT_ALLOCATIONS
#define TARQUIL_COUNT_ALLOCATIONS 0
#endif

namespace {

// Counted per thread and not atomically: the import runs on one thread. Memory freed by
// another thread than the one that took it only skews those threads' counts (signed, so
// nothing wraps). Counting costs about a twentieth of a large import's time, which is why
// only sanitizer builds, which cannot use the address-space limit, pay it.
thread_local std::ptrdiff_t allocated = 0;
thread_local std::ptrdiff_t ceiling = std::numeric_limits<std::ptrdiff_t>::max();

#if TARQUIL_COUNT_ALLOCATIONS
void* Allocate(std::size_t size, std::size_t alignment) {
    if (size > static_cast<std::size_t>(ceiling - std::min(allocated, ceiling)))
        return nullptr;
    if (size == 0)
        size = 1;
    void* p = nullptr;
    if (alignment <= alignof(std::max_align_t))
        p = std::malloc(size);
    else if (posix_memalign(&p, alignment, size) != 0)
        p = nullptr;
    if (p)
        allocated += static_cast<std::ptrdiff_t>(malloc_usable_size(p));
    return p;
}

void Release(void* p) noexcept {
    if (!p)
        return;
    allocated -= static_cast<std::ptrdiff_t>(malloc_usable_size(p));
    std::free(p);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* p = Allocate(size, alignment);
    if (!p)
        throw std::bad_alloc();
    return p;
}

#endif

// The process's virtual size now, in bytes, from /proc; 0 when it cannot be read.
[[maybe_unused]] unsigned long long VirtualSize() {
    std::FILE* statm = std::fopen("/proc/self/statm", "r");
    if (!statm)
        return 0;
    unsigned long long pages = 0;
    if (std::fscanf(statm, "%llu", &pages) != 1)
        pages = 0;
    std::fclose(statm);
    return pages * static_cast<unsigned long long>(sysconf(_SC_PAGESIZE));
}

} // namespace

#if TARQUIL_COUNT_ALLOCATIONS
// The replaced allocation functions: every variant goes through Allocate and Release.
void* operator new(std::size_t size) {
    return AllocateOrThrow(size, 0);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, 0);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 0);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, 0);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* p) noexcept {
    Release(p);
}
void operator delete[](void* p) noexcept {
    Release(p);
}
void operator delete(void* p, std::size_t) noexcept {
    Release(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    Release(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    Release(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    Release(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
    Release(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    Release(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    Release(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    Release(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    Release(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    Release(p);
}

#endif

std::optional<std::size_t> ParseMemorySize(const std::string& text) {
    if (text == "none")
        return std::size_t{0};
    std::size_t i = 0;
    unsigned long long value = 0;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
        if (value > (std::numeric_limits<unsigned long long>::max() - 9) / 10)
            return std::nullopt;
        value = value * 10 + static_cast<unsigned>(text[i] - '0');
    }
    if (i == 0)
        return std::nullopt;
    unsigned shift = 0;
    if (i < text.size()) {
        switch (std::toupper(static_cast<unsigned char>(text[i]))) {
        case 'K':
            shift = 10;
            break;
        case 'M':
            shift = 20;
            break;
        case 'G':
            shift = 30;
            break;
        case 'T':
            shift = 40;
            break;
        default:
            return std::nullopt;
        }
        ++i;
        if (i < text.size() && (text[i] == 'B' || text[i] == 'b'))
            ++i;
    }
    if (i != text.size() || value > (std::numeric_limits<std::size_t>::max() >> shift))
        return std::nullopt;
    return static_cast<std::size_t>(value << shift);
}

std::size_t DefaultMemoryLimit() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return static_cast<std::size_t>(pages) / 2 * static_cast<std::size_t>(pageSize);
}

std::size_t AllocatedBytes() {
    return allocated > 0 ? static_cast<std::size_t>(allocated) : 0;
}

MemoryLimitScope::MemoryLimitScope(std::size_t limit) : m_previous(ceiling) {
    if (limit == 0)
        return;
#if TARQUIL_COUNT_ALLOCATIONS
    // A sanitizer reserves terabytes of address space for itself, so there the count of
    // allocations is the bound.
    const std::size_t held = AllocatedBytes();
    const auto most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    ceiling = static_cast<std::ptrdiff_t>(std::min(most - std::min(most, held), limit) + held);
#else
    rlimit current{};
    if (getrlimit(RLIMIT_AS, &current) != 0)
        return;
    // The bound above what the process already maps, with room for the allocator's arenas
    // and the stacks of the threads it may start.
    const unsigned long long wanted = VirtualSize() + limit + (256ULL << 20);
    if (current.rlim_cur != RLIM_INFINITY && current.rlim_cur <= wanted)
        return;
    m_addressSpace[0] = current.rlim_cur;
    m_addressSpace[1] = current.rlim_max;
    rlimit lowered = current;
    lowered.rlim_cur = wanted;
    m_addressSpaceSet = setrlimit(RLIMIT_AS, &lowered) == 0;
#endif
}

MemoryLimitScope::~MemoryLimitScope() {
    ceiling = m_previous;
    if (m_addressSpaceSet) {
        rlimit restored{};
        restored.rlim_cur = m_addressSpace[0];
        restored.rlim_max = m_addressSpace[1];
        setrlimit(RLIMIT_AS, &restored);
    }
}
