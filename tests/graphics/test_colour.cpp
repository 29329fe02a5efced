// Colour spaces and tint transforms, on the pages of tests/data/graphics/colour-spaces.pdf.in.
#include "graphics/PDFGraphics.h"
#include "graphics/RecordingState.h"
#include "pdf/parser/ParseText.h"
#include "pdf/xref/PDFDocument.h"
#include "support/PdfTemplate.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>

namespace {

using tarquil::test::RecordingState;

constexpr std::uint32_t Rgb(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return r | (g << 8) | (b << 16);
}

// One page of the test file under an interpreter with a recording state.
class ColourPage : public ::testing::Test {
protected:
    void Open(int pageObject) {
        PDFToken* page = nullptr;
        ASSERT_EQ(doc.LoadObject(pageObject, 0, &page), kPdfOk);
        gi = std::make_unique<PDFGraphics>(&doc, &state, page);
    }
    void SetUp() override {
        ASSERT_EQ(doc.Open(), kPdfOk);
        Open(3);
    }

    // Runs `content` and gives the stack left behind, which it then clears.
    std::string Run(const std::string& content, PDFStatus expected = kPdfEof) {
        gi->SetStream(new std::istringstream(content), true);
        EXPECT_EQ(gi->ParseUntil(nullptr), expected) << content;
        std::string stack;
        while (!gi->operandStack.empty()) {
            PDFTokenRef top(gi->Pop());
            stack = top->ToString() + (stack.empty() ? "" : " ") + stack;
        }
        return stack;
    }

    // The stack `content` leaves and the fill colour after it.
    using Painted = std::pair<std::string, std::uint32_t>;
    Painted Fill(const std::string& content) {
        std::string stack = Run(content);
        return {stack, state.fillColour};
    }

