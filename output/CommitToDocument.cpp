// The finishing pass: pending objects become document objects once scale and placement are
// known.
#include "graphics/PDFImage.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "host/geometry/GK_Curve.h"
#include "host/geometry/GK_Hatch.h"
#include "output/MissingFonts.h"
#include "output/PDFToVelmo.h"

namespace {

// Points to millimetres (25.4 / 72); the import scale does not enter the plot weight.
constexpr double kMillimetresPerPoint = 0.35277777777777775;

} // namespace

void PDFToVelmo::CommitToDocument(double scale, const GK_3dVector& translation, bool loadText,
                                  bool boundaryCurves, bool importLineWeights,
                                  bool showMissingFontsDialog) {
    ClearFontWasMissing();

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
        } else if (auto* hatch = dynamic_cast<GK_Hatch*>(geometry)) {
            if (boundaryCurves) {
                // Fills as their outlines: the same cleaned loops a hatch would have had.
                for (int i = 0; i < hatch->LoopCount(); ++i) {
                    GK_Curve* loop = hatch->LoopCurve3d(i);
                    if (!loop)
                        continue;
                    auto* object = new CVelmoCurveObject(attributes);
                    object->SetCurve(loop);
                    doc->AddObject(object, reference, false);
                }
                delete hatch;
            } else {
                auto* object = new CVelmoHatch(attributes);
                object->SetHatch(hatch);
                doc->AddObject(object, reference, false);
            }
            pending.geometry = nullptr;
        }
    }

    // Text comes after all curves and hatches. Without loadText the records are not looked
    // at: no font is enumerated and none is reported missing.
    std::uint32_t missingCount = 0;
    if (loadText) {
        missingCount = AddTextObjects(scale, translation);
        CVelmoDimStyleTable& styles = doc->DimStyleTable();
        if (styles.DimStyleCount() == 0) {
            GK_DimStyle style = styles.GetDefaultDimStyleProperties();
            style.SetDimScale(1.0);
            styles.AddDimStyle(style, doc->ReadingReferenceModel());
        }
    }

    // Images are always imported; each record goes once its file and frame are made.
    const PDFMatrix toModel{scale, 0.0, 0.0, scale, scale * translation.x, scale * translation.y};
    for (PDFImage*& image : images) {
        if (image)
            PlaceImage(*image, toModel);
        delete image;
        image = nullptr;
    }

    // The report does not stop anything: text and images are in the document by now.
    if (FontWasMissing())
        ReportMissingFonts(missingCount, readOptions->Mode(CVelmoFileReadOptions::BatchModeFlag),
                           showMissingFontsDialog);
    doc->Redraw();

    for (PendingObject& pending : pendingObjects) {
        delete pending.geometry;
        pending.geometry = nullptr;
    }
}
