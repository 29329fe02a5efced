#pragma once
// The entities of a DXF drawing, one document object at a time: curves as LINE, LWPOLYLINE
// and SPLINE, hatches as HATCH with polyline or line and spline edge boundaries, texts as
// TEXT, picture frames as IMAGE.
#include "cli/DxfWriter.h"
#include "host/doc/CVelmoDoc.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The application name under which layers and entities carry what DXF has no field for.
constexpr const char* kDxfAppName = "TARQUIL";

// What was written in another form than the object's own, or left out, for the warnings.
struct DxfNotes {
    int notFinite = 0;       // entities left out for a number that is not finite
    int unknownCurves = 0;   // curves of a kind no entity holds, left out
    int splinePolylines = 0; // polylines off a plane parallel to the ground, written as splines
    int splitTexts = 0;      // texts too long for one TEXT, written in pieces
    int clampedSlants = 0;   // texts slanted beyond what TEXT holds
    int lostLoops = 0;       // hatch boundaries of a kind no boundary path holds, left out
    int emptyHatches = 0;    // hatches left without a boundary, left out
    int linePatterns = 0;    // hatches with a line pattern, written as one family of lines
};

// How an entity looks: its layer's name, and what the object sets itself rather than taking
// it from its layer.
struct DxfEntityStyle {
    std::string layer;
    std::string linetype; // empty: by layer
    std::optional<GK_Color> color;
    std::optional<int> lineweight;
    bool reference = false; // imported as a reference: said in the extended data
};

// Where an entity goes and what it may use. `owner` is the model space's block record.
struct DxfEntityContext {
    DxfWriter& out;
    std::uint64_t owner;
    DxfNotes& notes;
};

// A curve as entities: a polycurve of straight pieces that meet exactly is one LWPOLYLINE;
// any other polycurve is its pieces, each as a curve of its own.
struct DxfCurvePlan {
    std::vector<const GK_Curve*> pieces; // borrowed from the curve
    bool onePolyline = false;
    std::vector<GK_3dPoint> points; // of the one polyline
    int EntityCount() const { return onePolyline ? 1 : static_cast<int>(pieces.size()); }
};
DxfCurvePlan PlanCurve(const GK_Curve& curve);

// Each writer uses the handles from `handle` on, as many as the matching count says.
void WriteCurveEntities(DxfEntityContext& ctx, const DxfCurvePlan& plan,
                        const DxfEntityStyle& style, std::uint64_t handle);
void WriteHatchEntity(DxfEntityContext& ctx, const GK_Hatch& hatch, const GK_HatchPattern* pattern,
                      const DxfEntityStyle& style, std::uint64_t handle);

// The content of a TEXT: as DxfText, with percent signs that would start a control code
// written so that they read as themselves.
std::string DxfTextValue(std::wstring_view text);

// Texts longer than this many characters are written as several TEXT entities.
constexpr int kDxfTextPiece = 250;
int TextEntityCount(const GK_Text& text);
void WriteTextEntities(DxfEntityContext& ctx, const GK_Text& text, const std::string& textStyle,
                       const DxfEntityStyle& style, std::uint64_t handle);

// An IMAGE of `pixels` (width, height) showing the image definition `imageDef`, with its
// reactor at `handle` + 1. Returns whether it was written.
constexpr int kDxfImageHandles = 2;
bool WriteImageEntity(DxfEntityContext& ctx, const GK_PictureFrame& frame,
                      std::pair<int, int> pixels, std::uint64_t imageDef,
                      const DxfEntityStyle& style, std::uint64_t handle);
