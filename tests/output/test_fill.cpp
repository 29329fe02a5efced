#include "SinkFixture.h"

#include <gtest/gtest.h>

#include <memory>

using tarquil::test::CurveText;
using Texts = std::vector<std::string>;

namespace {

class FillTest : public tarquil::test::SinkFixture {
protected:
    void SetUp() override {
        SinkFixture::SetUp();
        sink->fillColour = 0x00ff00;
        sink->strokeColour = 0xff0000;
        sink->lineWidth = 2.0;
    }
    void TearDown() override {
        ClearSegments();
        SinkFixture::TearDown();
    }

    void Rectangle(double x0, double y0, double x1, double y1) {
        Add(x0, y0, 'm');
        Add(x1, y0, 'l');
        Add(x1, y1, 'l');
        Add(x0, y1, 'l');
        Add(x0, y0, 'l');
    }
    // The boundary pieces the path simplifies to, before chaining.
    Texts Segments() {
        ClearSegments();
        sink->BuildFillSegments(doc.AbsoluteTolerance() / 100.0);
        Texts texts;
        for (const GK_Curve* curve : sink->segmentCurves)
            texts.push_back(CurveText(*curve));
        return texts;
    }
    void ClearSegments() {
        for (GK_Curve* curve : sink->segmentCurves)
            delete curve;
        sink->segmentCurves.Empty();
    }
    // Keeps the path, so that one path can be filled both ways.
    Texts Fill(bool evenOdd = false) {
        evenOdd ? sink->EoFill() : sink->Fill();
        const std::vector<PathElement> path = sink->pathElements;
        Texts texts = Take();
        sink->pathElements = path;
        return texts;
    }
};

const std::string kSquare = "polyline (0 0) (10 0) (10 10) (0 10) (0 0)";

TEST_F(FillTest, ClosedAndOpenOutlinesBecomeHatches) {
    Rectangle(0, 0, 10, 10);
    EXPECT_EQ(Segments(), Texts{kSquare});
    EXPECT_EQ(Fill(), Texts{"hatch outer{" + kSquare + "} colour 65280 width 0"});
    EXPECT_EQ(Fill(true), Texts{"hatch outer{" + kSquare + "} colour 65280 width 0"});

    // Left open: closed with a line back to the start. The last line passes once more on the
    // way, which leaves its corner doubled.
    sink->pathElements.pop_back();
    const std::string open = "polyline (0 0) (10 0) (10 10) (0 10) (0 10) (0 0)";
    EXPECT_EQ(Segments(), Texts{open});
    EXPECT_EQ(Fill(), Texts{"hatch outer{" + open + "} colour 65280 width 0"});

    // An edge in many pieces that stay within the tolerance of one line is one segment.
    sink->pathElements.clear();
    Add(0, 0, 'm');
    for (int i = 1; i < 10; ++i)
        Add(i, i % 2 ? 0.0 : 1e-7, 'l');
    Add(10, 0, 'l');
    Add(10, 10, 'l');
    Add(0, 10, 'l');
    Add(0, 0, 'l');
    EXPECT_EQ(Segments(), Texts{kSquare});

    // A frame: two subpaths, the inner one a hole.
    sink->pathElements.clear();
    Rectangle(0, 0, 10, 10);
    Rectangle(2, 2, 8, 8);
    const Texts frame = Fill();
    ASSERT_EQ(frame.size(), 1u);
    EXPECT_NE(frame[0].find("inner{polyline (2 2)"), std::string::npos) << frame[0];
}

TEST_F(FillTest, AnOpenBezierSubpathIsClosedByItsBezierAgain) {
    Bezier(0, 0, 0, 5, 10, 5, 10, 0);
    EXPECT_EQ(Segments(), (Texts{"nurbs (0 0) (0 5) (10 5) (10 0)",
                                 "nurbs (10 0) (0 5) (10 5) (10 0)", "line (10 0) (0 0)"}));
    // The second Bézier is closed by itself, so it is a boundary of its own.
    EXPECT_FALSE(Fill().empty());
}

TEST_F(FillTest, AFillWithNoHatchComesOutAsOutlinesInTheStrokeColour) {
    // A filled line has no area: the host makes no hatch of it.
    Add(0, 0, 'm');
    Add(10, 0, 'l');
    EXPECT_EQ(Fill(), Texts{"polyline (0 0) (10 0) (10 0) (0 0) colour 16711680 width 0"});

    // A path with no extent gives nothing.
    sink->pathElements.clear();
    Add(0, 0, 'm');
    Add(0, 0, 'l');
    EXPECT_EQ(Fill(), Texts{});
}

TEST(ChainOpenCurves, JoinsInOrderWithBridges) {
    GK_SimpleArray<GK_Curve*> open;
    open.Append(new GK_LineCurve({0, 0, 0}, {10, 0, 0}));
    open.Append(new GK_LineCurve({10, 10, 0}, {0, 10, 0})); // no search: bridged from (10 0)
    open.Append(new GK_LineCurve({0, 10, 0}, {0, 0, 0}));   // closes the chain
    GK_SimpleArray<GK_3dPoint> points;
    for (const GK_3dPoint& p : {GK_3dPoint(20, 0, 0), GK_3dPoint(30, 0, 0), GK_3dPoint(30, 10, 0)})
        points.Append(p);
    open.Append(new GK_PolylineCurve(points)); // alone, closed by its bridge

    GK_SimpleArray<GK_Curve*> closed;
    GK_SimpleArray<int> used;
    EXPECT_EQ(PDFToVelmo::ChainOpenCurves(open, closed, 1e-5, used), 2);
    ASSERT_EQ(closed.Count(), 2);
    EXPECT_EQ(CurveText(*closed[0]),
              "polycurve[line (0 0) (10 0); line (10 0) (10 10); line (10 10) (0 10); "
              "line (0 10) (0 0)]");
    EXPECT_EQ(CurveText(*closed[1]),
              "polycurve[polyline (20 0) (30 0) (30 10); line (30 10) (20 0)]");
    EXPECT_EQ(used.Count(), 4);
    for (GK_Curve* curve : closed)
        delete curve;
    closed.Empty();

    // A lone Bézier makes no boundary.
    for (GK_Curve* curve : open)
        delete curve;
    open.Empty();
    auto* arc = new GK_NurbsCurve(3, false, 4, 4);
    for (int i = 0; i < 6; ++i)
        arc->SetKnot(i, i < 3 ? 0.0 : 1.0);
    for (int i = 0; i < 4; ++i)
        arc->SetCV(i, GK_3dPoint(i, i % 2, 0));
    open.Append(arc);
    EXPECT_EQ(PDFToVelmo::ChainOpenCurves(open, closed, 1e-5, used), 0);
    delete arc;
}

} // namespace
