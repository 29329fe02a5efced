#pragma once
// A path that saved graphics states share instead of copying: q saves the clip path by
// taking one more reference to it, so the cost of q does not grow with the clip. Copies
// share one vector; a change after a copy gives the changed copy a vector of its own.
#include "graphics/PathElement.h"

#include <memory>
#include <vector>

class SharedPath {
public:
    SharedPath() = default;
    SharedPath(const std::vector<PathElement>& elements) { *this = elements; }

    SharedPath& operator=(const std::vector<PathElement>& elements) {
        m_elements =
            elements.empty() ? nullptr : std::make_shared<const std::vector<PathElement>>(elements);
        return *this;
    }

    const std::vector<PathElement>& Elements() const { return m_elements ? *m_elements : Empty(); }
    operator const std::vector<PathElement>&() const { return Elements(); }

    bool empty() const { return Elements().empty(); }
    std::size_t size() const { return Elements().size(); }
    const PathElement& operator[](std::size_t i) const { return Elements()[i]; }
    std::vector<PathElement>::const_iterator begin() const { return Elements().begin(); }
    std::vector<PathElement>::const_iterator end() const { return Elements().end(); }

    void push_back(const PathElement& element) {
        auto copy = std::make_shared<std::vector<PathElement>>(Elements());
        copy->push_back(element);
        m_elements = std::move(copy);
    }
    void clear() { m_elements = nullptr; }

    friend bool operator==(const SharedPath& a, const std::vector<PathElement>& b) {
        return a.Elements() == b;
    }
    friend bool operator==(const SharedPath& a, const SharedPath& b) {
        return a.Elements() == b.Elements();
    }

private:
    static const std::vector<PathElement>& Empty() {
        static const std::vector<PathElement> empty;
        return empty;
    }

    std::shared_ptr<const std::vector<PathElement>> m_elements;
};
