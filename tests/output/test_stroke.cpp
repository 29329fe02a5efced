#include "SinkFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using Texts = std::vector<std::string>;

namespace {

class StrokeTest : public tarquil::test::SinkFixture {
protected:
    void SetUp() override {
        SinkFixture::SetUp();
        sink->strokeColour = 0xff0000; // blue
        sink->lineWidth = 0.5;
    }
    // A two-point subpath along y = `y`, as producers write one dash.
    void Pair(double x0, double x1, double y = 10.0) {
        Add(x0, y, 'm');
        Add(x1, y, 'l');
    }
    Texts Stroke() {
        sink->Stroke();
        return Take();
    }
};

TEST_F(StrokeTest, RowsOfTwoPointSubpathsBecomeOneDashedLine) {
    for (double x : {0.0, 3.0, 6.0, 9.0})
        Pair(x, x + 2);
    EXPECT_EQ(Stroke(), Texts{"polyline (0 10) (11 10) colour 16711680 width 0.5 dash 2 1"});

    // Three evenly spaced dashes stay three lines.
    for (double x : {0.0, 3.0, 6.0})
        Pair(x, x + 2);
    EXPECT_EQ(Stroke(), (Texts{"polyline (0 10) (2 10) colour 16711680 width 0.5",
                               "polyline (3 10) (5 10) colour 16711680 width 0.5",
                               "polyline (6 10) (8 10) colour 16711680 width 0.5"}));

    // Lengths 5 1 5 1 with gaps of 2: the sample is 5 2 1 2.
    Pair(0, 5);
    Pair(7, 8);
    Pair(10, 15);
    Pair(17, 18);
    EXPECT_EQ(Stroke(), Texts{"polyline (0 10) (18 10) colour 16711680 width 0.5 dash 5 2 1 2"});

    // A shorter last dash belongs to the row; a longer one ends the row before it.
    for (double x : {0.0, 3.0, 6.0})
        Pair(x, x + 2);
    Pair(9, 10);
    EXPECT_EQ(Stroke(), Texts{"polyline (0 10) (10 10) colour 16711680 width 0.5 dash 2 1"});
    for (double x : {0.0, 3.0, 6.0, 9.0})
        Pair(x, x + 2);
    Pair(12, 14.01);
    EXPECT_EQ(Stroke(), (Texts{"polyline (0 10) (11 10) colour 16711680 width 0.5 dash 2 1",
                               "polyline (12 10) (14.01 10) colour 16711680 width 0.5"}));

    // Positions run along the line's upward direction: a row drawn downwards has negative
    // lengths and gaps, reads as overlapping, and stays separate lines.
    for (double y : {0.0, 3.0, 6.0, 9.0}) {
        Add(5, y, 'm');
        Add(5, y + 2, 'l');
    }
    EXPECT_EQ(Stroke(), Texts{"polyline (5 0) (5 11) colour 16711680 width 0.5 dash 2 1"});
    for (double y : {0.0, 3.0, 6.0, 9.0}) {
        Add(5, 20 - y, 'm');
        Add(5, 18 - y, 'l');
    }
    EXPECT_EQ(Stroke().size(), 4u);
}

TEST_F(StrokeTest, WhatEndsADashRow) {
    // Overlapping pairs.
    for (double x : {0.0, 3.0, 6.0})
        Pair(x, x + 2);
    Pair(7, 9);
    EXPECT_EQ(Stroke().size(), 4u);

    // A segment shorter than 2^-10 passes as it stands and splits the row.
    Pair(0, 2);
    Pair(3, 5);
    Pair(20, 20.0005);
    Pair(6, 8);
    Pair(9, 11);
    const Texts split = Stroke();
    ASSERT_EQ(split.size(), 5u);
    for (const std::string& text : split)
        EXPECT_EQ(text.find("dash"), std::string::npos) << text;

    // Lines one bit apart in offset are different runs.
    Pair(0, 2);
    Pair(3, 5);
    Pair(6, 8, std::nextafter(10.0, 11.0));
    Pair(9, 11, std::nextafter(10.0, 11.0));
    EXPECT_EQ(Stroke().size(), 4u);

    // When anything in the stroke joins, the whole stroke keeps no dash.
    for (double x : {0.0, 3.0, 6.0, 9.0})
        Pair(x, x + 2);
    Add(50, 50, 'm');
    Add(60, 50, 'l');
    Add(60, 60, 'm');
    Add(60, 50, 'l');
    EXPECT_EQ(Stroke(), (Texts{"polyline (0 10) (11 10) colour 16711680 width 0.5",
                               "polyline (50 50) (60 50) (60 60) colour 16711680 width 0.5"}));
}

TEST_F(StrokeTest, PolylinesAndPoints) {
    Add(0, 0, 'm');
    Add(10, 0, 'l');
    Add(10, 10, 'l');
    Add(10, 10, 'l'); // zero-length segment goes
    Add(0, 10, 'l');
    EXPECT_EQ(Stroke(), Texts{"polyline (0 0) (10 0) (10 10) (0 10) colour 16711680 width 0.5"});

    // There and back: the closed three-point polyline stays open as two points.
    Add(0, 0, 'm');
    Add(10, 0, 'l');
    Add(0, 0, 'l');
    EXPECT_EQ(Stroke(), Texts{"polyline (0 0) (10 0) colour 16711680 width 0.5"});

    // A dot and a Bézier that never leaves its start are nothing.
    Add(5, 5, 'm');
    Add(5, 5, 'l');
    Bezier(7, 7, 7, 7, 7, 7, 7, 7);
    EXPECT_EQ(Stroke(), Texts{});

    Bezier(0, 0, 0, 5, 10, 5, 10, 0);
    EXPECT_EQ(Stroke(), Texts{"nurbs (0 0) (0 5) (10 5) (10 0) colour 16711680 width 0.5"});

    sink->paintingEnabled = false;
    Pair(0, 1);
    EXPECT_EQ(Stroke(), Texts{});
}

TEST_F(StrokeTest, ClippingKeepsTheInsideAndCountsEveryLine) {
    // A triangle clip: (0,0) (10,0) (0,10), closed.
    for (const auto& [x, y, kind] : {std::tuple{0.0, 0.0, 'm'}, std::tuple{10.0, 0.0, 'l'},
                                     std::tuple{0.0, 10.0, 'l'}, std::tuple{0.0, 0.0, 'l'}})
        sink->clipElements.push_back({x, y, kind});

    // Wholly outside the clip's box: no curve, but each line still has its dash entry.
    Add(20, 20, 'm');
    Add(30, 20, 'l');
    Add(30, 30, 'l');
    EXPECT_EQ(Stroke(), Texts{});
    EXPECT_EQ(sink->segmentDashes.size(), 2u);

    // Across the triangle: only the inside part.
    Add(-5, 2, 'm');
    Add(15, 2, 'l');
    EXPECT_EQ(Stroke(), Texts{"polyline (0 2) (8 2) colour 16711680 width 0.5"});

    // A Bézier whose chord lies outside the triangle is dropped though it bulges inside;
    // one whose chord is inside is cut where its chord leaves.
    Bezier(6, 6, 3, 3, 4, 2, 9, 3);
    EXPECT_EQ(Stroke(), Texts{});
    Bezier(1, 1, 1, 3, 7, 3, 7, 1);
    EXPECT_EQ(Stroke(), Texts{"nurbs (1 1) (1 3) (7 3) (7 1) colour 16711680 width 0.5"});
    Bezier(1, 1, 1, 3, 19, 3, 19, 1);
    // The chord leaves at t = 4/9; the Bézier is cut at that parameter.
    EXPECT_EQ(Stroke(), Texts{"nurbs (1 1) (1 1.88889) (4.55556 2.38272) (8.50617 2.48148) "
                              "colour 16711680 width 0.5"});
}

// Points on the clip's outline count by the half-open crossing rule: of a clip rectangle,
// the bottom and left edges are inside, the top and right edges outside. So a background
// rectangle that coincides with its clip keeps only two of its sides.
TEST_F(StrokeTest, TheClipOutlineIsHalfInside) {
    for (const auto& [x, y, kind] :
         {std::tuple{0.0, 0.0, 'm'}, std::tuple{10.0, 0.0, 'l'}, std::tuple{10.0, 10.0, 'l'},
          std::tuple{0.0, 10.0, 'l'}, std::tuple{0.0, 0.0, 'l'}})
        sink->clipElements.push_back({x, y, kind});
    Add(0, 0, 'm');
    Add(10, 0, 'l');
    Add(10, 10, 'l');
    Add(0, 10, 'l');
    Add(0, 0, 'l');
    EXPECT_EQ(Stroke(), Texts{"polyline (0 10) (0 0) (10 0) colour 16711680 width 0.5"});
}

TEST(NormaliseCurve, KeepsCurvesAndDropsPoints) {
    const GK_LineCurve line({0, 0, 0}, {3, 4, 0});
    std::unique_ptr<GK_Curve> normal(NormaliseCurve(line));
    ASSERT_TRUE(dynamic_cast<GK_PolylineCurve*>(normal.get()));
    EXPECT_EQ(tarquil::test::CurveText(*normal), "polyline (0 0) (3 4)");

    const GK_LineCurve dot({1, 1, 0}, {1, 1, 0});
    EXPECT_EQ(NormaliseCurve(dot), nullptr);

    GK_PolyCurve mixed;
    mixed.Append(new GK_LineCurve({0, 0, 0}, {1, 0, 0}));
    GK_NurbsCurve* arc = new GK_NurbsCurve(3, false, 4, 4);
    for (int i = 0; i < 6; ++i)
        arc->SetKnot(i, i < 3 ? 0.0 : 1.0);
    arc->SetCV(0, GK_3dPoint(1, 0, 0));
    arc->SetCV(1, GK_3dPoint(2, 0, 0));
    arc->SetCV(2, GK_3dPoint(2, 1, 0));
    arc->SetCV(3, GK_3dPoint(2, 2, 0));
    mixed.Append(arc);
    normal.reset(NormaliseCurve(mixed));
    ASSERT_TRUE(dynamic_cast<GK_PolyCurve*>(normal.get()));
}

} // namespace
