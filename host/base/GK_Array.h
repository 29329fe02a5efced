#pragma once
// Growable arrays of the host's geometry library. GK_SimpleArray holds plain values; the
// caller owns whatever pointers it stores.
#include <cstddef>
#include <utility>
#include <vector>

template <class T> class GK_SimpleArray {
public:
    GK_SimpleArray() = default;
    explicit GK_SimpleArray(int capacity) { m_a.reserve(capacity > 0 ? capacity : 0); }

    int Count() const { return static_cast<int>(m_a.size()); }
    bool IsEmpty() const { return m_a.empty(); }
    void Append(const T& value) { m_a.push_back(value); }
    T& AppendNew() { return m_a.emplace_back(); }
    void Insert(int index, const T& value) { m_a.insert(m_a.begin() + index, value); }
    void Remove(int index) { m_a.erase(m_a.begin() + index); }
    void Empty() { m_a.clear(); }
    void Destroy() { std::vector<T>().swap(m_a); }
    void Reserve(int capacity) { m_a.reserve(capacity > 0 ? capacity : 0); }
    // Gives back the capacity beyond the count.
    void Compact() {
        if (m_a.capacity() > m_a.size())
            std::vector<T>(m_a.begin(), m_a.end()).swap(m_a);
    }
    void SetCount(int count) { m_a.resize(count > 0 ? count : 0); }
    void Reverse() {
        for (std::size_t i = 0, j = m_a.size(); i + 1 < j; ++i, --j)
            std::swap(m_a[i], m_a[j - 1]);
    }

    T& operator[](int index) { return m_a[index]; }
    const T& operator[](int index) const { return m_a[index]; }
    T* Array() { return m_a.data(); }
    const T* Array() const { return m_a.data(); }
    T* Last() { return m_a.empty() ? nullptr : &m_a.back(); }
    const T* Last() const { return m_a.empty() ? nullptr : &m_a.back(); }

    auto begin() { return m_a.begin(); }
    auto end() { return m_a.end(); }
    auto begin() const { return m_a.begin(); }
    auto end() const { return m_a.end(); }

private:
    std::vector<T> m_a;
};

// Same interface; kept as a separate name because the host distinguishes arrays of
// classes (constructed and destroyed) from arrays of plain data.
template <class T> using GK_ClassArray = GK_SimpleArray<T>;
