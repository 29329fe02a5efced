// The graphics state: start values, matrices, the path and its closing, clips, q/Q frames
// and colours.
#include "graphics/RecordingState.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

using tarquil::test::RecordingState;

std::vector<PathElement> Path(std::initializer_list<PathElement> elements) {
    return std::vector<PathElement>(elements);
}

TEST(GraphicsState, StartValues) {
    PDFGraphicsState state;
    EXPECT_EQ(state.currentMatrix, PDFMatrix{});
    EXPECT_EQ(state.textMatrix, PDFMatrix{});
    EXPECT_EQ(state.currentMatrix.a, 1.0);
    EXPECT_EQ(state.currentMatrix.d, 1.0);
    EXPECT_FALSE(state.hasClipBox);
    EXPECT_EQ(state.leading, 1.0);
    EXPECT_EQ(state.horizontalScale, 100.0);
    EXPECT_EQ(state.fontHeightScale, 1.0);
    EXPECT_EQ(state.fontBoxHeight, 1.0);
    EXPECT_TRUE(state.paintingEnabled);
    // Fields without a start value of their own are zero.
    EXPECT_EQ(state.lineWidth, 0.0);
    EXPECT_EQ(state.lineCap, 0u);
    EXPECT_EQ(state.miterLimit, 0.0);
    EXPECT_EQ(state.fontSize, 0.0);
    EXPECT_EQ(state.missingWidth, 0.0);
    EXPECT_EQ(state.fillColour, 0u);
    EXPECT_EQ(state.layerIndex, 0);
}

TEST(GraphicsState, PathPointsAreInDeviceSpace) {
    RecordingState state;
    state.SetMatrix(2, 0, 0, 3, 10, 20);
    state.MoveTo(1, 1);
    state.LineTo(2, 1);
    state.CurveTo(3, 1, 4, 2, 5, 5);
    EXPECT_EQ(state.pathElements,
              Path({{12, 23, 'm'}, {14, 23, 'l'}, {16, 23, 'a'}, {18, 26, 'b'}, {20, 35, 'c'}}));
    // The current point stays in user space: the end point of the curve.
    EXPECT_EQ(state.currentX, 5.0);
    EXPECT_EQ(state.currentY, 5.0);

    // A later cm moves only what comes after it.
    state.ConcatMatrix(1, 0, 0, 1, 100, 0);
    EXPECT_EQ(state.pathElements.front(), (PathElement{12, 23, 'm'}));
    state.LineTo(0, 0);
    EXPECT_EQ(state.pathElements.back(), (PathElement{210, 20, 'l'}));

    // Painting is silent in the base, and only EndPath empties the path.
    state.Stroke();
    state.Fill();
    state.EoFill();
    state.AddPathElement(PathElement{1, 2, 'l'});
    EXPECT_EQ(state.pathElements.size(), 6u);
    state.EndPath();
    EXPECT_TRUE(state.pathElements.empty());
    EXPECT_EQ(state.Calls("AddPathElement"), std::vector<std::string>{"AddPathElement 1 2 l"});
}

TEST(GraphicsState, ConcatenationOrder) {
    PDFGraphicsState state;
    // Scale x by 2, then rotate the operand by a quarter turn: the operand applies first,
    // so (1, 0) turns to (0, 1) and is then scaled along x, which leaves it at (0, 1).
    state.SetMatrix(2, 0, 0, 1, 0, 0);
    state.ConcatMatrix(0, 1, -1, 0, 0, 0);
    EXPECT_EQ(state.currentMatrix, (PDFMatrix{0, 1, -2, 0, 0, 0}));
    state.MoveTo(1, 0);
    EXPECT_EQ(state.pathElements.back(), (PathElement{0, 1, 'm'}));
    state.MoveTo(0, 1);
    EXPECT_EQ(state.pathElements.back(), (PathElement{-2, 0, 'm'}));

    // A translation operand is scaled by the old matrix and added to the old offset.
    state.SetMatrix(2, 0, 0, 2, 10, 20);
    state.ConcatMatrix(1, 0, 0, 1, 5, 7);
    EXPECT_EQ(state.currentMatrix, (PDFMatrix{2, 0, 0, 2, 20, 34}));
    // SetMatrix replaces rather than concatenates.
    state.SetMatrix(1, 0, 0, -1, 0, 792);
    EXPECT_EQ(state.currentMatrix, (PDFMatrix{1, 0, 0, -1, 0, 792}));
}

