#include "output/PDFToVelmo.h"

#include "graphics/PDFImage.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "host/doc/GK_Color.h"
#include "host/geometry/GK_Curve.h"

PDFToVelmo::PDFToVelmo(CVelmoDoc* doc_, const CVelmoFileReadOptions* readOptions_)
    : doc(doc_), readOptions(readOptions_) {
    layerIndex = doc->LayerTable().CurrentLayerIndex();
    // Fills must come out solid, so the pattern is the document's solid one.
    const bool reference = readOptions->Mode(CVelmoFileReadOptions::ReferenceObjectsFlag);
    doc->HatchPatternTable().AddHatchPattern(&doc->SolidHatchPattern(), reference,
                                             &hatchPatternIndex);
}

void PDFToVelmo::DrawImage(PDFImage* image) {
    images.push_back(image);
}

PDFToVelmo::~PDFToVelmo() {
    // The curves of a painting operation cut short are the sink's own, unlike pending ones.
    for (GK_Curve* curve : segmentCurves)
        delete curve;
}

void PDFToVelmo::EoFill() {
    Fill();
}

void PDFToVelmo::ColourChanged(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    // Fill or stroke alike: a layer this read made ends with the last colour set on it.
    const auto it = layerColours.find(layerIndex);
    if (it != layerColours.end())
        it->second =
            GK_Color(static_cast<int>(red), static_cast<int>(green), static_cast<int>(blue))
                .Packed();
}

void PDFToVelmo::GetPendingExtents(double& minX, double& minY, double& maxX, double& maxY) {
    GK_BoundingBox box;
    for (PendingObject& pending : pendingObjects) {
        if (!pending.geometry || !pending.geometry->IsValid(nullptr)) {
            delete pending.geometry;
            pending.geometry = nullptr;
            continue;
        }
        box.Union(pending.geometry->BoundingBox());
    }
    minX = box.Min().x;
    minY = box.Min().y;
    maxX = box.Max().x;
    maxY = box.Max().y;
}

void PDFToVelmo::DiscardPendingObjects() {
    for (PendingObject& pending : pendingObjects) {
        delete pending.geometry;
        pending.geometry = nullptr;
    }
    // The images go with the geometry: a failed or cancelled read keeps nothing.
    for (PDFImage*& image : images) {
        delete image;
        image = nullptr;
    }
}
