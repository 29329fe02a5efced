#pragma once
// An annotation style. This host keeps a small picture of one: a font, a text height and the
// scales and alignments that text needs, and no dimension settings at all (arrows, extension
// lines and tolerances belong to dimensions, which nothing here makes).
#include "host/doc/GK_Font.h"
#include "host/doc/GK_Layer.h"
#include "host/doc/GK_UnitSystem.h"

class GK_DimStyle : public GK_ModelComponent {
public:
    // Annotation types and text alignments, as CreateFromProperties takes them.
    enum AnnotationType { annotation_unset = 0, annotation_text = 9 };
    enum VerticalAlignment { valign_top = 0, valign_middle = 3, valign_bottom = 5 };
    enum HorizontalAlignment { halign_left = 0, halign_center = 1, halign_right = 2 };

    GK_DimStyle() = default;

    // A style needs a name to go into a table; overrides made by CreateFromProperties have
    // none and are valid all the same when their height is.
    bool IsValid(GK_TextLog* = nullptr) const override;

    // `style` itself, or the system's default style when it is null.
    static const GK_DimStyle& DimStyleOrDefault(const GK_DimStyle* style);
    // A copy of `parent` that remembers the parent's table index and takes the properties an
    // annotation of `annotationType` needs: the font of `overrides` when it is given, the
    // model-view text scale, the text height, the length unit and both alignments.
    static GK_DimStyle CreateFromProperties(const GK_DimStyle& parent, int annotationType,
                                            const GK_DimStyle* overrides, double modelViewTextScale,
                                            double textHeight, VmLengthUnit unitSystem,
                                            int verticalAlignment, int horizontalAlignment);

    // Borrowed from the managed fonts; never null.
    const GK_Font& Font() const { return *m_font; }
    void SetFont(const GK_Font* font) { m_font = font ? font : GK_Font::Default(); }
    double TextHeight() const { return m_textHeight; }
    void SetTextHeight(double height) { m_textHeight = height; }
    // Scale of the annotation in model space.
    double DimScale() const { return m_dimScale; }
    void SetDimScale(double scale) { m_dimScale = scale; }
    // Whether text turns to face the viewer rather than reading backwards from behind.
    bool DrawForward() const { return m_drawForward; }
    void SetDrawForward(bool forward) { m_drawForward = forward; }
    double ModelViewTextScale() const { return m_modelViewTextScale; }
    int AnnotationType() const { return m_annotationType; }
    VmLengthUnit UnitSystem() const { return m_unitSystem; }
    int TextVerticalAlignment() const { return m_verticalAlignment; }
    int TextHorizontalAlignment() const { return m_horizontalAlignment; }
    // The table index of the style this one was made from, -1 for none.
    int ParentIndex() const { return m_parentIndex; }

private:
    const GK_Font* m_font = GK_Font::Default();
    double m_textHeight = 1.0;
    double m_dimScale = 1.0;
    bool m_drawForward = true;
    double m_modelViewTextScale = 1.0;
    int m_annotationType = annotation_unset;
    VmLengthUnit m_unitSystem = VmLengthUnit::Millimeters;
    int m_verticalAlignment = valign_bottom;
    int m_horizontalAlignment = halign_left;
    int m_parentIndex = -1;
};