TEST(GraphicsState, ClosePath) {
    PDFGraphicsState state;
    // Nothing to close: an empty path and a lone moveto.
    state.ClosePath();
    EXPECT_TRUE(state.pathElements.empty());
    state.MoveTo(5, 5);
    state.ClosePath();
    EXPECT_EQ(state.pathElements, Path({{5, 5, 'm'}}));

    // A triangle closes with one line back to its start, and a second close adds nothing.
    state.LineTo(10, 5);
    state.LineTo(10, 10);
    state.ClosePath();
    state.ClosePath();
    EXPECT_EQ(state.pathElements, Path({{5, 5, 'm'}, {10, 5, 'l'}, {10, 10, 'l'}, {5, 5, 'l'}}));

    // Closing goes back to the latest subpath's start, and after a curve too.
    state.MoveTo(20, 20);
    state.CurveTo(21, 21, 22, 22, 30, 20);
    state.ClosePath();
    EXPECT_EQ(state.pathElements.back(), (PathElement{20, 20, 'l'}));
    EXPECT_EQ(state.pathElements.size(), 9u);

    // A subpath whose end already meets its start gets no line.
    state.EndPath();
    state.MoveTo(0, 0);
    state.LineTo(4, 0);
    state.LineTo(0, 0);
    state.ClosePath();
    EXPECT_EQ(state.pathElements.size(), 3u);
    // Both coordinates must meet: sharing x alone, or y alone, still closes.
    state.EndPath();
    state.MoveTo(0, 0);
    state.LineTo(4, 4);
    state.LineTo(0, 4);
    state.ClosePath();
    state.MoveTo(0, 0);
    state.LineTo(4, 4);
    state.LineTo(4, 0);
    state.ClosePath();
    EXPECT_EQ(state.pathElements, Path({{0, 0, 'm'},
                                        {4, 4, 'l'},
                                        {0, 4, 'l'},
                                        {0, 0, 'l'},
                                        {0, 0, 'm'},
                                        {4, 4, 'l'},
                                        {4, 0, 'l'},
                                        {0, 0, 'l'}}));

    // Without any moveto the search stops at the first element, whatever its kind.
    state.EndPath();
    state.LineTo(1, 2);
    state.LineTo(3, 4);
    state.LineTo(5, 0);
    state.ClosePath();
    EXPECT_EQ(state.pathElements.back(), (PathElement{1, 2, 'l'}));
    EXPECT_EQ(state.pathElements.size(), 4u);
    // A single element of any kind closes to itself: nothing.
    state.EndPath();
    state.LineTo(1, 2);
    state.ClosePath();
    EXPECT_EQ(state.pathElements.size(), 1u);
}

TEST(GraphicsState, ClosePathLeavesDeviceCoordinatesAsCurrentPoint) {
    PDFGraphicsState state;
    state.SetMatrix(2, 0, 0, 2, 100, 0);
    state.MoveTo(1, 1);
    state.LineTo(5, 1);
    EXPECT_EQ(state.currentX, 5.0);
    state.ClosePath();
    // The start in device space, not the user-space (1, 1).
    EXPECT_EQ(state.currentX, 102.0);
    EXPECT_EQ(state.currentY, 2.0);
    // A close that adds nothing leaves the current point alone.
    state.MoveTo(7, 8);
    state.ClosePath();
    EXPECT_EQ(state.currentX, 7.0);
    EXPECT_EQ(state.currentY, 8.0);
}

