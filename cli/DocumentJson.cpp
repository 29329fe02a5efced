#include "cli/DocumentJson.h"

#include "host/base/GK_String.h"

#include <algorithm>

namespace {

void WritePoint(JsonWriter& out, const GK_3dPoint& p) {
    out.BeginArray().Number(p.x).Number(p.y).Number(p.z).EndArray();
}

void WriteColor(JsonWriter& out, const GK_Color& c) {
    out.BeginArray().Integer(c.Red()).Integer(c.Green()).Integer(c.Blue()).EndArray();
}

void WriteText(JsonWriter& out, const GK_wString& text) {
    out.String(VmUtf8FromWide(text.str()));
}

void WriteId(JsonWriter& out, const GK_UUID& id) {
    if (id.IsNil())
        out.Null();
    else
        out.String(id.ToString());
}

// A table index, or null when negative: -1 is "continuous" for a linetype and "none" for a
// pattern, which read better as null.
void WriteIndexOrNull(JsonWriter& out, int index) {
    if (index < 0)
        out.Null();
    else
        out.Integer(index);
}

// A list of `count` entries, each written by `entry(i)`.
template <class Entry> void WriteList(JsonWriter& out, int count, Entry&& entry) {
    out.BeginArray();
    for (int i = 0; i < count; ++i)
        entry(i);
    out.EndArray();
}

const char* UnitName(VmLengthUnit unit) {
    switch (unit) {
    case VmLengthUnit::Millimeters:
        return "millimeters";
    case VmLengthUnit::Centimeters:
        return "centimeters";
    case VmLengthUnit::Meters:
        return "meters";
    case VmLengthUnit::Inches:
        return "inches";
    case VmLengthUnit::Feet:
        return "feet";
    case VmLengthUnit::Points:
        return "points";
    }
    return "unknown";
}

const char* KindName(CVelmoObject::Kind kind) {
    switch (kind) {
    case CVelmoObject::curve_object:
        return "curve";
    case CVelmoObject::hatch_object:
        return "hatch";
    case CVelmoObject::text_object:
        return "text";
    case CVelmoObject::picture_object:
        return "picture";
    }
    return "unknown";
}

void WriteNurbs(JsonWriter& out, const GK_NurbsCurve& nurbs) {
    out.BeginObject();
    out.Key("type").String("nurbs");
    out.Key("points");
    WriteList(out, nurbs.CVCount(), [&](int i) {
        GK_3dPoint p;
        if (nurbs.GetCV(i, p))
            WritePoint(out, p);
        else
            out.Null();
    });
    if (nurbs.IsRational()) {
        out.Key("weights");
        WriteList(out, nurbs.CVCount(), [&](int i) { out.Number(nurbs.Weight(i)); });
    }
    out.Key("order").Integer(nurbs.Order());
    out.Key("degree").Integer(nurbs.Degree());
    out.Key("rational").Bool(nurbs.IsRational());
    out.Key("knots");
    WriteList(out, std::min(nurbs.KnotCount(), nurbs.m_knot.Count()),
              [&](int i) { out.Number(nurbs.Knot(i)); });
    out.EndObject();
}

void WriteLayer(JsonWriter& out, const CVelmoLayerTable& table, int index) {
    const GK_Layer& layer = table[index];
    out.BeginObject();
    out.Key("index").Integer(index);
    out.Key("id");
    WriteId(out, layer.Id());
    out.Key("name");
    WriteText(out, layer.Name());
    out.Key("fullPath");
    WriteText(out, table.FullPathName(index));
    out.Key("parentId");
    WriteId(out, layer.ParentId());
    out.Key("visible").Bool(layer.IsVisible());
    out.Key("locked").Bool(layer.IsLocked());
    out.Key("color");
    WriteColor(out, layer.Color());
    out.Key("linetype");
    WriteIndexOrNull(out, layer.LinetypeIndex());
    out.Key("plotWeight").Number(layer.PlotWeight());
    out.Key("reference").Bool(layer.IsReference());
    out.EndObject();
}

void WriteLinetype(JsonWriter& out, const GK_Linetype& linetype, int index) {
    out.BeginObject();
    out.Key("index").Integer(index);
    out.Key("name");
    WriteText(out, linetype.Name());
    out.Key("segments");
    WriteList(out, linetype.SegmentCount(), [&](int i) {
        const GK_LinetypeSegment& s = linetype.Segment(i);
        out.BeginObject();
        out.Key("length").Number(s.m_length);
        out.Key("type").String(s.m_seg_type == GK_LinetypeSegment::stSpace ? "space" : "line");
        out.EndObject();
    });
    out.EndObject();
}

void WriteHatchPattern(JsonWriter& out, const GK_HatchPattern& pattern, int index) {
    const bool solid = pattern.FillType() == GK_HatchPattern::HatchFillType::Solid;
    out.BeginObject();
    out.Key("index").Integer(index);
    out.Key("name");
    WriteText(out, pattern.Name());
    out.Key("fill").String(solid ? "solid" : "lines");
    out.EndObject();
}

void WriteFont(JsonWriter& out, const GK_Font& font) {
    out.BeginObject();
    out.Key("family");
    WriteText(out, font.FamilyName());
    out.Key("bold").Bool(font.IsBold());
    out.Key("italic").Bool(font.IsItalic());
    out.EndObject();
}

void WriteDimStyle(JsonWriter& out, const GK_DimStyle& style, int index) {
    out.BeginObject();
    out.Key("index").Integer(index);
    out.Key("name");
    WriteText(out, style.Name());
    out.Key("font");
    WriteFont(out, style.Font());
    out.Key("textHeight").Number(style.TextHeight());
    out.Key("dimScale").Number(style.DimScale());
    out.Key("drawForward").Bool(style.DrawForward());
    out.EndObject();
}

// The members a curve object adds to the common ones.
void WriteCurveMembers(JsonWriter& out, const CVelmoCurveObject* object) {
    const GK_Curve* curve = object ? object->Curve() : nullptr;
    out.Key("curve");
    if (curve)
        WriteCurveJson(out, *curve);
    else
        out.Null();
}

// The pattern and every loop with its curve in world coordinates, in the hatch's order:
// each outer loop followed by its holes.
void WriteHatchMembers(JsonWriter& out, const CVelmoHatch* object) {
    const GK_Hatch* hatch = object ? object->Hatch() : nullptr;
    if (!hatch) {
        out.Key("pattern").Null();
        out.Key("loops").Null();
        return;
    }
    out.Key("pattern");
    WriteIndexOrNull(out, hatch->PatternIndex());
    out.Key("loops");
    WriteList(out, hatch->LoopCount(), [&](int i) {
        // This host keeps loops in world coordinates, so the loop's own curve is what
        // LoopCurve3d would copy.
        const GK_HatchLoop* loop = hatch->Loop(i);
        const GK_Curve* curve = loop ? loop->Curve() : nullptr;
        out.BeginObject();
        out.Key("type").String(loop && loop->Type() == GK_HatchLoop::ltInner ? "inner" : "outer");
        out.Key("curve");
        if (curve)
            WriteCurveJson(out, *curve);
        else
            out.Null();
        out.EndObject();
    });
}

void WritePlane(JsonWriter& out, const GK_Plane& plane) {
    out.BeginObject();
    out.Key("origin");
    WritePoint(out, plane.origin);
    out.Key("xaxis");
    WritePoint(out, GK_3dPoint(plane.xaxis.x, plane.xaxis.y, plane.xaxis.z));
    out.Key("yaxis");
    WritePoint(out, GK_3dPoint(plane.yaxis.x, plane.yaxis.y, plane.yaxis.z));
    out.EndObject();
}

// The frame's plane, its size in model units and the image file it shows.
void WritePictureMembers(JsonWriter& out, const CVelmoPictureFrameObject& object) {
    const GK_PictureFrame& frame = object.Frame();
    out.Key("plane");
    WritePlane(out, frame.Plane());
    out.Key("width").Number(frame.Width());
    out.Key("height").Number(frame.Height());
    out.Key("path");
    WriteText(out, object.Path());
}

// The text, its frame and height, the document style it derives from and its font. The host
// refuses text without a positive, finite height, so every number here is finite.
void WriteTextMembers(JsonWriter& out, const CVelmoTextObject& object) {
    const GK_Text& text = object.Text();
    out.Key("text");
    WriteText(out, text.Text());
    out.Key("plane");
    WritePlane(out, text.Plane());
    out.Key("height").Number(text.Height());
    out.Key("dimStyle");
    WriteIndexOrNull(out, object.Style().ParentIndex());
    out.Key("font");
    WriteFont(out, object.Style().Font());
}

void WriteViews(JsonWriter& out, const CVelmoDoc& doc) {
    int fits = 0;
    for (const auto& view : doc.Views())
        fits += view->ExtentsFitCount();
    out.BeginObject();
    out.Key("count").Integer(static_cast<int>(doc.Views().size()));
    out.Key("fits").Integer(fits);
    out.Key("redraws").Integer(doc.RedrawCount());
    out.Key("list").BeginArray();
    for (const auto& view : doc.Views()) {
        out.BeginObject();
        out.Key("name");
        WriteText(out, view->Name());
        out.Key("fits").Integer(view->ExtentsFitCount());
        out.EndObject();
    }
    out.EndArray();
    out.EndObject();
}

} // namespace

