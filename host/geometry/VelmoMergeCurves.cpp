#include "host/geometry/VelmoMergeCurves.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

// Curve ends are numbered 2*i (start of input curve i) and 2*i+1 (its end). Ordering
// candidates by (distance, end number) is therefore ordering by distance, then lowest input
// index, then start before end.

namespace {

// Cell coordinates are folded into 21 bits per axis to form a 63-bit bucket key. Cells
// whose coordinates differ by a multiple of 2^21 share a bucket; that only adds candidates,
// which the distance test then rejects.
constexpr int kKeyBits = 21;
constexpr std::uint64_t kKeyMask = (std::uint64_t{1} << kKeyBits) - 1;
// Cell coordinates are clamped to this; they never get near it unless the tolerance is
// subnormal.
constexpr double kCellLimit = 4611686018427387904.0; // 2^62

// Euclidean distance when it can be at most `tol`, otherwise infinity. The largest
// component rejects most candidates without a square root and decides the cases where
// the sum of squares would overflow or underflow.
double DistanceWithin(const GK_3dPoint& a, const GK_3dPoint& b, double tol) {
    const double dx = std::fabs(a.x - b.x);
    const double dy = std::fabs(a.y - b.y);
    const double dz = std::fabs(a.z - b.z);
    const double m = std::max({dx, dy, dz});
    if (!(m <= tol))
        return std::numeric_limits<double>::infinity();
    if (m == 0.0)
        return 0.0;
    double d;
    if (m > 1e150 || m < 1e-150) {
        const double sx = dx / m, sy = dy / m, sz = dz / m;
        d = m * std::sqrt(sx * sx + sy * sy + sz * sz);
    } else {
        d = std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    return d <= tol ? d : std::numeric_limits<double>::infinity();
}

// The free curve ends, bucketed in a uniform grid whose cells are several times the
// tolerance, so that a query usually needs its own cell only: it visits the cells that the
// box of half-width `tolerance` around it touches. Each bucket's ends lie together in one
// flat array, coordinates included, in ascending order of end number. Taking a curve only
// marks it; the next query that meets one of its ends drops the end from its bucket, so no
// end is looked at twice after its curve is gone and a removal touches no memory a query
// would not touch anyway. Buckets are found through an open-addressing hash table whose
// slots hold the bucket's range themselves, so a query costs about two cache misses.
//
// The cell size follows the tolerance only, never the extent of the drawing, so a dense
// cluster far from an outlier is not crammed into a few cells. It is at least a few units in
// the last place of the largest coordinate, which bounds cell coordinates by about 2^44.
class EndGrid {
public:
    EndGrid(const std::vector<GK_3dPoint>& ends, const std::vector<char>& live, double tol)
        : m_tol(tol), m_taken(ends.size() / 2, 0) {
        const std::size_t count = ends.size();
        std::size_t liveCount = 0;
        double maxAbs = 0.0;
        for (std::size_t e = 0; e < count; ++e) {
            if (!live[e])
                continue;
            ++liveCount;
            maxAbs = std::max(
                {maxAbs, std::fabs(ends[e].x), std::fabs(ends[e].y), std::fabs(ends[e].z)});
        }
        // Half the tolerance, as cells are measured in halved coordinates (so that adding the
        // reach cannot overflow), plus enough that rounding in the cell arithmetic cannot
        // keep an end within tolerance out of the cells a query visits.
        m_reach = 0.5 * tol * (1.0 + 1e-6) + 16.0 * DBL_EPSILON * maxAbs;
        if (!std::isfinite(m_reach))
            m_reach = DBL_MAX / (4.0 * kCellsPerReach); // everything within reach: one cell
        m_halfCell = kCellsPerReach * m_reach;
        if (!(m_halfCell > 0.0))
            m_halfCell = 1.0; // all ends at the origin and exact matching
        if (!std::isfinite(m_halfCell))
            m_halfCell = DBL_MAX;

        std::size_t capacity = 16;
        while (capacity < 2 * liveCount)
            capacity *= 2;
        m_slots.assign(capacity, Slot{});
        m_mask = capacity - 1;
        // Keys first, in one sequential pass; the slot accesses that follow are random, and
        // knowing the keys ahead lets them be prefetched.
        std::vector<std::uint64_t> keys;
        std::vector<int> liveEnds;
        keys.reserve(liveCount);
        liveEnds.reserve(liveCount);
        for (std::size_t e = 0; e < count; ++e) {
            if (!live[e])
                continue;
            std::int64_t c[3];
            for (int a = 0; a < 3; ++a) {
                c[a] = CellIndex(Coordinate(ends[e], a));
                m_cellLo[a] = keys.empty() ? c[a] : std::min(m_cellLo[a], c[a]);
                m_cellHi[a] = keys.empty() ? c[a] : std::max(m_cellHi[a], c[a]);
            }
            keys.push_back(Key(c));
            liveEnds.push_back(static_cast<int>(e));
        }
        std::vector<int> slotOf(liveCount);
        for (std::size_t i = 0; i < liveCount; ++i) {
            if (i + kPrefetch < liveCount)
                Prefetch(&m_slots[Hash(keys[i + kPrefetch])]);
            const std::uint64_t key = keys[i];
            std::size_t slot = Hash(key);
            while (m_slots[slot].key != kEmptyKey && m_slots[slot].key != key)
                slot = (slot + 1) & m_mask;
            m_slots[slot].key = key;
            ++m_slots[slot].live; // counts for now
            slotOf[i] = static_cast<int>(slot);
        }
        int begin = 0;
        for (Slot& slot : m_slots) {
            slot.begin = begin;
            begin += slot.live;
            slot.live = 0;
        }
        m_entries.resize(liveCount);
        for (std::size_t i = 0; i < liveCount; ++i) {
            if (i + kPrefetch < liveCount)
                Prefetch(&m_slots[slotOf[i + kPrefetch]]);
            if (i + kPrefetch / 2 < liveCount) {
                const Slot& ahead = m_slots[slotOf[i + kPrefetch / 2]];
                Prefetch(&m_entries[ahead.begin + ahead.live]);
            }
            Slot& slot = m_slots[slotOf[i]];
            const int e = liveEnds[i];
            m_entries[slot.begin + slot.live++] = Entry{ends[e], e};
        }
    }

    // The nearest free end within tolerance of p, or -1.
    int Nearest(const GK_3dPoint& p) {
        if (!p.IsValid() || m_entries.empty())
            return -1;
        std::int64_t lo[3], hi[3];
        for (int a = 0; a < 3; ++a) {
            const double u = Coordinate(p, a);
            // Cells of ends within tolerance lie between these, as CellIndex is monotone.
            lo[a] = std::max(CellIndex(u - m_reach), m_cellLo[a]);
            hi[a] = std::min(CellIndex(u + m_reach), m_cellHi[a]);
            if (lo[a] > hi[a])
                return -1;
        }
        int best = -1;
        double bestDistance = std::numeric_limits<double>::infinity();
        std::int64_t q[3];
        for (q[2] = lo[2]; q[2] <= hi[2]; ++q[2])
            for (q[1] = lo[1]; q[1] <= hi[1]; ++q[1])
                for (q[0] = lo[0]; q[0] <= hi[0]; ++q[0]) {
                    Slot* slot = Find(Key(q));
                    if (!slot)
                        continue;
                    // Taken ends at the front of a bucket leave it for good; those further
                    // in are squeezed out as the scan passes them. Either way the bucket
                    // keeps its ends in ascending order.
                    while (slot->live > 0 && m_taken[m_entries[slot->begin].end / 2]) {
                        ++slot->begin;
                        --slot->live;
                    }
                    Entry* const cell = m_entries.data() + slot->begin;
                    int kept = 0;
                    for (int i = 0; i < slot->live; ++i) {
                        const Entry entry = cell[i];
                        if (m_taken[entry.end / 2])
                            continue;
                        cell[kept++] = entry;
                        const double d = DistanceWithin(p, entry.point, m_tol);
                        if (d < bestDistance ||
                            (d == bestDistance && d <= m_tol && entry.end < best)) {
                            best = entry.end;
                            bestDistance = d;
                        }
                        // An identical point cannot be beaten: any other lies in this same
                        // cell, further on. Stopping is only safe while nothing has been
                        // squeezed out. This keeps many ends on one point (a fan of lines
                        // from a centre) from costing a scan of all of them per query.
                        if (d == 0.0 && kept == i + 1)
                            return best;
                    }
                    slot->live = kept;
                }
        return best;
    }

    // Both ends of the curve stop being free.
    void Take(int curve) { m_taken[curve] = 1; }

private:
    static constexpr std::uint64_t kEmptyKey = ~std::uint64_t{0}; // never a packed key
    // Cell size in multiples of the query reach: a query spans two cells along an axis with
    // probability 2 / kCellsPerReach, while larger cells hold more ends.
    static constexpr double kCellsPerReach = 16.0;
    static constexpr std::size_t kPrefetch = 16; // how many entries ahead the build reads

    static void Prefetch(const void* address) {
#if defined(__GNUC__) || defined(__clang__)
        __builtin_prefetch(address);
#else
        (void)address;
#endif
    }

    struct Slot {
        std::uint64_t key = kEmptyKey;
        int begin = 0; // the bucket's ends are m_entries[begin, begin + live)
        int live = 0;
    };
    struct Entry {
        GK_3dPoint point;
        int end = -1;
    };

    static double Coordinate(const GK_3dPoint& p, int axis) {
        return 0.5 * (axis == 0 ? p.x : axis == 1 ? p.y : p.z);
    }

    // Monotone in u, and clamped so that the conversion is defined whatever u is.
    std::int64_t CellIndex(double u) const {
        double q = std::floor(u / m_halfCell);
        if (std::isnan(q))
            q = 0.0;
        q = std::clamp(q, -kCellLimit, kCellLimit);
        return static_cast<std::int64_t>(q);
    }

    static std::uint64_t Key(const std::int64_t c[3]) {
        return (static_cast<std::uint64_t>(c[0]) & kKeyMask) |
               ((static_cast<std::uint64_t>(c[1]) & kKeyMask) << kKeyBits) |
               ((static_cast<std::uint64_t>(c[2]) & kKeyMask) << (2 * kKeyBits));
    }

    std::size_t Hash(std::uint64_t key) const {
        key ^= key >> 30;
        key *= 0xbf58476d1ce4e5b9ull;
        key ^= key >> 27;
        key *= 0x94d049bb133111ebull;
        key ^= key >> 31;
        return static_cast<std::size_t>(key) & m_mask;
    }

    Slot* Find(std::uint64_t key) {
        for (std::size_t s = Hash(key);; s = (s + 1) & m_mask) {
            if (m_slots[s].key == key)
                return &m_slots[s];
            if (m_slots[s].key == kEmptyKey)
                return nullptr;
        }
    }

    double m_tol;
    double m_reach = 0.0;
    double m_halfCell = 1.0;
    std::int64_t m_cellLo[3] = {0, 0, 0};
    std::int64_t m_cellHi[3] = {0, 0, 0};
    std::vector<Slot> m_slots;
    std::size_t m_mask = 0;
    std::vector<Entry> m_entries;
    std::vector<char> m_taken; // per curve
};

struct Link {
    int curve;
    bool reversed;
};

} // namespace

int VelmoMergeCurves(const GK_SimpleArray<GK_Curve*>& input, GK_SimpleArray<GK_Curve*>& output,
                     double tolerance, int flags, GK_SimpleArray<int>* indices) {
    if (flags != 0)
        return 0;
    // Anything but a positive tolerance (NaN included) asks for ends that match exactly.
    const double tol = tolerance > 0.0 ? tolerance : 0.0;
    const int n = input.Count();

    // Only valid, open curves with finite ends take part; a closed curve is complete and
    // joining onto it would run round the loop and out again.
    std::vector<GK_3dPoint> ends(2 * static_cast<std::size_t>(n));
    std::vector<char> joinable(n, 0);
    std::vector<char> liveEnd(2 * static_cast<std::size_t>(n), 0);
    for (int i = 0; i < n; ++i) {
        const GK_Curve* c = input[i];
        if (!c || !c->IsValid() || c->IsClosed())
            continue;
        const GK_3dPoint s = c->PointAtStart();
        const GK_3dPoint e = c->PointAtEnd();
        if (!s.IsValid() || !e.IsValid())
            continue;
        ends[2 * i] = s;
        ends[2 * i + 1] = e;
        joinable[i] = 1;
        liveEnd[2 * i] = liveEnd[2 * i + 1] = 1;
    }

    EndGrid grid(ends, liveEnd, tol);
    std::vector<char> used(n, 0);
    std::vector<Link> links; // every chain's links, chain after chain
    std::vector<int> chainBegin;
    std::vector<int> seeds;
    std::vector<Link> forward, backward;
    bool joined = false;

    for (int seed = 0; seed < n; ++seed) {
        if (used[seed] || !input[seed])
            continue;
        used[seed] = 1;
        seeds.push_back(seed);
        chainBegin.push_back(static_cast<int>(links.size()));
        if (!joinable[seed]) {
            links.push_back({seed, false});
            continue;
        }
        grid.Take(seed);
        GK_3dPoint head = ends[2 * seed];
        GK_3dPoint tail = ends[2 * seed + 1];
        forward.assign(1, {seed, false});
        backward.clear();
        // Once the chain's ends meet it is a loop, and it takes nothing further.
        auto closed = [&] {
            return forward.size() + backward.size() >= 2 && DistanceWithin(head, tail, tol) <= tol;
        };
        while (!closed()) {
            const int e = grid.Nearest(tail);
            if (e < 0)
                break;
            const int j = e / 2;
            const bool atEnd = (e & 1) != 0; // meeting j's end means running it backwards
            grid.Take(j);
            used[j] = 1;
            forward.push_back({j, atEnd});
            tail = ends[atEnd ? 2 * j : 2 * j + 1];
        }
        while (!closed()) {
            const int e = grid.Nearest(head);
            if (e < 0)
                break;
            const int j = e / 2;
            const bool atEnd = (e & 1) != 0; // meeting j's start means running it backwards
            grid.Take(j);
            used[j] = 1;
            backward.push_back({j, !atEnd});
            head = ends[atEnd ? 2 * j : 2 * j + 1];
        }
        if (forward.size() + backward.size() >= 2)
            joined = true;
        links.insert(links.end(), backward.rbegin(), backward.rend());
        links.insert(links.end(), forward.begin(), forward.end());
    }
    if (!joined)
        return 0;

    chainBegin.push_back(static_cast<int>(links.size()));
    for (std::size_t k = 0; k < seeds.size(); ++k) {
        const int first = chainBegin[k];
        const int last = chainBegin[k + 1];
        GK_Curve* result = nullptr;
        if (last - first == 1) {
            result = input[links[first].curve]->DuplicateCurve();
        } else {
            auto* chain = new GK_PolyCurve();
            for (int l = first; l < last; ++l) {
                GK_Curve* seg = input[links[l].curve]->DuplicateCurve();
                if (!seg)
                    continue;
                if (links[l].reversed)
                    seg->Reverse();
                chain->Append(seg);
            }
            result = chain;
        }
        if (!result)
            continue;
        output.Append(result);
        if (indices)
            indices->Append(seeds[k]);
    }
    return 1;
}
