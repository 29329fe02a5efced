#pragma once
// The document's linetypes: named dash patterns. Index -1 means continuous.
#include "host/base/GK_String.h"
#include "host/doc/GK_Layer.h"

#include "host/base/GK_Array.h"

#include <string>
#include <unordered_map>
#include <vector>

struct GK_LinetypeSegment {
    enum eSegType { stLine = 0, stSpace = 1 };
    double m_length = 0.0;
    eSegType m_seg_type = stLine;
};

class GK_Linetype : public GK_ModelComponent {
public:
    ~GK_Linetype() override;
    bool IsValid(GK_TextLog* = nullptr) const override {
        return !Name().IsEmpty() && !m_segments.empty();
    }
    int SegmentCount() const { return static_cast<int>(m_segments.size()); }
    const GK_LinetypeSegment& Segment(int index) const { return m_segments[index]; }
    void AppendSegment(const GK_LinetypeSegment& segment) { m_segments.push_back(segment); }
    void ClearSegments() { m_segments.clear(); }

private:
    std::vector<GK_LinetypeSegment> m_segments;
};

class CVelmoLinetypeTable {
public:
    // The index that stands for "no linetype" where -1 would already mean continuous.
    static constexpr int UnsetIndex = -2147483647;

    int LinetypeCount() const { return static_cast<int>(m_linetypes.size()); }
    const GK_Linetype& operator[](int index) const { return m_linetypes[index]; }
    // Index of the linetype with that name (without regard to case), or -1.
    int FindLinetypeFromName(const wchar_t* name) const;
    // Adds a valid linetype with an unused name and returns its index, else -1.
    int AddLinetype(const GK_Linetype& linetype, bool reference = false);
    // As FindLinetypeFromName, but with `notFound` for a miss. Nothing is ever deleted from
    // this table, so `ignoreDeleted` changes nothing.
    int FindLinePatternFromName(const wchar_t* name, bool ignoreDeleted, int notFound) const;
    // A linetype from signed lengths: positive ones draw, negative ones leave a gap of that
    // length. Gives the new index, or -1 as AddLinetype does.
    int AddLinetype(const wchar_t* name, const GK_SimpleArray<double>& segments);

private:
    std::vector<GK_Linetype> m_linetypes;
    // Case-folded name to index: an import may add thousands of dash patterns.
    std::unordered_map<std::wstring, int> m_byName;
};
