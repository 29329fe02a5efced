#pragma once
// A tree of boxes over some of the edges of a chain of vertices, for finding the edges that
// can matter to a query without looking at the others. The edges are put in the order of a
// curve that fills the plane (by the middles of the edges), so that the leaves, which hold
// runs of that order, hold edges that lie together, and the boxes are tight. Edge e runs from
// vertex e-1 to vertex e.
#include "graphics/PathElement.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class EdgeTree {
public:
    struct Box {
        double minX, minY, maxX, maxY;
        // The box of the edges below, each grown on all sides by a sixteenth of its extent (the
        // greater of its width and height): where their neighbourhoods reach.
        double nearMinX, nearMinY, nearMaxX, nearMaxY;
    };

    EdgeTree() = default;
    // The vertices are borrowed and must all be finite.
    EdgeTree(const std::vector<PathElement>& vertices, std::vector<std::uint32_t> edges);

    bool Empty() const { return m_edges.empty(); }

    // The box of one edge alone, as a leaf with that edge only would have it.
    static Box EdgeBox(const std::vector<PathElement>& vertices, std::size_t edge);

    // Calls `visit(edge)` for each edge under the nodes that `open(box)` lets in, in the tree's
    // order. `stack` is working memory.
    template <class Open, class Visit>
    void Walk(Open&& open, Visit&& visit, std::vector<std::size_t>& stack) const {
        if (m_edges.empty())
            return;
        stack.assign(1, 1);
        while (!stack.empty()) {
            const std::size_t node = stack.back();
            stack.pop_back();
            const Box& box = m_nodes[node];
            if (box.minX > box.maxX || !open(box))
                continue; // a leaf past the end of the list, or shut out
            if (node < m_leafBase) {
                stack.push_back(2 * node + 1);
                stack.push_back(2 * node);
                continue;
            }
            const std::size_t first = (node - m_leafBase) * kLeafEdges;
            const std::size_t end = std::min(first + kLeafEdges, m_edges.size());
            for (std::size_t i = first; i < end; ++i)
                visit(static_cast<std::size_t>(m_edges[i]));
        }
    }

private:
    static constexpr std::size_t kLeafEdges = 8;

    std::vector<std::uint32_t> m_edges;
    // Node i has the children 2i and 2i+1, the root is node 1, and the leaves are the nodes
    // m_leafBase .. 2*m_leafBase-1; leaf k holds m_edges from k*kLeafEdges on.
    std::vector<Box> m_nodes;
    std::size_t m_leafBase = 0;
};
