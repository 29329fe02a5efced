// The finishing pass: pending objects become document objects once scale and placement are
// known.
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "host/geometry/GK_Curve.h"
#include "output/PDFToVelmo.h"

namespace {

// Points to millimetres (25.4 / 72); the import scale does not enter the plot weight.
constexpr double kMillimetresPerPoint = 0.35277777777777775;

} // namespace

void PDFToVelmo::CommitToDocument(double scale, const GK_3dVector& translation, bool loadText,
                                  bool boundaryCurves, bool importLineWeights,
                                  bool showMissingFontsDialog) {
    // Not built yet: clearing the missing-font flag (6.6) belongs first here.

    CVelmoLayerTable& layers = doc->LayerTable();
    for (const auto& [index, colour] : layerColours) {
        if (index < 0 || index >= layers.LayerCount() || layers[index].Color().Packed() == colour)
            continue;
        GK_Layer copy = layers[index];
        copy.SetColor(GK_Color(colour));
        layers.ModifyLayer(copy, index, true);
    }

    const bool reference = readOptions->Mode(CVelmoFileReadOptions::ReferenceObjectsFlag);
    for (PendingObject& pending : pendingObjects) {
        GK_Geometry* geometry = pending.geometry;
        // Invalid geometry stays in its slot and is deleted at the end.
        if (!geometry || !geometry->IsValid(nullptr))
            continue;
        geometry->Translate(translation);
        geometry->Scale(scale);
        std::vector<double> dash = pending.dashPattern;
        for (double& length : dash)
            length *= scale;

        CVelmoObjectAttributes attributes;
        attributes.Default();
        attributes.SetColorSource(GK_3dmObjectAttributes::color_from_object);
        attributes.m_color = GK_Color(pending.colour);
        attributes.m_layer_index = pending.layerIndex;
        if (!dash.empty()) {
            attributes.m_linetype_index = FindOrAddLinetype(dash);
            attributes.SetLinetypeSource(GK_3dmObjectAttributes::linetype_from_object);
        }
        if (importLineWeights) {
            attributes.m_plot_weight_mm = pending.lineWidth * kMillimetresPerPoint;
            attributes.SetPlotWeightSource(GK_3dmObjectAttributes::plot_weight_from_object);
        }

        if (auto* curve = dynamic_cast<GK_Curve*>(geometry)) {
            auto* object = new CVelmoCurveObject(attributes);
            object->SetCurve(curve);
            doc->AddObject(object, reference, false);
            pending.geometry = nullptr;
        }
        // Not built yet: hatches (6.3), added as hatch objects or, with boundaryCurves, as one
        // curve per loop. Until then nothing else is handed over and step 9 deletes it.
    }
    (void)boundaryCurves;

    // Not built yet, in this order: the text pass (6.4) and, with loadText, a default
    // dimension style when the document has none; the image pass (6.5), which also releases
    // the PDFImage records; the missing-font report (6.6).
    (void)loadText;
    (void)showMissingFontsDialog;
    doc->Redraw();

    for (PendingObject& pending : pendingObjects) {
        delete pending.geometry;
        pending.geometry = nullptr;
    }
}
