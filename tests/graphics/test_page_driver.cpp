#include "graphics/PageDriver.h"
#include "graphics/RecordingState.h"
#include "support/PdfWriter.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

using tarquil::test::PdfWriter;
using tarquil::test::RecordingState;
using tarquil::test::TempFile;

// Keeps every stroked path in device space, which is where the page placement shows.
class PageSink : public RecordingState {
public:
    std::vector<std::vector<std::pair<double, double>>> strokes;
    void Stroke() override {
        std::vector<std::pair<double, double>> points;
        for (const PathElement& element : pathElements)
            points.emplace_back(element.x, element.y);
        strokes.push_back(points);
        RecordingState::Stroke();
    }
};

using Points = std::vector<std::pair<double, double>>;

// A file with catalog 1 and page-tree root 2 over `pages` (object bodies numbered from 10);
// `extra` holds further objects, streams given as (entries, data).
struct FileShape {
    std::vector<std::string> pages;
    std::string treeEntries;
    std::vector<std::pair<int, std::string>> objects;
    std::vector<std::pair<int, std::pair<std::string, std::string>>> streams;
};

std::string Build(const FileShape& shape) {
    PdfWriter writer;
    writer.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    std::string kids;
    for (std::size_t i = 0; i < shape.pages.size(); ++i)
        kids += std::to_string(10 + i) + " 0 R ";
    writer.Object(2, "<< /Type /Pages /Kids [" + kids + "] /Count " +
                         std::to_string(shape.pages.size()) + " " + shape.treeEntries + " >>");
    for (std::size_t i = 0; i < shape.pages.size(); ++i)
        writer.Object(static_cast<int>(10 + i),
                      "<< /Type /Page /Parent 2 0 R " + shape.pages[i] + " >>");
    for (const auto& [number, body] : shape.objects)
        writer.Object(number, body);
    for (const auto& [number, stream] : shape.streams)
        writer.Stream(number, stream.first, stream.second);
    writer.ClassicXref("/Root 1 0 R");
    return writer.Text();
}

PDFStatus Read(const std::string& text, PageSink& sink, const PagePrompt& prompt = {},
               bool batch = false) {
    TempFile file("page.pdf", text);
    return ReadDocument(std::fopen(file.Path().c_str(), "rb"), sink, batch, prompt);
}

// One page of [0 0 200 100] drawing a line from its origin to its far corner.
FileShape RotatedPage(const std::string& rotate) {
    return {{"/MediaBox [0 0 200 100] /Contents 100 0 R " + rotate},
            "",
            {},
            {{100, {"", "0 0 m 200 100 l S"}}}};
}

TEST(PageDriver, OpeningAndPageSelection) {
    PageSink sink;
    EXPECT_EQ(ReadDocument(nullptr, sink, false, {}), kPdfCannotOpenFile);

    int asked = 0;
    std::pair<int, bool> askedWith{0, false};
    std::set<int> answer;
    const PagePrompt prompt = [&](int count, bool batch) {
        ++asked;
        askedWith = {count, batch};
        return answer;
    };

    // One page: no prompt, page 0 is read.
    PageSink single;
    EXPECT_EQ(Read(Build(RotatedPage("")), single, prompt), kPdfOk);
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(single.strokes.size(), 1u);

    // Each page draws a line to (n, 0) so the order shows.
    FileShape three;
    for (int i = 0; i < 3; ++i) {
        three.pages.push_back("/Contents " + std::to_string(100 + i) + " 0 R");
        three.streams.push_back({100 + i, {"", "0 0 m " + std::to_string(i + 1) + " 0 l S"}});
    }
    const std::string file = Build(three);

    PageSink cancelled;
    EXPECT_EQ(Read(file, cancelled, prompt, true), kPdfCanceled);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(askedWith, std::make_pair(3, true));
    EXPECT_TRUE(cancelled.calls.empty());

    PageSink picked;
    answer = {2, 0};
    EXPECT_EQ(Read(file, picked, prompt), kPdfOk);
    ASSERT_EQ(picked.strokes.size(), 2u);
    EXPECT_EQ(picked.strokes[0][1].first, 1.0);
    EXPECT_EQ(picked.strokes[1][1].first, 3.0);

    // A page the tree does not hold fails the read after the pages before it were drawn.
    PageSink beyond;
    answer = {1, 7};
    EXPECT_NE(Read(file, beyond, prompt), kPdfOk);
    EXPECT_EQ(beyond.strokes.size(), 1u);
}