void WriteCurveJson(JsonWriter& out, const GK_Curve& curve) {
    if (const auto* line = GK_CurveCast<GK_LineCurve>(&curve)) {
        out.BeginObject();
        out.Key("type").String("line");
        out.Key("points").BeginArray();
        WritePoint(out, line->m_line.from);
        WritePoint(out, line->m_line.to);
        out.EndArray();
        out.EndObject();
        return;
    }
    if (const auto* pline = GK_CurveCast<GK_PolylineCurve>(&curve)) {
        out.BeginObject();
        out.Key("type").String("polyline");
        out.Key("points").BeginArray();
        for (const GK_3dPoint& p : pline->m_pline)
            WritePoint(out, p);
        out.EndArray();
        out.EndObject();
        return;
    }
    if (const auto* nurbs = GK_CurveCast<GK_NurbsCurve>(&curve)) {
        WriteNurbs(out, *nurbs);
        return;
    }
    if (const auto* poly = GK_CurveCast<GK_PolyCurve>(&curve)) {
        out.BeginObject();
        out.Key("type").String("polycurve");
        out.Key("segments");
        WriteList(out, poly->Count(), [&](int i) {
            if (const GK_Curve* segment = poly->SegmentCurve(i))
                WriteCurveJson(out, *segment);
            else
                out.Null();
        });
        out.EndObject();
        return;
    }
    // Every curve class of the host is handled above; a new one shows up here rather
    // than being mistaken for one of them.
    out.BeginObject().Key("type").String("unknown").EndObject();
}

