// The Do operator on the forms and images of tests/data/graphics/xobjects.pdf.in.
#include "graphics/PDFGraphics.h"
#include "graphics/PDFImage.h"
#include "graphics/RecordingState.h"
#include "pdf/xref/PDFDocument.h"
#include "support/PdfTemplate.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Points = std::vector<std::pair<double, double>>;

// Keeps the images and every stroked path in device space.
class XObjectSink : public tarquil::test::RecordingState {
public:
    std::vector<std::unique_ptr<PDFImage>> images;
    std::vector<Points> strokes;

    void DrawImage(PDFImage* image) override { images.emplace_back(image); }
    void Stroke() override {
        Points points;
        for (const PathElement& element : pathElements)
            points.emplace_back(element.x, element.y);
        strokes.push_back(points);
    }
};

class XObjects : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(doc.Open(), kPdfOk);
        PDFToken* page = nullptr;
        ASSERT_EQ(doc.LoadObject(3, 0, &page), kPdfOk);
        gi = std::make_unique<PDFGraphics>(&doc, &sink, page);
    }
    PDFStatus Run(const std::string& content) {
        gi->SetStream(new std::istringstream(content), true);
        return gi->ParseUntil(nullptr);
    }

    std::istringstream in{tarquil::test::PdfFromTemplate("graphics/xobjects.pdf.in")};
    PDFDocument doc{&in};
    XObjectSink sink;
    std::unique_ptr<PDFGraphics> gi;
};

TEST_F(XObjects, FormsDrawInPlace) {
    // Under its matrix; a five-item matrix counts as none and /BBox clips nothing. The name
    // after a form is read from the outer stream again.
    EXPECT_EQ(Run("/Box Do /Five Do /Missing Do 1 2 m 3 4 l S"), kPdfEof);
    ASSERT_EQ(sink.strokes.size(), 3u);
    EXPECT_EQ(sink.strokes[0], (Points{{0, 0}, {2, 2}}));
    EXPECT_EQ(sink.strokes[1], (Points{{0, 0}, {1, 1}}));
    EXPECT_EQ(sink.strokes[2], (Points{{1, 2}, {3, 4}}));
    EXPECT_TRUE(gi->operandStack.empty());
    EXPECT_EQ(gi->swappedResources, nullptr);

    // A nested form finds names in its own resources, then in the page's.
    sink.strokes.clear();
    EXPECT_EQ(Run("/Nest Do /NotStream Do"), kPdfEof);
    ASSERT_EQ(sink.strokes.size(), 2u);
    EXPECT_EQ(sink.strokes[0], (Points{{5, 5}, {6, 6}}));
    EXPECT_EQ(sink.strokes[1], (Points{{7, 7}, {8, 8}}));
    EXPECT_EQ(gi->swappedResources, nullptr);
}

// A form is not fenced: one Q too many pops the outer stream's frame. A form that does not
// decode stays with its frame and resources.
TEST_F(XObjects, UnbalancedAndFailingForms) {
    EXPECT_EQ(Run("q 0 1 0 rg q 1 0 0 rg /Unbal Do"), kPdfEof);
    EXPECT_EQ(sink.fillColour, 0x00ff00u);
    EXPECT_EQ(sink.stateStack.size(), 1u);

    EXPECT_EQ(Run("/Broken Do"), kPdfEof);
    EXPECT_EQ(sink.stateStack.size(), 2u);
    ASSERT_NE(gi->swappedResources, nullptr);
    EXPECT_EQ(Run("/OnlyInBroken Do"), kPdfEof);
    EXPECT_EQ(sink.strokes.size(), 1u);
}

// A form that draws itself ends at the depth bound; one that draws itself twice at the
// bound on draws per page.
TEST_F(XObjects, SelfDrawingFormsEnd) {
    EXPECT_EQ(Run("/Self Do"), kPdfEof);
    EXPECT_EQ(sink.strokes.size(), 32u);
    EXPECT_EQ(Run("/Twice Do 0 0 m 9 9 l S"), kPdfEof);
    EXPECT_EQ(sink.strokes.size(), 33u);
    EXPECT_EQ(sink.strokes.back(), (Points{{0, 0}, {9, 9}}));
}

TEST_F(XObjects, ImagesBecomeRecords) {
    EXPECT_EQ(Run("q 100 0 0 50 10 20 cm /Img Do Q /Idx1 Do /IdxRgb Do /Named Do /Mask Do"),
              kPdfEof);
    ASSERT_EQ(sink.images.size(), 5u);
    const PDFImage& rgb = *sink.images[0];
    EXPECT_EQ(rgb.colorSpace, "DeviceRGB");
    EXPECT_EQ(rgb.data, std::string("\xff\0\0\0\0\xff", 6));
    const std::array<std::array<double, 2>, 4> corners{{{10, 20}, {110, 20}, {110, 70}, {10, 70}}};
    EXPECT_EQ(rgb.corners, corners);

    // Indexed images are expanded into their base space, 8 bits a component.
    const PDFImage& gray = *sink.images[1];
    EXPECT_EQ(gray.colorSpace, "DeviceGray");
    EXPECT_EQ(gray.bitsPerComponent, 8);
    EXPECT_EQ(gray.data, std::string(10, '\xff') + std::string(10, '\0'));
    EXPECT_EQ(sink.images[2]->data, std::string("\0\xff\0\xff\0\0", 6));
    EXPECT_EQ(sink.images[2]->colorSpace, "DeviceRGB");
    // A resource name is not looked up; a stencil mask has no colour space.
    EXPECT_EQ(sink.images[3]->colorSpace, "CS0");
    EXPECT_EQ(sink.images[4]->colorSpace, "");
    EXPECT_EQ(sink.images[4]->bitsPerComponent, 0);

    // A failing filter and an absurd size drop the image; a palette read past its end
    // ends the read.
    EXPECT_EQ(Run("/BadImg Do /Huge Do"), kPdfEof);
    EXPECT_EQ(sink.images.size(), 5u);
    EXPECT_EQ(Run("/ShortPal Do"), kPdfDataCorrupted);
    EXPECT_EQ(sink.images.size(), 5u);
}

} // namespace
