// Colour spaces: the operands of the colour operators become the three numbers of SetColour.
// This is a small mapping, not colour management: no profile is read, CalRGB passes as RGB,
// an ICC-based space stands for the device space of its component count, and a space that is
// not known here leaves the colour as it was and its operands on the stack.
#include "graphics/PDFGraphics.h"

#include "pdf/token/PDFTokens.h"

#include <vector>

namespace {

using Tokens = PDFParserTokens;

// An ICC-based space may name, as its alternate, a resource that is itself ICC-based; in a
// form's resources that can lead back to the same space. Real files never nest these, so
// a chain this long is a loop and ends as an unknown space would.
constexpr int kMaxColourSpaceDepth = 8;

// The Lab transfer function of the CIE: cube above 6/29, its tangent line below.
double LabG(double t) {
    if (26.0 * t >= 6.0)
        return t * t * t;
    return (t - 0.13793103448275862) * 0.12841854934601665;
}

// The item, or null past the end of the array.
PDFToken* Item(const PDFToken* array, std::size_t index) {
    const auto& items = static_cast<const Tokens::PDFArray*>(array)->items;
    return index < items.size() ? items[index] : nullptr;
}

// Missing values read as 0, as missing operands do: a short list is the file's own mistake
// and must not reach outside it.
double At(const std::vector<double>& values, std::size_t index) {
    return index < values.size() ? values[index] : 0.0;
}

void SetCmyk(PDFGraphicsState& state, std::uint8_t which, double c, double m, double y, double k) {
    state.SetColour(which, 1.0 - (c * (1.0 - k) + k), 1.0 - (m * (1.0 - k) + k),
                    1.0 - (y * (1.0 - k) + k));
}

// The white point of a Lab array's dictionary, when it is there with exactly three numbers.
bool LabWhitePoint(const PDFToken* labSpace, double (&white)[3]) {
    const PDFToken* dict = Item(labSpace, 1);
    if (!dict || !dict->IsType(kPdfKindDict))
        return false;
    const PDFToken* point = static_cast<const Tokens::PDFDict*>(dict)->Find("WhitePoint");
    if (!point || !point->IsType(kPdfKindArray))
        return false;
    const auto& items = static_cast<const Tokens::PDFArray*>(point)->items;
    if (items.size() != 3)
        return false;
    for (std::size_t i = 0; i < 3; ++i)
        white[i] = items[i]->GetFloat(0.0);
    return true;
}

// L*a*b* to XYZ under the white point. X, Y and Z then go out as red, green and blue: there
// is no conversion to RGB.
void SetLabColour(PDFGraphicsState& state, std::uint8_t which, const double (&white)[3], double l,
                  double a, double b) {
    const double m = (l + 16.0) / 116.0;
    state.SetColour(which, white[0] * LabG(m + a / 500.0), white[1] * LabG(m),
                    white[2] * LabG(m - b / 200.0));
}

} // namespace

PDFToken* PDFGraphics::ColourSpaceResources() {
    if (colorSpaceDict)
        return colorSpaceDict;
    // A form's own colour spaces count only on a page that has none.
    return swappedResources ? FindDict(swappedResources, "ColorSpace") : nullptr;
}

void PDFGraphics::ApplyColour(std::uint8_t which) {
    ApplyColourAtDepth(which, 0);
}

