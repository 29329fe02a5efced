#pragma once
// The in-memory document: tables, objects, views and the settings that affect an import.
#include "host/doc/CVelmoDimStyleTable.h"
#include "host/doc/CVelmoLayerTable.h"
#include "host/doc/CVelmoLinetypeTable.h"
#include "host/doc/CVelmoObject.h"
#include "host/doc/GK_UnitSystem.h"

#include <cstdint>
#include <memory>
#include <vector>

class CVelmoView {
public:
    explicit CVelmoView(const wchar_t* name, int type = 1) : m_name(name), m_type(type) {}
    const GK_wString& Name() const { return m_name; }
    int ViewType() const { return m_type; } // 1 model view, 2 page view
    int ExtentsFitCount() const { return m_fits; }
    void NoteExtentsFit() { ++m_fits; }

private:
    GK_wString m_name;
    int m_type;
    int m_fits = 0;
};

// A fill pattern: solid, or parallel lines (the line definitions are not modelled here).
class GK_HatchPattern : public GK_ModelComponent {
public:
    enum class HatchFillType { Solid = 0, Lines = 1 };

    ~GK_HatchPattern() override;

    bool IsValid(GK_TextLog* = nullptr) const override { return !Name().IsEmpty(); }
    HatchFillType FillType() const { return m_fillType; }
    void SetFillType(HatchFillType type) { m_fillType = type; }

private:
    HatchFillType m_fillType = HatchFillType::Solid;
};

class CVelmoHatchPatternTable {
public:
    int HatchPatternCount() const { return static_cast<int>(m_patterns.size()); }
    const GK_HatchPattern& operator[](int index) const { return m_patterns[index]; }
    // Index of the pattern with that name (without regard to case), or -1.
    int FindHatchPatternFromName(const wchar_t* name) const;
    // Adds a copy of a valid pattern and gives its index through `index`. A pattern whose name
    // is already in the table is not added twice: `index` gets the existing one, and the
    // result is still true, so that every read of a session can ask for the same pattern.
    bool AddHatchPattern(const GK_HatchPattern* pattern, bool reference, int* index);

private:
    std::vector<GK_HatchPattern> m_patterns;
};

class CVelmoDoc {
public:
    CVelmoDoc();
    CVelmoDoc(const CVelmoDoc&) = delete;
    CVelmoDoc& operator=(const CVelmoDoc&) = delete;

    CVelmoLayerTable& LayerTable() { return m_layers; }
    const CVelmoLayerTable& LayerTable() const { return m_layers; }
    CVelmoLinetypeTable& LinetypeTable() { return m_linetypes; }
    const CVelmoLinetypeTable& LinetypeTable() const { return m_linetypes; }
    CVelmoHatchPatternTable& HatchPatternTable() { return m_hatchPatterns; }
    const CVelmoHatchPatternTable& HatchPatternTable() const { return m_hatchPatterns; }
    CVelmoDimStyleTable& DimStyleTable() { return m_dimStyles; }
    const CVelmoDimStyleTable& DimStyleTable() const { return m_dimStyles; }
    // The document's own solid pattern, which is in the hatch pattern table only once added.
    const GK_HatchPattern& SolidHatchPattern() const { return m_solidPattern; }

    // Takes the object over. Returns false, and deletes it, when it has no valid geometry or
    // names a layer that does not exist.
    bool AddObject(CVelmoObject* object, bool referenceObject = false, bool inHistory = false);
    // Makes a text object of `text` on `plane`, moved to `point`, in the font and height of
    // `style`, and adds it. Returns the object (owned by the document), or null when the text
    // is empty, the plane is no valid frame, the height is not positive and finite, or the
    // layer does not exist: a refused text never reaches the document.
    const CVelmoTextObject* AddTextObject(const GK_wString& text, const GK_Plane& plane,
                                          const GK_3dPoint& point, const GK_DimStyle& style,
                                          const CVelmoObjectAttributes& attributes);
    int ObjectCount() const { return static_cast<int>(m_objects.size()); }
    const CVelmoObject& Object(int index) const { return *m_objects[index]; }

    double AbsoluteTolerance() const { return m_tolerance; }
    void SetAbsoluteTolerance(double tolerance) { m_tolerance = tolerance; }
    const GK_UnitSystem& ModelUnits() const { return m_modelUnits; }
    void SetModelUnits(VmLengthUnit units) { m_modelUnits = units; }
    const GK_UnitSystem& PageUnits() const { return m_pageUnits; }
    void SetPageUnits(VmLengthUnit units) { m_pageUnits = units; }
    // The length unit of the model.
    VmLengthUnit UnitSystem() const { return m_modelUnits.UnitSystem(); }
    // Whether the document is being read in as a reference model; tables mark what they get
    // then as reference. A document of its own, as here, is not.
    bool ReadingReferenceModel() const { return m_readingReference; }
    void SetReadingReferenceModel(bool reading) { m_readingReference = reading; }

    // The views of the given type (0 for all); returns their count.
    int GetViewList(std::vector<CVelmoView*>& views, int typeFilter) const;
    const std::vector<std::unique_ptr<CVelmoView>>& Views() const { return m_views; }
    void Redraw() { ++m_redraws; }
    int RedrawCount() const { return m_redraws; }

    bool IsHeadless() const { return m_headless; }
    void SetHeadless(bool headless) { m_headless = headless; }

private:
    GK_UUID NewId() { return GK_UUID::FromSerial(++m_serial); }

    std::uint64_t m_serial = 0;
    CVelmoLayerTable m_layers;
    CVelmoLinetypeTable m_linetypes;
    CVelmoHatchPatternTable m_hatchPatterns;
    CVelmoDimStyleTable m_dimStyles;
    GK_HatchPattern m_solidPattern;
    std::vector<std::unique_ptr<CVelmoObject>> m_objects;
    std::vector<std::unique_ptr<CVelmoView>> m_views;
    double m_tolerance = 0.001;
    GK_UnitSystem m_modelUnits{VmLengthUnit::Millimeters};
    GK_UnitSystem m_pageUnits{VmLengthUnit::Millimeters};
    bool m_readingReference = false;
    int m_redraws = 0;
    bool m_headless = false;
};

// Zooms a view to the extents of the document.
bool VelmoDollyExtents(CVelmoView* view, bool allViews);
