// Text output: each run becomes a record in page space while the page is read, and a text
// object in an installed font once scale and placement are known. Runs are never joined into
// lines: what makes a run is the interpreter's affair.
#include "host/base/GK_String.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/GK_Font.h"
#include "host/ui/CVelmoApp.h"
#include "output/MissingFonts.h"
#include "output/PDFToVelmo.h"

namespace {

// Row-vector product: a point goes through `first`, then through `second`.
PDFMatrix Multiply(const PDFMatrix& first, const PDFMatrix& second) {
    return {first.a * second.a + first.b * second.c,
            first.a * second.b + first.b * second.d,
            first.c * second.a + first.d * second.c,
            first.c * second.b + first.d * second.d,
            first.e * second.a + first.f * second.c + second.e,
            first.e * second.b + first.f * second.d + second.f};
}

// Which sides of the box a point lies beyond: 1 left, 2 below, 4 right, 8 above.
unsigned Outcode(const PDFClipBox& box, double x, double y) {
    return (x < box.xmin ? 1u : 0u) | (y < box.ymin ? 2u : 0u) | (x > box.xmax ? 4u : 0u) |
           (y > box.ymax ? 8u : 0u);
}

// The template of the styles this pass adds: the default style, with text that keeps its
// direction rather than turning to face the viewer. Made on first need and kept for the
// process.
const GK_DimStyle& TextStyleBase() {
    static const GK_DimStyle base = [] {
        GK_DimStyle style = GK_DimStyle::DimStyleOrDefault(nullptr);
        style.SetDrawForward(false);
        return style;
    }();
    return base;
}

} // namespace

void PDFToVelmo::FlushTextRun(double start) {
    if (pendingText.empty())
        return;
    // The height is the cap height of the font, not its nominal size.
    const double h = fontSize * fontHeightScale;
    const double dx = fontSize * start / 1000.0;
    const PDFMatrix m =
        Multiply(Multiply(PDFMatrix{h, 0.0, 0.0, h, dx, 0.0}, textMatrix), currentMatrix);

    // Only the first em square is tested against the page box, however long the run: a run
    // that starts outside the box goes even when it reaches into it. The clip path does not
    // apply to text.
    bool dropped = false;
    if (hasClipBox) {
        constexpr double corners[4][2] = {{0.0, 0.0}, {0.0, 1.0}, {1.0, 1.0}, {1.0, 0.0}};
        unsigned all = ~0u;
        for (const auto& corner : corners) {
            double x = 0.0, y = 0.0;
            m.Transform(corner[0], corner[1], x, y);
            all &= Outcode(clipBox, x, y);
        }
        dropped = all != 0;
    }
    if (!dropped) {
        TextRecord& record = textRecords.emplace_back();
        record.text = pendingText;
        record.a = m.a;
        record.b = m.b;
        record.c = m.c;
        record.d = m.d;
        record.e = m.e;
        record.f = m.f;
        // Text never takes the stroke colour, whatever its render mode.
        record.colour = fillColour;
        record.layerIndex = layerIndex;
        record.fontFamily = fontFamily;
        record.italic = fontItalic;
    }
    pendingText.clear();
}

bool PDFToVelmo::NoteMissingFont(const std::string& name) {
    if (!missingFontNames.insert(name).second)
        return false;
    missingFonts.Append(GK_String(name));
    VelmoApp().Print(L"Could not find embedded font \"%s\"\n", GK_wString(name.c_str()).Array());
    return true;
}

std::uint32_t PDFToVelmo::AddTextObjects(double scale, const GK_3dVector& translation) {
    std::uint32_t missingCount = 0;
    FontMatcher matcher(EnumerateSystemFonts());
    const double s = scale;
    const double ox = translation.x, oy = translation.y;
    // Text sizes in model space are kept at the scale of the page as the model's views show
    // it.
    const double viewScale = doc->ModelUnits().MetersPerUnit(GK_UNSET_VALUE) /
                             doc->PageUnits().MetersPerUnit(GK_UNSET_VALUE);
    CVelmoDimStyleTable& styles = doc->DimStyleTable();

    for (const TextRecord& record : textRecords) {
        GK_wString family;
        bool found = false;
        matcher.MatchFont(record.fontFamily, family, found);
        if (!found && NoteMissingFont(record.fontFamily))
            ++missingCount;

        // The axes keep any slant or mirror of the run; both are divided by the height, so
        // the x axis of a run stretched in the PDF comes out longer. The host's frame keeps
        // only the axes' directions, and the text is set at its height in the font's own
        // widths: an installed font never has the PDF font's widths anyway.
        const GK_3dPoint origin(s * record.e + s * ox, s * record.f + s * oy, 0.0);
        GK_3dVector xaxis(s * record.a, s * record.b, 0.0);
        GK_3dVector yaxis(s * record.c, s * record.d, 0.0);
        const double height = yaxis.Length();
        // A zero height divides by zero here; the plane that results is no valid frame, and
        // the host refuses the text.
        xaxis = xaxis * (1.0 / height);
        yaxis = yaxis * (1.0 / height);
        const GK_Plane plane(origin, xaxis, yaxis);

        CVelmoObjectAttributes attributes;
        attributes.Default();
        attributes.SetColorSource(GK_3dmObjectAttributes::color_from_object);
        attributes.m_color = GK_Color(record.colour);
        attributes.m_layer_index = record.layerIndex;

        const GK_DimStyle* parent = &styles.CurrentDimStyle();
        if (!family.IsEmpty()) {
            // Boldness comes from the name alone, italics from the descriptor's flag alone.
            const bool bold = record.fontFamily.find("Bold") != std::string::npos;
            const GK_Font* font = GK_Font::GetManagedFont(family, bold, record.italic);
            const int index = styles.FindDimStyleFromFont(font, 1.0, &TextStyleBase(), true);
            // Should the table refuse the style, the text takes the current one.
            if (index >= 0 && index < styles.DimStyleCount())
                parent = &styles[index];
        }
        const GK_DimStyle style = GK_DimStyle::CreateFromProperties(
            *parent, GK_DimStyle::annotation_text, nullptr, viewScale, height, doc->UnitSystem(),
            GK_DimStyle::valign_bottom, GK_DimStyle::halign_left);
        // A text the host refuses is left out without a word.
        (void)doc->AddTextObject(GK_wString(VmWideFromUtf16(record.text)), plane, plane.origin,
                                 style, attributes);
    }
    return missingCount;
}
