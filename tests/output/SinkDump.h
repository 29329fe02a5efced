#pragma once
// Text dumps of what a sink has pending, one line per object, for compact comparisons.
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Hatch.h"
#include "output/PDFToVelmo.h"

#include <cstdio>
#include <string>

namespace tarquil::test {

inline std::string Number(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", v);
    return text;
}

inline std::string PointText(const GK_3dPoint& p) {
    return "(" + Number(p.x) + " " + Number(p.y) + ")";
}

inline std::string CurveText(const GK_Curve& curve) {
    if (const auto* polyline = dynamic_cast<const GK_PolylineCurve*>(&curve)) {
        std::string text = "polyline";
        for (const GK_3dPoint& p : polyline->m_pline) {
            text += ' ';
            text += PointText(p);
        }
        return text;
    }
    if (const auto* line = dynamic_cast<const GK_LineCurve*>(&curve))
        return std::string("line ")
            .append(PointText(line->m_line.from))
            .append(" ")
            .append(PointText(line->m_line.to));
    if (const auto* nurbs = dynamic_cast<const GK_NurbsCurve*>(&curve)) {
        std::string text = "nurbs";
        for (int i = 0; i < nurbs->CVCount(); ++i) {
            GK_3dPoint p;
            nurbs->GetCV(i, p);
            text += " " + PointText(p);
        }
        return text;
    }
    if (const auto* poly = dynamic_cast<const GK_PolyCurve*>(&curve)) {
        std::string text = "polycurve[";
        for (int i = 0; i < poly->Count(); ++i)
            text += (i ? "; " : "") + CurveText(*poly->SegmentCurve(i));
        return text + "]";
    }
    return "curve";
}

// "<geometry> colour C width W [dash a b]"
inline std::string PendingText(const PendingObject& pending) {
    std::string text;
    if (!pending.geometry)
        text = "null";
    else if (const auto* curve = dynamic_cast<const GK_Curve*>(pending.geometry))
        text = CurveText(*curve);
    else if (const auto* hatch = dynamic_cast<const GK_Hatch*>(pending.geometry)) {
        text = "hatch";
        for (int i = 0; i < hatch->LoopCount(); ++i)
            text += std::string(hatch->Loop(i)->Type() == GK_HatchLoop::ltOuter ? " outer{"
                                                                                : " inner{") +
                    CurveText(*hatch->Loop(i)->Curve()) + "}";
    }
    text += " colour " + std::to_string(pending.colour) + " width " + Number(pending.lineWidth);
    if (!pending.dashPattern.empty()) {
        text += " dash";
        for (double v : pending.dashPattern) {
            text += ' ';
            text += Number(v);
        }
    }
    return text;
}

inline std::vector<std::string> PendingTexts(const PDFToVelmo& sink) {
    std::vector<std::string> texts;
    for (const PendingObject& pending : sink.pendingObjects)
        texts.push_back(PendingText(pending));
    return texts;
}

} // namespace tarquil::test