void PDFGraphics::ApplyColourAtDepth(std::uint8_t which, int depth) {
    const std::string name = colorSpaceName[which];
    if (name == "DeviceGray") {
        const double v = PopFloat(0.0);
        state->SetColour(which, v, v, v);
        return;
    }
    if (name == "DeviceRGB") {
        const double b = PopFloat(0.0), g = PopFloat(0.0), r = PopFloat(0.0);
        state->SetColour(which, r, g, b);
        return;
    }
    if (name == "DeviceCMYK") {
        const double k = PopFloat(0.0), y = PopFloat(0.0), m = PopFloat(0.0);
        const double c = PopFloat(0.0);
        SetCmyk(*state, which, c, m, y, k);
        return;
    }
    // Patterns leave the colour last set; their operands, the name included, stay.
    if (name == "Pattern")
        return;

    // Anything else names a resource. What is not understood keeps the colour and leaves
    // the operands where they are.
    PDFToken* spaces = ColourSpaceResources();
    if (!spaces || depth >= kMaxColourSpaceDepth)
        return;
    PDFToken* space = nullptr;
    if (Resolve(static_cast<PDFDict*>(spaces)->Find(name), &space) != kPdfOk || !space ||
        !space->IsType(kPdfKindArray))
        return;
    const auto& items = static_cast<PDFArray*>(space)->items;
    if (items.empty())
        return;
    const std::string family = items[0]->GetString();
    if (family == "CalRGB") {
        // White point, gamma and matrix play no part.
        const double b = PopFloat(0.0), g = PopFloat(0.0), r = PopFloat(0.0);
        state->SetColour(which, r, g, b);
    } else if (family == "ICCBased" && items.size() >= 2) {
        PDFToken* profile = nullptr;
        if (Resolve(items[1], &profile) != kPdfOk || !profile || !profile->IsType(kPdfKindStream))
            return;
        const auto* dict = static_cast<const PDFDict*>(static_cast<PDFStream*>(profile)->dict);
        std::string device;
        if (const PDFToken* alternate = dict->Find("Alternate")) {
            device = alternate->GetString();
        } else {
            const PDFToken* count = dict->Find("N");
            switch (count ? count->GetInteger(-1) : -1) {
            case 1:
                device = "DeviceGray";
                break;
            case 3:
                device = "DeviceRGB";
                break;
            case 4:
                device = "DeviceCMYK";
                break;
            default:
                break; // neither /Alternate nor a known /N: an unknown space below
            }
        }
        // For good: the next colour operator finds the device space directly.
        colorSpaceName[which] = device;
        PDFToken* const pageSpaces = colorSpaceDict;
        colorSpaceDict = nullptr;
        ApplyColourAtDepth(which, depth + 1);
        colorSpaceDict = pageSpaces;
    } else if (family == "Separation" && items.size() >= 2) {
        // The colorant is resolved and not looked at: "All" and "None" are colorants too.
        PDFToken* colorant = nullptr;
        (void)Resolve(items[1], &colorant);
        PDFToken* alternate = nullptr;
        PDFToken* function = nullptr;
        if (Resolve(Item(space, 2), &alternate) != kPdfOk)
            alternate = nullptr;
        if (Resolve(Item(space, 3), &function) != kPdfOk)
            function = nullptr;
        EvaluateTintTransform(function, alternate, which);
    }
    // CalGray, Lab, Indexed, DeviceN, Pattern and the rest: the colour stays as it was.
}

void PDFGraphics::SetAlternateColour(PDFToken* alternate, std::uint8_t which, std::uint64_t count) {
    if (!alternate)
        return;
    if (alternate->IsType(kPdfKindName) || alternate->IsType(kPdfKindString)) {
        const std::string name = alternate->GetString();
        if (name == "DeviceCMYK") {
            const double k = PopFloat(0.0), y = PopFloat(0.0), m = PopFloat(0.0);
            const double c = PopFloat(0.0);
            SetCmyk(*state, which, c, m, y, k);
        } else if (name == "DeviceRGB") {
            const double b = PopFloat(0.0), g = PopFloat(0.0), r = PopFloat(0.0);
            state->SetColour(which, r, g, b);
        }
        // DeviceGray and every other name: the numbers stay and so does the colour.
        return;
    }
    if (!alternate->IsType(kPdfKindArray))
        return;
    // The count comes from the function's own arrays, so it is bounded by the file's bytes;
    // an empty stack reads zeros.
    std::vector<double> v(static_cast<std::size_t>(count));
    for (std::size_t i = v.size(); i-- > 0;)
        v[i] = PopFloat(0.0);
    SetArrayAlternateColour(alternate, which, v, v.size());
}

void PDFGraphics::SetArrayAlternateColour(PDFToken* alternate, std::uint8_t which,
                                          const std::vector<double>& values, std::size_t count) {
    const auto& items = static_cast<PDFArray*>(alternate)->items;
    if (items.empty())
        return;
    if (items[0]->GetString() == "Lab") {
        double white[3];
        if (LabWhitePoint(alternate, white))
            SetLabColour(*state, which, white, At(values, 0), At(values, 1), At(values, 2));
        return;
    }
    // Any other family, ICC-based among them: the later values go back on the stack and
    // blue repeats green.
    for (std::size_t i = count; i-- > 1;)
        PushFloat(At(values, i));
    state->SetColour(which, At(values, 0), At(values, 1), At(values, 1));
}
