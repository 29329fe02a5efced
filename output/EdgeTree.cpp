#include "output/EdgeTree.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

EdgeTree::Box EdgeTree::EdgeBox(const std::vector<PathElement>& vertices, std::size_t edge) {
    const PathElement& p = vertices[edge - 1];
    const PathElement& q = vertices[edge];
    const double x0 = std::min(p.x, q.x), x1 = std::max(p.x, q.x);
    const double y0 = std::min(p.y, q.y), y1 = std::max(p.y, q.y);
    const double near = 0.0625 * std::max(std::fabs(q.x - p.x), std::fabs(q.y - p.y));
    return {x0, y0, x1, y1, x0 - near, y0 - near, x1 + near, y1 + near};
}

namespace {

// The bits of x spread to the even places: 16 bits to 32.
std::uint32_t Spread(std::uint32_t x) {
    x &= 0xffff;
    x = (x | (x << 8)) & 0x00ff00ff;
    x = (x | (x << 4)) & 0x0f0f0f0f;
    x = (x | (x << 2)) & 0x33333333;
    x = (x | (x << 1)) & 0x55555555;
    return x;
}

} // namespace

EdgeTree::EdgeTree(const std::vector<PathElement>& vertices, std::vector<std::uint32_t> edges)
    : m_edges(std::move(edges)) {
    if (m_edges.empty())
        return;
    // Z order of the middles on a 65536 by 65536 grid over their box; ties by edge number.
    double x0 = std::numeric_limits<double>::infinity(), y0 = x0, x1 = -x0, y1 = -x0;
    for (const std::uint32_t e : m_edges) {
        const double mx = 0.5 * vertices[e - 1].x + 0.5 * vertices[e].x;
        const double my = 0.5 * vertices[e - 1].y + 0.5 * vertices[e].y;
        x0 = std::min(x0, mx);
        x1 = std::max(x1, mx);
        y0 = std::min(y0, my);
        y1 = std::max(y1, my);
    }
    const double sx = x1 > x0 ? 65535.0 / (x1 - x0) : 0.0;
    const double sy = y1 > y0 ? 65535.0 / (y1 - y0) : 0.0;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> keyed;
    keyed.reserve(m_edges.size());
    for (const std::uint32_t e : m_edges) {
        const double mx = 0.5 * vertices[e - 1].x + 0.5 * vertices[e].x;
        const double my = 0.5 * vertices[e - 1].y + 0.5 * vertices[e].y;
        const auto qx = static_cast<std::uint32_t>(std::clamp((mx - x0) * sx, 0.0, 65535.0));
        const auto qy = static_cast<std::uint32_t>(std::clamp((my - y0) * sy, 0.0, 65535.0));
        keyed.emplace_back(Spread(qx) | (Spread(qy) << 1), e);
    }
    std::sort(keyed.begin(), keyed.end());
    for (std::size_t i = 0; i < keyed.size(); ++i)
        m_edges[i] = keyed[i].second;
    const double inf = std::numeric_limits<double>::infinity();
    const std::size_t leaves = (m_edges.size() + kLeafEdges - 1) / kLeafEdges;
    m_leafBase = std::bit_ceil(leaves);
    m_nodes.assign(2 * m_leafBase, Box{inf, inf, -inf, -inf, inf, inf, -inf, -inf});
    for (std::size_t i = 0; i < m_edges.size(); ++i) {
        Box& box = m_nodes[m_leafBase + i / kLeafEdges];
        const Box edge = EdgeBox(vertices, m_edges[i]);
        box.minX = std::min(box.minX, edge.minX);
        box.maxX = std::max(box.maxX, edge.maxX);
        box.minY = std::min(box.minY, edge.minY);
        box.maxY = std::max(box.maxY, edge.maxY);
        box.nearMinX = std::min(box.nearMinX, edge.nearMinX);
        box.nearMaxX = std::max(box.nearMaxX, edge.nearMaxX);
        box.nearMinY = std::min(box.nearMinY, edge.nearMinY);
        box.nearMaxY = std::max(box.nearMaxY, edge.nearMaxY);
    }
    for (std::size_t i = m_leafBase - 1; i >= 1; --i) {
        const Box& l = m_nodes[2 * i];
        const Box& r = m_nodes[2 * i + 1];
        m_nodes[i] = {std::min(l.minX, r.minX),         std::min(l.minY, r.minY),
                      std::max(l.maxX, r.maxX),         std::max(l.maxY, r.maxY),
                      std::min(l.nearMinX, r.nearMinX), std::min(l.nearMinY, r.nearMinY),
                      std::max(l.nearMaxX, r.nearMaxX), std::max(l.nearMaxY, r.nearMaxY)};
    }
}