    std::istringstream in{tarquil::test::PdfFromTemplate("graphics/colour-spaces.pdf.in")};
    PDFDocument doc{&in};
    RecordingState state;
    std::unique_ptr<PDFGraphics> gi;
};

// Device names are known without resources; a resource of the same name is not looked up.
// Spaces that are not evaluated keep the colour and leave their operands.
TEST_F(ColourPage, DeviceSpacesAndSpacesLeftAlone) {
    EXPECT_EQ(Fill("/DeviceRGB cs 1 0 0 sc 0 0 0 1 K"), Painted("", Rgb(255, 0, 0)));
    EXPECT_EQ(state.strokeColour, Rgb(0, 0, 0));
    EXPECT_EQ(Fill("1 0 0 0 k"), Painted("", Rgb(0, 255, 255)));
    EXPECT_EQ(Fill("/Cal cs 0 1 0 sc"), Painted("", Rgb(0, 255, 0)));

    const std::size_t colourCalls = state.Calls("ColourChanged").size();
    EXPECT_EQ(Run("/CalG cs 0.5 sc"), "0.5");
    EXPECT_EQ(Run("/Lab cs 50 0 0 sc"), "50 0 0");
    EXPECT_EQ(Run("/Idx cs 1 sc"), "1");
    EXPECT_EQ(Run("/DevN cs 0.2 0.3 scn"), "0.2 0.3");
    EXPECT_EQ(Run("/Pattern cs /P0 scn"), "/P0");
    EXPECT_EQ(Run("/Pat cs 1 0 0 /P1 scn"), "1 0 0 /P1");
    EXPECT_EQ(Run("/Missing cs 1 sc"), "1");
    // Shadings are looked up and paint nothing; the name is taken either way.
    EXPECT_EQ(Run("/Sh0 sh /Nothing sh"), "");
    EXPECT_EQ(state.Calls("ColourChanged").size(), colourCalls);
    EXPECT_EQ(state.fillColour, Rgb(0, 255, 0));
}

// An ICC-based space becomes the device space of its /Alternate or /N, for good.
TEST_F(ColourPage, IccBasedSpacesBecomeDeviceSpaces) {
    EXPECT_EQ(Fill("/Gray1 cs 0.5 sc"), Painted("", Rgb(128, 128, 128)));
    EXPECT_EQ(gi->colorSpaceName[0], "DeviceGray");
    EXPECT_EQ(Run("/Rgb3 CS 0 0 1 SC"), "");
    EXPECT_EQ(state.strokeColour, Rgb(0, 0, 255));
    EXPECT_EQ(Fill("/Cmyk4 cs 0 0 0 1 sc"), Painted("", Rgb(0, 0, 0)));
    EXPECT_EQ(gi->colorSpaceName[0], "DeviceCMYK");
    EXPECT_EQ(Fill("/AltRgb cs 1 1 0 sc"), Painted("", Rgb(255, 255, 0)));
    // Neither /Alternate nor /N: an unknown space, under an empty name from then on.
    EXPECT_EQ(Run("/NoN cs 1 sc"), "1");
    EXPECT_EQ(gi->colorSpaceName[0], "");
    EXPECT_EQ(state.fillColour, Rgb(255, 255, 0));
}

// Separation tints through exponential and single-input functions into every kind of
// alternate: device names, Lab with its white point, and arrays of other families.
TEST_F(ColourPage, SeparationTints) {
    EXPECT_EQ(Fill("/Black cs 1 sc /Black CS 0 SC"), Painted("", Rgb(0, 0, 0)));
    EXPECT_EQ(state.strokeColour, Rgb(255, 255, 255));
    EXPECT_EQ(Fill("/LabSpot cs 0 sc"),
              Painted("", Rgb(242, 255, 255))); // XYZ of the white point, as RGB
    EXPECT_EQ(Fill("1 sc"), Painted("", Rgb(55, 47, 103)));
    // A short /C0 is filled with 0, a short /C1 with 1.
    EXPECT_EQ(Fill("/ShortC0 cs 0 sc"), Painted("", Rgb(51, 0, 0)));
    EXPECT_EQ(Fill("/ShortC1 cs 0.5 sc"), Painted("", Rgb(32, 64, 64)));
    // An array alternate of another family: blue repeats green, the rest go back.
    EXPECT_EQ(Fill("/IccAlt cs 1 sc"), Painted("0.2 0.6", Rgb(255, 153, 153)));
    // The single-input form pushes nothing for a named alternate, which takes what the
    // stack already holds.
    EXPECT_EQ(Fill("/Single cs 0.3 0.6 0.9 1 scn"), Painted("", Rgb(77, 153, 230)));
    EXPECT_EQ(Fill("/SingleCal cs 1 scn"), Painted("0 0.5", Rgb(255, 128, 128)));
}

// Sampled functions: the nearest sample by the rounded linear position, the outputs in
// planes one after the other, the last operand as the first input, and the bits above a
// sample not masked. A calculator function is left alone.
TEST_F(ColourPage, SampledFunctions) {
    EXPECT_EQ(Fill("/Planes cs 1 sc"), Painted("", Rgb(255, 64, 0)));
    EXPECT_EQ(Fill("0.2 sc"), Painted("", Rgb(0, 128, 255)));
    EXPECT_EQ(Fill("/Deep cs 1 sc"), Painted("", Rgb(255, 64, 0)));
    // 0.4 + 2 x 1.3 rounds to sample 3; rounding each input, or taking the inputs in
    // operand order, would give sample 2.
    EXPECT_EQ(Fill("/TwoIn cs 0.65 0.4 sc"), Painted("", Rgb(255, 128, 0)));
    EXPECT_EQ(Fill("/Nibble cs 1 sc"), Painted("", Rgb(170, 85, 0)));
    EXPECT_EQ(Fill("/Calc cs 0.5 sc"), Painted("0.5", Rgb(170, 85, 0)));
}

// A sample past the end of the data ends the parse with a status of its own, and every word
// after it too; a huge grid reads only what lies inside its few bytes.
TEST_F(ColourPage, SamplesPastTheEndFailTheRead) {
    // One output into DeviceRGB: blue from the sample, red and green from an empty stack.
    EXPECT_EQ(Fill("/Huge cs 0 0 sc"), Painted("", Rgb(0, 0, 1)));
    EXPECT_EQ(Run("/Huge cs 1 1 sc", kPdfDataCorrupted), "");
    EXPECT_EQ(gi->readFailure, kPdfDataCorrupted);
    EXPECT_EQ(Run("1 0 0 rg", kPdfDataCorrupted), "1 0 0");

    // The parse stops at the failing operator: what follows is not read.
    Open(3);
    EXPECT_EQ(Run("/Short cs 0 sc 1 0 0 rg", kPdfDataCorrupted), "");
    EXPECT_EQ(state.fillColour, Rgb(0, 0, 1));
}

// A form's colour spaces are seen only on a page without any of its own.
TEST_F(ColourPage, FormColourSpaces) {
    PDFTokenRef formResources(
        ParseDictionaryText("<< /ColorSpace << /F [/ICCBased << /N 3 >>] >> >>"));
    ASSERT_TRUE(formResources);
    (void)gi->SwapResources(formResources.Get());
    EXPECT_EQ(Run("/F cs 1 0 0 sc"), "1 0 0");

    Open(5);
    (void)gi->SwapResources(formResources.Get());
    // The profile is a dictionary here, not a stream: the space is left alone...
    EXPECT_EQ(Run("/F cs 1 0 0 sc"), "1 0 0");
    PDFTokenRef streamResources(ParseDictionaryText(
        "<< /ColorSpace << /F [/ICCBased << /N 3 /Length 0 >> stream\nendstream] >> >>"));
    ASSERT_TRUE(streamResources);
    (void)gi->SwapResources(streamResources.Get());
    // ...and with a stream it is read.
    EXPECT_EQ(Fill("/F cs 1 0 0 sc"), Painted("", Rgb(255, 0, 0)));
}

} // namespace