TEST(PageDriver, PagesStackDownwardByTheirHeight) {
    FileShape shape;
    for (int i = 0; i < 3; ++i) {
        shape.pages.push_back(
            std::string(i == 2 ? "/MediaBox [0 0 300 50]" : "/MediaBox [0 0 200 100]") +
            " /Contents 100 0 R");
    }
    shape.streams.push_back({100, {"", "0 0 m 10 10 l S"}});
    PageSink sink;
    EXPECT_EQ(Read(Build(shape), sink, [](int, bool) { return std::set<int>{0, 1, 2}; }), kPdfOk);
    ASSERT_EQ(sink.strokes.size(), 3u);
    // Half of each neighbour's height apart: 0, -100, then -100 - 50 - 25.
    EXPECT_EQ(sink.strokes[0], (Points{{0, 0}, {10, 10}}));
    EXPECT_EQ(sink.strokes[1], (Points{{0, -100}, {10, -90}}));
    EXPECT_EQ(sink.strokes[2], (Points{{0, -175}, {10, -165}}));
    EXPECT_EQ(sink.Calls("SetMatrix").size(), 3u);
    EXPECT_EQ(sink.Calls("ConcatMatrix 1 0 0 1 0 -175").size(), 1u);
}

TEST(PageDriver, RotationTurnsThePageWithExactAxes) {
    struct Case {
        std::string rotate;
        std::string turn; // the rotation's ConcatMatrix
        Points line;
    };
    const std::vector<Case> cases = {
        // /Rotate 90 is a = 270, the odd branch: about the true centre (100, 50).
        {"/Rotate 90", "ConcatMatrix 0 -1 1 0 0 0", {{50, 150}, {150, -50}}},
        // 180, even branch: about the centre with exchanged coordinates (50, 100).
        {"/Rotate 180", "ConcatMatrix -1 0 0 -1 0 0", {{100, 200}, {-100, 100}}},
        {"/Rotate 270", "ConcatMatrix 0 1 -1 0 0 0", {{150, -50}, {50, 150}}},
        {"/Rotate -90", "ConcatMatrix 0 1 -1 0 0 0", {{150, -50}, {50, 150}}},
        // Only a direct number counts.
        {"/Rotate 99 0 R", "ConcatMatrix 1 0 0 1 0 0", {{0, 0}, {200, 100}}},
    };
    for (const Case& c : cases) {
        FileShape shape = RotatedPage(c.rotate);
        shape.objects.push_back({99, "90"});
        PageSink sink;
        EXPECT_EQ(Read(Build(shape), sink), kPdfOk) << c.rotate;
        const auto concat = sink.Calls("ConcatMatrix");
        ASSERT_EQ(concat.size(), 4u) << c.rotate;
        EXPECT_EQ(concat[2], c.turn) << c.rotate;
        ASSERT_EQ(sink.strokes.size(), 1u) << c.rotate;
        EXPECT_EQ(sink.strokes[0], c.line) << c.rotate;
    }
}

TEST(PageDriver, BoxOnlyOnTheParentGivesNoSize) {
    FileShape shape;
    shape.treeEntries = "/MediaBox [0 0 200 100]";
    shape.pages = {"/Contents 100 0 R", "/Contents 100 0 R",
                   "/Contents 100 0 R /CropBox [0 0 5 5]"};
    shape.streams.push_back({100, {"", "0 0 m 1 1 l S"}});
    PageSink sink;
    EXPECT_EQ(Read(Build(shape), sink, [](int, bool) { return std::set<int>{0, 1}; }), kPdfOk);
    ASSERT_EQ(sink.strokes.size(), 2u);
    // Not inherited: no offset for either page, and no clip box from the parent's box.
    EXPECT_EQ(sink.strokes[0], (Points{{0, 0}, {1, 1}}));
    EXPECT_EQ(sink.strokes[1], (Points{{0, 0}, {1, 1}}));
    EXPECT_FALSE(sink.hasClipBox);

    PageSink cropped;
    EXPECT_EQ(Read(Build(shape), cropped, [](int, bool) { return std::set<int>{2}; }), kPdfOk);
    EXPECT_TRUE(cropped.hasClipBox);
    EXPECT_EQ(cropped.clipBox.xmax, 5.0);
}

