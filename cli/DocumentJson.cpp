#include "cli/DocumentJson.h"

#include "host/base/GK_String.h"

#include <memory>

using json = nlohmann::ordered_json;

namespace {

json PointJson(const GK_3dPoint& p) {
    return json::array({p.x, p.y, p.z});
}

json ColorJson(const GK_Color& c) {
    return json::array({c.Red(), c.Green(), c.Blue()});
}

json Text(const GK_wString& text) {
    return VmUtf8FromWide(text.str());
}

json IdJson(const GK_UUID& id) {
    return id.IsNil() ? json() : json(id.ToString());
}

// -1 is "continuous" in the host; an absent linetype reads better as null than as -1.
json LinetypeIndexJson(int index) {
    return index < 0 ? json() : json(index);
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

json NurbsJson(const GK_NurbsCurve& nurbs) {
    json c = {{"type", "nurbs"}};
    json points = json::array();
    json weights = json::array();
    for (int i = 0; i < nurbs.CVCount(); ++i) {
        GK_3dPoint p;
        points.push_back(nurbs.GetCV(i, p) ? PointJson(p) : json());
        if (nurbs.IsRational())
            weights.push_back(nurbs.Weight(i));
    }
    json knots = json::array();
    for (int i = 0; i < nurbs.KnotCount() && i < nurbs.m_knot.Count(); ++i)
        knots.push_back(nurbs.Knot(i));
    c["points"] = std::move(points);
    if (nurbs.IsRational())
        c["weights"] = std::move(weights);
    c["order"] = nurbs.Order();
    c["degree"] = nurbs.Degree();
    c["rational"] = nurbs.IsRational();
    c["knots"] = std::move(knots);
    return c;
}

json LayerJson(const CVelmoLayerTable& table, int index) {
    const GK_Layer& layer = table[index];
    return {
        {"index", index},
        {"id", IdJson(layer.Id())},
        {"name", Text(layer.Name())},
        {"fullPath", Text(table.FullPathName(index))},
        {"parentId", IdJson(layer.ParentId())},
        {"visible", layer.IsVisible()},
        {"locked", layer.IsLocked()},
        {"color", ColorJson(layer.Color())},
        {"linetype", LinetypeIndexJson(layer.LinetypeIndex())},
        {"plotWeight", layer.PlotWeight()},
        {"reference", layer.IsReference()},
    };
}

json LinetypeJson(const GK_Linetype& linetype, int index) {
    json segments = json::array();
    for (int i = 0; i < linetype.SegmentCount(); ++i) {
        const GK_LinetypeSegment& s = linetype.Segment(i);
        segments.push_back(
            {{"length", s.m_length},
             {"type", s.m_seg_type == GK_LinetypeSegment::stSpace ? "space" : "line"}});
    }
    return {{"index", index}, {"name", Text(linetype.Name())}, {"segments", std::move(segments)}};
}

json HatchPatternJson(const GK_HatchPattern& pattern, int index) {
    const bool solid = pattern.FillType() == GK_HatchPattern::HatchFillType::Solid;
    return {{"index", index}, {"name", Text(pattern.Name())}, {"fill", solid ? "solid" : "lines"}};
}

// The pattern and every loop with its curve in world coordinates, in the hatch's order:
// each outer loop followed by its holes.
void HatchJson(const GK_Hatch& hatch, json& o) {
    json loops = json::array();
    for (int i = 0; i < hatch.LoopCount(); ++i) {
        const GK_HatchLoop* loop = hatch.Loop(i);
        const std::unique_ptr<GK_Curve> curve(hatch.LoopCurve3d(i));
        loops.push_back(
            {{"type", loop && loop->Type() == GK_HatchLoop::ltInner ? "inner" : "outer"},
             {"curve", curve ? CurveToJson(*curve) : json()}});
    }
    o["pattern"] = hatch.PatternIndex() < 0 ? json() : json(hatch.PatternIndex());
    o["loops"] = std::move(loops);
}

json ViewsJson(const CVelmoDoc& doc) {
    json list = json::array();
    int fits = 0;
    for (const auto& view : doc.Views()) {
        fits += view->ExtentsFitCount();
        list.push_back({{"name", Text(view->Name())}, {"fits", view->ExtentsFitCount()}});
    }
    return {{"count", static_cast<int>(doc.Views().size())},
            {"fits", fits},
            {"redraws", doc.RedrawCount()},
            {"list", std::move(list)}};
}

} // namespace

json CurveToJson(const GK_Curve& curve) {
    if (const auto* line = dynamic_cast<const GK_LineCurve*>(&curve))
        return {
            {"type", "line"},
            {"points", json::array({PointJson(line->m_line.from), PointJson(line->m_line.to)})}};
    if (const auto* pline = dynamic_cast<const GK_PolylineCurve*>(&curve)) {
        json points = json::array();
        for (const GK_3dPoint& p : pline->m_pline)
            points.push_back(PointJson(p));
        return {{"type", "polyline"}, {"points", std::move(points)}};
    }
    if (const auto* nurbs = dynamic_cast<const GK_NurbsCurve*>(&curve))
        return NurbsJson(*nurbs);
    if (const auto* poly = dynamic_cast<const GK_PolyCurve*>(&curve)) {
        json segments = json::array();
        for (int i = 0; i < poly->Count(); ++i) {
            const GK_Curve* segment = poly->SegmentCurve(i);
            segments.push_back(segment ? CurveToJson(*segment) : json());
        }
        return {{"type", "polycurve"}, {"segments", std::move(segments)}};
    }
    // Every curve class of the host is handled above; a new one shows up here rather
    // than being mistaken for one of them.
    return {{"type", "unknown"}};
}

json ObjectToJson(const CVelmoObject& object) {
    const CVelmoObjectAttributes& a = object.Attributes();
    const bool colorFromObject = a.m_color_source == GK_3dmObjectAttributes::color_from_object;
    const bool linetypeFromObject =
        a.m_linetype_source == GK_3dmObjectAttributes::linetype_from_object;
    const bool weightFromObject =
        a.m_plot_weight_source == GK_3dmObjectAttributes::plot_weight_from_object;
    json o = {
        {"kind", KindName(object.ObjectKind())},
        {"layer", a.m_layer_index},
        {"color", ColorJson(a.m_color)},
        {"colorSource", colorFromObject ? "object" : "layer"},
        {"linetype", LinetypeIndexJson(a.m_linetype_index)},
        {"linetypeSource", linetypeFromObject ? "object" : "layer"},
        {"plotWeight", a.m_plot_weight_mm},
        {"plotWeightSource", weightFromObject ? "object" : "layer"},
        {"reference", object.IsReference()},
    };
    switch (object.ObjectKind()) {
    case CVelmoObject::curve_object: {
        const auto* curveObject = dynamic_cast<const CVelmoCurveObject*>(&object);
        const GK_Curve* curve = curveObject ? curveObject->Curve() : nullptr;
        o["curve"] = curve ? CurveToJson(*curve) : json();
        break;
    }
    case CVelmoObject::hatch_object: {
        const auto* hatchObject = dynamic_cast<const CVelmoHatch*>(&object);
        if (const GK_Hatch* hatch = hatchObject ? hatchObject->Hatch() : nullptr)
            HatchJson(*hatch, o);
        else
            o["pattern"] = o["loops"] = json();
        break;
    }
    case CVelmoObject::text_object:
    case CVelmoObject::picture_object:
        // The host has no document classes for these yet; their geometry is added here
        // when it does.
        break;
    }
    return o;
}

json MessageToJson(const VmMessage& message) {
    json m = {{"kind", message.kind}};
    if (message.kind == "box")
        m["title"] = VmUtf8FromWide(message.title);
    m["text"] = VmUtf8FromWide(message.text);
    if (message.kind == "box")
        m["flags"] = message.flags;
    return m;
}

json DocumentToJson(const CVelmoDoc& doc, int result, const std::vector<VmMessage>& messages) {
    const CVelmoLayerTable& layerTable = doc.LayerTable();
    json layers = json::array();
    for (int i = 0; i < layerTable.LayerCount(); ++i)
        layers.push_back(LayerJson(layerTable, i));

    const CVelmoLinetypeTable& linetypeTable = doc.LinetypeTable();
    json linetypes = json::array();
    for (int i = 0; i < linetypeTable.LinetypeCount(); ++i)
        linetypes.push_back(LinetypeJson(linetypeTable[i], i));

    const CVelmoHatchPatternTable& patternTable = doc.HatchPatternTable();
    json patterns = json::array();
    for (int i = 0; i < patternTable.HatchPatternCount(); ++i)
        patterns.push_back(HatchPatternJson(patternTable[i], i));

    json objects = json::array();
    for (int i = 0; i < doc.ObjectCount(); ++i)
        objects.push_back(ObjectToJson(doc.Object(i)));

    json messageList = json::array();
    for (const VmMessage& message : messages)
        messageList.push_back(MessageToJson(message));

    return {
        {"result", result},
        {"modelUnits", UnitName(doc.ModelUnits())},
        {"pageUnits", UnitName(doc.PageUnits())},
        {"absoluteTolerance", doc.AbsoluteTolerance()},
        {"layers", std::move(layers)},
        {"currentLayer", layerTable.CurrentLayerIndex()},
        {"linetypes", std::move(linetypes)},
        {"hatchPatterns", std::move(patterns)},
        {"objects", std::move(objects)},
        {"messages", std::move(messageList)},
        {"views", ViewsJson(doc)},
    };
}
