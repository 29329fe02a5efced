#pragma once
// The document's linetypes: named dash patterns. Index -1 means continuous.
#include "host/base/GK_String.h"
#include "host/doc/GK_Layer.h"

#include <vector>

struct GK_LinetypeSegment {
    enum eSegType { stLine = 0, stSpace = 1 };
    double m_length = 0.0;
    eSegType m_seg_type = stLine;
};

class GK_Linetype : public GK_ModelComponent {
public:
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
    int LinetypeCount() const { return static_cast<int>(m_linetypes.size()); }
    const GK_Linetype& operator[](int index) const { return m_linetypes[index]; }
    // Index of the linetype with that name (without regard to case), or -1.
    int FindLinetypeFromName(const wchar_t* name) const;
    // Adds a valid linetype with an unused name and returns its index, else -1.
    int AddLinetype(const GK_Linetype& linetype, bool reference = false);

private:
    std::vector<GK_Linetype> m_linetypes;
};