TEST(GraphicsState, LineStyle) {
    RecordingState state;
    state.SetLineWidth(2.5);
    state.SetLineCap(1);
    state.SetLineJoin(2);
    state.SetMiterLimit(4);
    state.SetFlatness(0.5);
    state.SetRenderingIntent("Perceptual");
    state.SetExtGStateName("GS1");
    EXPECT_EQ(state.lineWidth, 2.5);
    EXPECT_EQ(state.lineCap, 1u);
    EXPECT_EQ(state.lineJoin, 2u);
    EXPECT_EQ(state.miterLimit, 4.0);
    EXPECT_EQ(state.flatness, 0.5);
    EXPECT_EQ(state.renderingIntent, "Perceptual");
    EXPECT_EQ(state.extGStateName, "GS1");

    const double dash[] = {3, 1, 2};
    state.SetDash(3, dash, 1.5);
    EXPECT_EQ(state.dashArray, (std::vector<double>{3, 1, 2}));
    EXPECT_EQ(state.dashPhase, 1.5);
    state.SetDash(2, dash + 1, 0);
    EXPECT_EQ(state.dashArray, (std::vector<double>{1, 2}));
    // A call with no lengths clears the dash; whether "[] 0 d" calls at all is the
    // interpreter's affair.
    state.SetDash(0, nullptr, 2);
    EXPECT_TRUE(state.dashArray.empty());
    EXPECT_EQ(state.dashPhase, 2.0);
    EXPECT_EQ(state.Calls("SetDash"),
              (std::vector<std::string>{"SetDash 3 1.5", "SetDash 2 0", "SetDash 0 2"}));
}

TEST(GraphicsState, SavedFramesRestoreOnlyTheirFields) {
    RecordingState state;
    state.SetMatrix(1, 0, 0, 1, 5, 5);
    state.SetTextMatrix(2, 0, 0, 2, 1, 1);
    state.SetColour(0, 1, 0, 0);
    state.SetColour(1, 0, 0, 1);
    state.MoveTo(0, 0);
    state.LineTo(1, 1);
    state.Clip(0);
    state.EndPath();
    const std::vector<PathElement> clip = state.clipElements;
    const std::uint64_t clipVersion = state.clipVersion;
    state.SetLineWidth(1);

    state.SaveState();
    state.ConcatMatrix(3, 0, 0, 3, 0, 0);
    state.SetTextMatrix(1, 0, 0, 1, 9, 9);
    state.SetColour(0, 0, 1, 0);
    state.SetColour(1, 0, 1, 0);
    state.MoveTo(7, 7);
    state.Clip(1);
    EXPECT_NE(state.clipVersion, clipVersion) << "another clip, another version";
    state.SetLineWidth(4);
    state.SetLineCap(2);
    const double dash[] = {6};
    state.SetDash(1, dash, 0);
    state.SetFont("F1", 12, nullptr, nullptr);
    state.SetLeading(14);
    state.SetCharSpacing(3);
    state.calls.clear();
    state.RestoreState();

    EXPECT_EQ(state.currentMatrix, (PDFMatrix{1, 0, 0, 1, 5, 5}));
    EXPECT_EQ(state.textMatrix, (PDFMatrix{2, 0, 0, 2, 1, 1}));
    EXPECT_EQ(state.clipElements, clip);
    EXPECT_EQ(state.clipVersion, clipVersion);
    EXPECT_EQ(state.fillColour, 0x0000FFu);
    EXPECT_EQ(state.strokeColour, 0xFF0000u);
    // The old colour comes back silently.
    EXPECT_EQ(state.calls, std::vector<std::string>{"RestoreState"});
    // Everything else keeps what was set last, the path included.
    EXPECT_EQ(state.lineWidth, 4.0);
    EXPECT_EQ(state.lineCap, 2u);
    EXPECT_EQ(state.dashArray, std::vector<double>{6});
    EXPECT_EQ(state.fontName, "F1");
    EXPECT_EQ(state.fontSize, 12.0);
    EXPECT_EQ(state.leading, 14.0);
    EXPECT_EQ(state.charSpacing, 3.0);
    EXPECT_EQ(state.pathElements.size(), 1u);
    EXPECT_TRUE(state.stateStack.empty());
}

TEST(GraphicsState, SavedFramesNestAndIgnoreUnbalancedRestore) {
    PDFGraphicsState state;
    // Q on an empty stack changes nothing.
    state.SetMatrix(1, 2, 3, 4, 5, 6);
    state.SetColour(0, 0.2, 0.4, 0.6);
    state.RestoreState();
    EXPECT_EQ(state.currentMatrix, (PDFMatrix{1, 2, 3, 4, 5, 6}));
    EXPECT_NE(state.fillColour, 0u);

    state.SetMatrix(1, 0, 0, 1, 0, 0);
    state.SaveState();
    state.SetMatrix(1, 0, 0, 1, 1, 0);
    state.SaveState();
    state.SetMatrix(1, 0, 0, 1, 2, 0);
    ASSERT_EQ(state.stateStack.size(), 2u);
    state.RestoreState();
    EXPECT_EQ(state.currentMatrix.e, 1.0);
    state.RestoreState();
    EXPECT_EQ(state.currentMatrix.e, 0.0);
    state.RestoreState();
    EXPECT_EQ(state.currentMatrix.e, 0.0);
}

