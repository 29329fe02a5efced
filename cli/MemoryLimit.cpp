#include "cli/MemoryLimit.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

std::atomic<std::size_t> allocated{0};
std::atomic<std::size_t> ceiling{std::numeric_limits<std::size_t>::max()};

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

void* Allocate(std::size_t size, std::size_t alignment) {
    if (size > ceiling.load(std::memory_order_relaxed) -
                   std::min(allocated.load(std::memory_order_relaxed),
                            ceiling.load(std::memory_order_relaxed)))
        return nullptr;
    if (size == 0)
        size = 1;
    void* p = nullptr;
    if (alignment <= alignof(std::max_align_t))
        p = std::malloc(size);
    else if (posix_memalign(&p, alignment, size) != 0)
        p = nullptr;
    if (p)
        allocated.fetch_add(malloc_usable_size(p), std::memory_order_relaxed);
    return p;
}

void Release(void* p) noexcept {
    if (!p)
        return;
    allocated.fetch_sub(malloc_usable_size(p), std::memory_order_relaxed);
    std::free(p);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    void* p = Allocate(size, alignment);
    if (!p)
        throw std::bad_alloc();
    return p;
}

// The process's virtual size now, in bytes, from /proc; 0 when it cannot be read.
unsigned long long VirtualSize() {
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
    return allocated.load(std::memory_order_relaxed);
}

MemoryLimitScope::MemoryLimitScope(std::size_t limit) : m_previous(ceiling.load()) {
    if (limit == 0)
        return;
    const std::size_t held = AllocatedBytes();
    ceiling.store(held + limit);
    // A sanitizer reserves terabytes of address space for itself, so there the count above
    // is the only bound.
    if (kSanitized)
        return;
    rlimit current{};
    if (getrlimit(RLIMIT_AS, &current) != 0)
        return;
    // Room above the bound for the C libraries' own allocations, which the count does not
    // see, and for the way the allocator maps memory.
    const unsigned long long wanted = VirtualSize() + 2ULL * limit + (1ULL << 30);
    if (current.rlim_cur != RLIM_INFINITY && current.rlim_cur <= wanted)
        return;
    m_addressSpace[0] = current.rlim_cur;
    m_addressSpace[1] = current.rlim_max;
    rlimit lowered = current;
    lowered.rlim_cur = wanted;
    m_addressSpaceSet = setrlimit(RLIMIT_AS, &lowered) == 0;
}

MemoryLimitScope::~MemoryLimitScope() {
    ceiling.store(m_previous);
    if (m_addressSpaceSet) {
        rlimit restored{};
        restored.rlim_cur = m_addressSpace[0];
        restored.rlim_max = m_addressSpace[1];
        setrlimit(RLIMIT_AS, &restored);
    }
}
