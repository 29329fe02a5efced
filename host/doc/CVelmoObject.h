#pragma once
// Document objects and their attributes.
#include "host/base/GK_String.h"
#include "host/doc/GK_Color.h"
#include "host/doc/GK_DimStyle.h"
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Hatch.h"
#include "host/geometry/GK_PictureFrame.h"
#include "host/geometry/GK_Text.h"

#include <memory>

class GK_3dmObjectAttributes {
public:
    enum ColorSource { color_from_layer = 0, color_from_object = 1 };
    enum LinetypeSource { linetype_from_layer = 0, linetype_from_object = 1 };
    enum PlotWeightSource { plot_weight_from_layer = 0, plot_weight_from_object = 1 };

    int m_layer_index = 0;
    GK_Color m_color;
    ColorSource m_color_source = color_from_layer;
    int m_linetype_index = -1;
    LinetypeSource m_linetype_source = linetype_from_layer;
    double m_plot_weight_mm = 0.0;
    PlotWeightSource m_plot_weight_source = plot_weight_from_layer;

    void Default() { *this = GK_3dmObjectAttributes(); }
    void SetColorSource(ColorSource source) { m_color_source = source; }
    void SetLinetypeSource(LinetypeSource source) { m_linetype_source = source; }
    void SetPlotWeightSource(PlotWeightSource source) { m_plot_weight_source = source; }
};

class CVelmoObjectAttributes : public GK_3dmObjectAttributes {};

class CVelmoObject {
public:
    enum Kind { curve_object, hatch_object, text_object, picture_object };

    virtual ~CVelmoObject();
    virtual Kind ObjectKind() const = 0;
    virtual const GK_Geometry* Geometry() const = 0;

    const CVelmoObjectAttributes& Attributes() const { return m_attributes; }
    void SetAttributes(const CVelmoObjectAttributes& attributes) { m_attributes = attributes; }
    bool IsReference() const { return m_reference; }
    void SetReference(bool reference) { m_reference = reference; }

private:
    CVelmoObjectAttributes m_attributes;
    bool m_reference = false;
};

class CVelmoCurveObject : public CVelmoObject {
public:
    CVelmoCurveObject() = default;
    explicit CVelmoCurveObject(const CVelmoObjectAttributes& attributes) {
        SetAttributes(attributes);
    }
    ~CVelmoCurveObject() override;
    Kind ObjectKind() const override { return curve_object; }
    const GK_Geometry* Geometry() const override { return m_curve.get(); }

    // Takes the curve over.
    void SetCurve(GK_Curve* curve) { m_curve.reset(curve); }
    const GK_Curve* Curve() const { return m_curve.get(); }

private:
    std::unique_ptr<GK_Curve> m_curve;
};

class CVelmoHatch : public CVelmoObject {
public:
    CVelmoHatch() = default;
    explicit CVelmoHatch(const CVelmoObjectAttributes& attributes) { SetAttributes(attributes); }
    ~CVelmoHatch() override;
    Kind ObjectKind() const override { return hatch_object; }
    const GK_Geometry* Geometry() const override { return m_hatch.get(); }

    // Takes ownership of the hatch.
    void SetHatch(GK_Hatch* hatch) { m_hatch.reset(hatch); }
    const GK_Hatch* Hatch() const { return m_hatch.get(); }

private:
    std::unique_ptr<GK_Hatch> m_hatch;
};

// A picture frame: a rectangle showing an image file, which it refers to by path.
class CVelmoPictureFrameObject : public CVelmoObject {
public:
    CVelmoPictureFrameObject(const GK_PictureFrame& frame, const wchar_t* path)
        : m_frame(frame), m_path(path) {}
    ~CVelmoPictureFrameObject() override;
    Kind ObjectKind() const override { return picture_object; }
    const GK_Geometry* Geometry() const override { return &m_frame; }

    const GK_PictureFrame& Frame() const { return m_frame; }
    const GK_wString& Path() const { return m_path; }

private:
    GK_PictureFrame m_frame;
    GK_wString m_path;
};

// A text object: its geometry and the annotation style it was made with, which names the
// font and the height and remembers the document style it derives from.
class CVelmoTextObject : public CVelmoObject {
public:
    CVelmoTextObject(const GK_Text& text, const GK_DimStyle& style)
        : m_text(text), m_style(style) {}
    Kind ObjectKind() const override { return text_object; }
    const GK_Geometry* Geometry() const override { return &m_text; }

    const GK_Text& Text() const { return m_text; }
    const GK_DimStyle& Style() const { return m_style; }

private:
    GK_Text m_text;
    GK_DimStyle m_style;
};