TEST(GraphicsState, ColourPacking) {
    RecordingState state;
    // Red in the low byte; 0.5 rounds to 128 by adding a half and truncating.
    state.SetColour(0, 1, 0.5, 0);
    EXPECT_EQ(state.fillColour, 0x0080FFu);
    EXPECT_EQ(state.strokeColour, 0u);
    state.SetColour(1, 0, 0.2, 1);
    EXPECT_EQ(state.strokeColour, 0xFF3300u);
    EXPECT_EQ(state.fillColour, 0x0080FFu);
    EXPECT_EQ(state.Calls("ColourChanged"),
              (std::vector<std::string>{"ColourChanged 255 128 0", "ColourChanged 0 51 255"}));

    // Out of range clamps, huge values included; just under a half step rounds down.
    state.calls.clear();
    state.SetColour(0, 1.7, -0.3, 1e300);
    EXPECT_EQ(state.fillColour, 0xFF00FFu);
    state.SetColour(0, -1e300, 0.001, 1.5 / 255.0 - 0.0001);
    EXPECT_EQ(state.fillColour, 0x010000u);
    state.SetColour(0, std::numeric_limits<double>::quiet_NaN(), 0, 0);
    EXPECT_EQ(state.fillColour, 0u);
    EXPECT_EQ(state.Calls("ColourChanged"),
              (std::vector<std::string>{"ColourChanged 255 0 255", "ColourChanged 0 0 1",
                                        "ColourChanged 0 0 0"}));
}

TEST(GraphicsState, ClipBoxAndClipPath) {
    PDFGraphicsState state;
    // A page flipped onto its top edge: corners are sorted after the transform.
    state.SetMatrix(1, 0, 0, -1, 0, 792);
    state.SetClipBox(0, 0, 612, 792);
    EXPECT_TRUE(state.hasClipBox);
    EXPECT_EQ(state.clipBox.xmin, 0.0);
    EXPECT_EQ(state.clipBox.xmax, 612.0);
    EXPECT_EQ(state.clipBox.ymin, 0.0);
    EXPECT_EQ(state.clipBox.ymax, 792.0);

    // Under a quarter turn only the diagonal's two corners count.
    state.SetMatrix(0, 1, -1, 0, 0, 0);
    state.SetClipBox(0, 0, 100, 50);
    EXPECT_EQ(state.clipBox.xmin, -50.0);
    EXPECT_EQ(state.clipBox.xmax, 0.0);
    EXPECT_EQ(state.clipBox.ymin, 0.0);
    EXPECT_EQ(state.clipBox.ymax, 100.0);

    // W replaces the clip with the path as it stands, n leaves it; clips never intersect.
    state.SetMatrix(1, 0, 0, 1, 0, 0);
    state.MoveTo(0, 0);
    state.LineTo(10, 0);
    state.Clip(0);
    state.EndPath();
    EXPECT_EQ(state.clipElements, Path({{0, 0, 'm'}, {10, 0, 'l'}}));
    state.MoveTo(50, 50);
    state.Clip(1);
    state.EndPath();
    EXPECT_EQ(state.clipElements, Path({{50, 50, 'm'}}));
    // The clip box takes the current path as the clip: at page start that empties it.
    state.SetClipBox(0, 0, 1, 1);
    EXPECT_TRUE(state.clipElements.empty());
}

TEST(GraphicsState, DrawImageTakesTheRecord) {
    RecordingState state;
    auto* image = new PDFImage;
    image->width = 7;
    image->data = std::string(64, 'x');
    // The base destroys it; a leak or double free shows under the sanitizers.
    state.DrawImage(image);
    EXPECT_EQ(state.calls, std::vector<std::string>{"DrawImage 7"});
}

} // namespace