TEST(PageDriver, ContentStreams) {
    // An array: operands carry across the boundary, which is also a token boundary; items
    // that are no stream are passed over.
    FileShape shape;
    shape.pages = {"/MediaBox [0 0 10 10] /Contents [100 0 R 7 101 0 R 102 0 R]"};
    shape.streams = {{100, {"", "1 2"}}, {101, {"", "m 3 4 l"}}, {102, {"", "S"}}};
    PageSink sink;
    EXPECT_EQ(Read(Build(shape), sink), kPdfOk);
    EXPECT_EQ(sink.strokes, (std::vector<Points>{{{1, 2}, {3, 4}}}));

    // A null item in the array ends the read.
    shape.pages = {"/MediaBox [0 0 10 10] /Contents [100 0 R null]"};
    PageSink withNull;
    EXPECT_EQ(Read(Build(shape), withNull), kPdfNullReference);

    // A page without /Contents, blank or not, ends the read; earlier pages stay drawn.
    shape.pages = {"/Contents 100 0 R", "/MediaBox [0 0 10 10]"};
    shape.streams = {{100, {"", "0 0 m 1 1 l S"}}};
    PageSink blank;
    EXPECT_EQ(Read(Build(shape), blank,
                   [](int, bool) {
                       return std::set<int>{0, 1};
                   }),
              kPdfNullReference);
    EXPECT_EQ(blank.strokes.size(), 1u);

    // /Contents that is neither stream nor array draws nothing and is no error.
    shape.pages = {"/Contents 5"};
    PageSink number;
    EXPECT_EQ(Read(Build(shape), number), kPdfOk);
    EXPECT_TRUE(number.strokes.empty());
}

TEST(PageDriver, AnnotationAppearances) {
    FileShape shape;
    shape.pages = {"/MediaBox [0 0 200 100] /Contents 100 0 R /Annots [20 0 R 21 0 R 22 0 R 23 0 R "
                   "24 0 R]"};
    shape.streams = {
        {100, {"", ""}},
        // Rect centre (60, 35), box centre (50, 25), same size: moved by (10, 10).
        {30, {"/BBox [0 0 100 50]", "0 0 m 100 50 l S"}},
        {31, {"", "0 0 m 1 1 l S"}},
        {32, {"/BBox [0 0 10 10]", "] 0 0 m 9 9 l S"}},
        {33, {"", "0 0 m 2 2 l S"}},
    };
    shape.objects = {
        {20, "<< /Rect [10 10 110 60] /AP << /N 30 0 R >> >>"},
        // No /BBox: the previous annotation's placement is used again.
        {21, "<< /Rect [0 0 50 50] /AP << /N 31 0 R >> >>"},
        // A state dictionary under /N draws nothing.
        {22, "<< /Rect [0 0 5 5] /AP << /N << /On 31 0 R >> >> >>"},
        // A broken appearance costs only itself; its /BBox, with an empty /Rect, is unused.
        {23, "<< /Rect [0 0 0 0] /AP << /N 32 0 R >> >>"},
        {24, "<< /AP << /N 33 0 R >> >>"},
    };
    PageSink sink;
    EXPECT_EQ(Read(Build(shape), sink), kPdfOk);
    ASSERT_EQ(sink.strokes.size(), 3u);
    EXPECT_EQ(sink.strokes[0], (Points{{10, 10}, {110, 60}}));
    EXPECT_EQ(sink.strokes[1], (Points{{10, 10}, {11, 11}}));
    EXPECT_EQ(sink.strokes[2], (Points{{10, 10}, {12, 12}}));
    // Each appearance is bracketed and the page's matrix comes back after it; only the
    // broken one leaves its own "q" open, having stopped before its " Q".
    EXPECT_EQ(sink.Calls("SaveState").size(), 8u);
    EXPECT_EQ(sink.Calls("RestoreState").size(), 7u);
    EXPECT_EQ(sink.stateStack.size(), 1u);
    EXPECT_EQ(sink.currentMatrix, PDFMatrix{});

    // The first annotation without /BBox draws untransformed; a null item ends the read.
    shape.pages = {"/MediaBox [0 0 200 100] /Contents 100 0 R /Annots [24 0 R null]"};
    PageSink first;
    EXPECT_EQ(Read(Build(shape), first), kPdfNullReference);
    EXPECT_EQ(first.strokes, (std::vector<Points>{{{0, 0}, {2, 2}}}));
    // Its bracket is the starting "q " as well as the driver's own.
    EXPECT_EQ(first.Calls("SaveState").size(), 2u);

    // /Annots that is no array is ignored.
    shape.pages = {"/MediaBox [0 0 200 100] /Contents 100 0 R /Annots 5"};
    PageSink none;
    EXPECT_EQ(Read(Build(shape), none), kPdfOk);
    EXPECT_TRUE(none.strokes.empty());
}

} // namespace