void WriteObjectJson(JsonWriter& out, const CVelmoObject& object) {
    const CVelmoObjectAttributes& a = object.Attributes();
    const bool colorFromObject = a.m_color_source == GK_3dmObjectAttributes::color_from_object;
    const bool linetypeFromObject =
        a.m_linetype_source == GK_3dmObjectAttributes::linetype_from_object;
    const bool weightFromObject =
        a.m_plot_weight_source == GK_3dmObjectAttributes::plot_weight_from_object;
    out.BeginObject();
    out.Key("kind").String(KindName(object.ObjectKind()));
    out.Key("layer").Integer(a.m_layer_index);
    out.Key("color");
    WriteColor(out, a.m_color);
    out.Key("colorSource").String(colorFromObject ? "object" : "layer");
    out.Key("linetype");
    WriteIndexOrNull(out, a.m_linetype_index);
    out.Key("linetypeSource").String(linetypeFromObject ? "object" : "layer");
    out.Key("plotWeight").Number(a.m_plot_weight_mm);
    out.Key("plotWeightSource").String(weightFromObject ? "object" : "layer");
    out.Key("reference").Bool(object.IsReference());
    switch (object.ObjectKind()) {
    case CVelmoObject::curve_object:
        WriteCurveMembers(out, dynamic_cast<const CVelmoCurveObject*>(&object));
        break;
    case CVelmoObject::hatch_object:
        WriteHatchMembers(out, dynamic_cast<const CVelmoHatch*>(&object));
        break;
    case CVelmoObject::picture_object:
        WritePictureMembers(out, static_cast<const CVelmoPictureFrameObject&>(object));
        break;
    case CVelmoObject::text_object:
        WriteTextMembers(out, static_cast<const CVelmoTextObject&>(object));
        break;
    }
    out.EndObject();
}

void WriteMessageJson(JsonWriter& out, const VmMessage& message) {
    out.BeginObject();
    out.Key("kind").String(message.kind);
    if (message.kind == "box")
        out.Key("title").String(VmUtf8FromWide(message.title));
    out.Key("text").String(VmUtf8FromWide(message.text));
    if (message.kind == "box")
        out.Key("flags").Integer(message.flags);
    out.EndObject();
}

void WriteDocumentJson(JsonWriter& out, const CVelmoDoc& doc, int result,
                       const std::vector<VmMessage>& messages) {
    const CVelmoLayerTable& layers = doc.LayerTable();
    const CVelmoLinetypeTable& linetypes = doc.LinetypeTable();
    const CVelmoHatchPatternTable& patterns = doc.HatchPatternTable();
    const CVelmoDimStyleTable& dimStyles = doc.DimStyleTable();
    out.BeginObject();
    out.Key("result").Integer(result);
    out.Key("modelUnits").String(UnitName(doc.ModelUnits().UnitSystem()));
    out.Key("pageUnits").String(UnitName(doc.PageUnits().UnitSystem()));
    out.Key("absoluteTolerance").Number(doc.AbsoluteTolerance());
    out.Key("layers");
    WriteList(out, layers.LayerCount(), [&](int i) { WriteLayer(out, layers, i); });
    out.Key("currentLayer").Integer(layers.CurrentLayerIndex());
    out.Key("linetypes");
    WriteList(out, linetypes.LinetypeCount(), [&](int i) { WriteLinetype(out, linetypes[i], i); });
    out.Key("hatchPatterns");
    WriteList(out, patterns.HatchPatternCount(),
              [&](int i) { WriteHatchPattern(out, patterns[i], i); });
    out.Key("dimStyles");
    WriteList(out, dimStyles.DimStyleCount(), [&](int i) { WriteDimStyle(out, dimStyles[i], i); });
    out.Key("objects");
    WriteList(out, doc.ObjectCount(), [&](int i) { WriteObjectJson(out, doc.Object(i)); });
    out.Key("messages");
    WriteList(out, static_cast<int>(messages.size()),
              [&](int i) { WriteMessageJson(out, messages[i]); });
    out.Key("views");
    WriteViews(out, doc);
    out.EndObject();
}
