// Frames, matrices, line style, the path and colours.
#include "graphics/PDFGraphicsState.h"

#include "graphics/PDFImage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

void PDFGraphicsState::DrawImage(PDFImage* image) {
    delete image;
}

PDFGraphicsState::~PDFGraphicsState() = default;

void PDFGraphicsState::SaveState() {
    stateStack.push_back(PDFSavedFrame{currentMatrix, clipElements, clipVersion, textMatrix,
                                       fillColour, strokeColour});
}

void PDFGraphicsState::RestoreState() {
    if (stateStack.empty())
        return;
    PDFSavedFrame& frame = stateStack.back();
    currentMatrix = frame.currentMatrix;
    clipElements = std::move(frame.clipElements);
    clipVersion = frame.clipVersion;
    textMatrix = frame.textMatrix;
    // Only the packed words come back; the sink hears of it through its own reads, not
    // through ColourChanged.
    fillColour = frame.fillColour;
    strokeColour = frame.strokeColour;
    stateStack.pop_back();
}

void PDFGraphicsState::SetMatrix(double a, double b, double c, double d, double e, double f) {
    currentMatrix = PDFMatrix{a, b, c, d, e, f};
}

void PDFGraphicsState::ConcatMatrix(double a, double b, double c, double d, double e, double f) {
    const PDFMatrix m = currentMatrix;
    currentMatrix.a = m.a * a + m.c * b;
    currentMatrix.b = m.b * a + m.d * b;
    currentMatrix.c = m.a * c + m.c * d;
    currentMatrix.d = m.b * c + m.d * d;
    currentMatrix.e = m.a * e + m.c * f + m.e;
    currentMatrix.f = m.b * e + m.d * f + m.f;
}

void PDFGraphicsState::SetLineWidth(double width) {
    lineWidth = width;
}

void PDFGraphicsState::SetLineCap(std::uint32_t cap) {
    lineCap = cap;
}

void PDFGraphicsState::SetLineJoin(std::uint32_t join) {
    lineJoin = join;
}

void PDFGraphicsState::SetMiterLimit(double limit) {
    miterLimit = limit;
}

void PDFGraphicsState::SetDash(std::uint32_t count, const double* lengths, double phase) {
    dashArray.resize(count);
    if (count != 0 && lengths)
        std::copy(lengths, lengths + count, dashArray.begin());
    dashPhase = phase;
}

void PDFGraphicsState::SetRenderingIntent(const std::string& intent) {
    renderingIntent = intent;
}

void PDFGraphicsState::SetExtGStateName(const std::string& name) {
    extGStateName = name;
}

void PDFGraphicsState::SetFlatness(double value) {
    flatness = value;
}

void PDFGraphicsState::AppendPoint(double x, double y, char kind) {
    PathElement element;
    element.kind = kind;
    currentMatrix.Transform(x, y, element.x, element.y);
    pathElements.push_back(element);
}

void PDFGraphicsState::MoveTo(double x, double y) {
    currentX = x;
    currentY = y;
    AppendPoint(x, y, 'm');
}

void PDFGraphicsState::LineTo(double x, double y) {
    currentX = x;
    currentY = y;
    AppendPoint(x, y, 'l');
}

void PDFGraphicsState::CurveTo(double x1, double y1, double x2, double y2, double x3, double y3) {
    currentX = x3;
    currentY = y3;
    AppendPoint(x1, y1, 'a');
    AppendPoint(x2, y2, 'b');
    AppendPoint(x3, y3, 'c');
}

void PDFGraphicsState::ClosePath() {
    if (pathElements.empty())
        return;
    // The search stops at index 0 whatever stands there, so a path that does not begin with
    // 'm' closes back to its first point.
    std::size_t start = pathElements.size() - 1;
    while (start > 0 && pathElements[start].kind != 'm')
        --start;
    const PathElement found = pathElements[start];
    const PathElement& last = pathElements.back();
    if (found.x == last.x && found.y == last.y)
        return;
    // Device coordinates in fields that otherwise hold user ones; only a v after h sees it.
    currentX = found.x;
    currentY = found.y;
    pathElements.push_back(PathElement{found.x, found.y, 'l'});
}

void PDFGraphicsState::Stroke() {}

void PDFGraphicsState::Fill() {}

void PDFGraphicsState::EoFill() {}

void PDFGraphicsState::Clip(int /*evenOdd*/) {
    clipElements = pathElements;
    clipVersion = NewClipVersion();
}

void PDFGraphicsState::EndPath() {
    pathElements.clear();
}

void PDFGraphicsState::AddPathElement(const PathElement& /*element*/) {}

namespace {

// One colour component as a byte: scaled, rounded half up by truncation, clamped. Values
// beyond the 32-bit range saturate first, so that the conversion is defined for any input.
std::uint32_t ComponentByte(double value) {
    const double scaled = value * 255.0 + 0.5;
    std::int32_t truncated = 0;
    if (std::isnan(scaled))
        truncated = 0;
    else if (scaled >= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
        truncated = std::numeric_limits<std::int32_t>::max();
    else if (scaled <= static_cast<double>(std::numeric_limits<std::int32_t>::min()))
        truncated = std::numeric_limits<std::int32_t>::min();
    else
        truncated = static_cast<std::int32_t>(scaled);
    return static_cast<std::uint32_t>(std::clamp<std::int32_t>(truncated, 0, 255));
}

} // namespace

void PDFGraphicsState::SetColour(std::uint8_t which, double r, double g, double b) {
    const std::uint32_t red = ComponentByte(r);
    const std::uint32_t green = ComponentByte(g);
    const std::uint32_t blue = ComponentByte(b);
    const std::uint32_t packed = red | (green << 8) | (blue << 16);
    if (which == 0)
        fillColour = packed;
    else
        strokeColour = packed;
    ColourChanged(red, green, blue);
}

void PDFGraphicsState::ColourChanged(std::uint32_t /*red*/, std::uint32_t /*green*/,
                                     std::uint32_t /*blue*/) {}

void PDFGraphicsState::SetClipBox(double x0, double y0, double x1, double y1) {
    double ax = 0.0, ay = 0.0, bx = 0.0, by = 0.0;
    currentMatrix.Transform(x0, y0, ax, ay);
    currentMatrix.Transform(x1, y1, bx, by);
    clipBox.xmin = std::min(ax, bx);
    clipBox.xmax = std::max(ax, bx);
    clipBox.ymin = std::min(ay, by);
    clipBox.ymax = std::max(ay, by);
    hasClipBox = true;
    // At page start the path is empty, so this also drops the previous page's clip.
    clipElements = pathElements;
    clipVersion = NewClipVersion();
}
