#include "cli/DocumentSvg.h"

#include "cli/SvgPathData.h"
#include "host/base/GK_String.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cwchar>
#include <string>
#include <vector>

namespace {

// Text is handed to the stream in pieces of about this size.
constexpr std::size_t kSpillSize = 1 << 16;

// A text object's height is that of its capitals, which in common fonts are about this part
// of the em that SVG's font-size sets.
constexpr double kCapHeightPerEm = 0.7;

std::string FixedNumber(double v) {
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, 2);
    return std::string(buf, r.ptr);
}

std::string HexColor(const GK_Color& c) {
    static const char* digits = "0123456789abcdef";
    std::string s = "#";
    for (int v : {c.Red(), c.Green(), c.Blue()}) {
        s += digits[(v >> 4) & 15];
        s += digits[v & 15];
    }
    return s;
}

class SvgWriter {
public:
    SvgWriter(std::ostream& out, const CVelmoDoc& doc) : m_out(out), m_doc(doc) {
        const CVelmoLayerTable& layers = doc.LayerTable();
        const int count = layers.LayerCount();
        m_parent.assign(count, -1);
        for (int i = 0; i < count; ++i) {
            const GK_UUID& parent = layers[i].ParentId();
            const int p = parent.IsNil() ? -1 : layers.FindLayerFromId(parent);
            if (p != i)
                m_parent[i] = p;
        }
        m_buffer.reserve(kSpillSize + 4096);
    }

    bool Write() {
        const GK_BoundingBox box = DrawingBox();
        double x0 = 0.0, y0 = 0.0, w = 100.0, h = 100.0;
        if (box.IsValid()) {
            const double dx = box.m_max.x - box.m_min.x;
            const double dy = box.m_max.y - box.m_min.y;
            const double size = std::max(dx, dy);
            const double margin = size > 0.0 ? 0.03 * size : 1.0;
            x0 = box.m_min.x - margin;
            y0 = box.m_min.y - margin;
            w = dx + 2 * margin;
            h = dy + 2 * margin;
        }
        // Picture y runs down: the model's top edge is the picture's top.
        const double top = -(y0 + h);
        const double pixels = 800.0 / std::max(w, h);

        m_buffer += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        m_buffer += "<svg xmlns=\"http://www.w3.org/2000/svg\" "
                    "xmlns:xlink=\"http://www.w3.org/1999/xlink\" version=\"1.1\" viewBox=\"";
        AppendNumbers({x0, top, w, h});
        m_buffer += "\" width=\"" + FixedNumber(w * pixels) + "\" height=\"" +
                    FixedNumber(h * pixels) + "\">\n";
        WriteLayerStyle();
        // Strokes of one and a half pixels at the picture's own size, in model units so
        // that every viewer draws them alike.
        m_buffer += "<g fill=\"none\" stroke-width=\"";
        AppendNumber(1.5 / pixels, m_buffer);
        m_buffer += "\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
        for (int i = 0; i < m_doc.ObjectCount(); ++i) {
            WriteObject(m_doc.Object(i));
            if (m_buffer.size() >= kSpillSize)
                Spill();
        }
        if (m_runLayer >= 0)
            m_buffer += " </g>\n";
        m_buffer += "</g>\n</svg>\n";
        Spill();
        m_out.flush();
        return static_cast<bool>(m_out);
    }

private:
    void Spill() {
        m_out.write(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
        m_buffer.clear();
    }

    void AppendNumbers(std::initializer_list<double> values) {
        bool first = true;
        for (double v : values) {
            if (!first)
                m_buffer += ' ';
            first = false;
            AppendNumber(v, m_buffer);
        }
    }

    // The layer and the layers above it, outermost first. A parent chain that loops back (the
    // host does not let one be built, but a table could hold one) ends where it repeats.
    std::vector<int> Lineage(int layer) const {
        std::vector<int> chain;
        for (int at = layer; at >= 0 && std::find(chain.begin(), chain.end(), at) == chain.end();
             at = m_parent[at])
            chain.push_back(at);
        std::reverse(chain.begin(), chain.end());
        return chain;
    }

    // Shown when it and all its parents are visible, as in the modeller.
    bool IsShown(int layer) const {
        for (int at : Lineage(layer))
            if (!m_doc.LayerTable()[at].IsVisible())
                return false;
        return true;
    }

    // Hidden layers are hidden by their class, which the objects of their child layers carry
    // too; showing a layer is taking its name out of this rule.
    void WriteLayerStyle() {
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        std::string rule;
        for (int i = 0; i < layers.LayerCount(); ++i)
            if (!layers[i].IsVisible())
                rule += (rule.empty() ? ".layer-" : ",.layer-") + std::to_string(i);
        if (!rule.empty())
            m_buffer += "<style>" + rule + "{display:none}</style>\n";
    }

    // The geometry of the objects the picture draws: curves, hatches, picture frames and
    // texts (whose box the host only estimates).
    static const GK_Geometry* Drawn(const CVelmoObject& object) {
        if (const auto* text = dynamic_cast<const CVelmoTextObject*>(&object))
            return &text->Text();
        if (const auto* curve = dynamic_cast<const CVelmoCurveObject*>(&object))
            return curve->Curve();
        if (const auto* hatch = dynamic_cast<const CVelmoHatch*>(&object))
            return hatch->Hatch();
        if (const auto* frame = dynamic_cast<const CVelmoPictureFrameObject*>(&object))
            return &frame->Frame();
        return nullptr;
    }

    // The image file on the frame's parallelogram: the image's top row along the frame's
    // far edge, so a skewed or mirrored frame shows the picture skewed or mirrored.
    void WritePicture(const CVelmoPictureFrameObject& object) {
        const GK_PictureFrame& frame = object.Frame();
        if (!frame.IsValid())
            return;
        const GK_Plane& plane = frame.Plane();
        const GK_3dVector x = plane.xaxis * frame.Width();
        const GK_3dVector y = plane.yaxis * frame.Height();
        EnterLayer(object.Attributes().m_layer_index);
        m_buffer += "  <image x=\"0\" y=\"0\" width=\"1\" height=\"1\" "
                    "preserveAspectRatio=\"none\" transform=\"matrix(";
        AppendNumbers({x.x, -x.y, -y.x, y.y, plane.origin.x + y.x, -(plane.origin.y + y.y)});
        m_buffer += ")\" xlink:href=\"" + XmlEscape(UriPath(object.Path().str())) + "\"/>\n";
    }

    // The text on its frame, baseline through the origin, in its font's family, weight and
    // slant. The frame's axes carry any rotation, slant or mirror; SVG's y runs down, so the
    // y axis is negated on the way in and the picture's y on the way out.
    void WriteText(const CVelmoTextObject& object, const GK_Color& color) {
        const GK_Text& text = object.Text();
        if (!text.IsValid())
            return;
        const GK_Plane& plane = text.Plane();
        const GK_Font& font = object.Style().Font();
        EnterLayer(object.Attributes().m_layer_index);
        m_buffer += "  <text transform=\"matrix(";
        AppendNumbers({plane.xaxis.x, -plane.xaxis.y, -plane.yaxis.x, plane.yaxis.y, plane.origin.x,
                       -plane.origin.y});
        m_buffer += ")\" font-family=\"" + XmlEscape(CssString(font.FamilyName().str())) +
                    "\" font-size=\"";
        AppendNumber(text.Height() / kCapHeightPerEm, m_buffer);
        m_buffer += '"';
        if (font.IsBold())
            m_buffer += " font-weight=\"bold\"";
        if (font.IsItalic())
            m_buffer += " font-style=\"italic\"";
        m_buffer += " fill=\"" + HexColor(color) + "\" xml:space=\"preserve\">" +
                    XmlEscape(text.Text().str()) + "</text>\n";
    }

    // A family name as a quoted CSS string, so that names with digits or odd characters
    // stay one name.
    static std::wstring CssString(const std::wstring& name) {
        std::wstring quoted = L"'";
        for (wchar_t c : name) {
            if (c == L'\'' || c == L'\\')
                quoted += L'\\';
            quoted += c;
        }
        return quoted + L"'";
    }

    // A file path as a URI reference: characters that URIs do not allow are escaped.
    static std::wstring UriPath(const std::wstring& path) {
        std::wstring uri;
        for (wchar_t c : path) {
            if (c == L' ' || c == L'%' || c == L'#' || c == L'?' || c == L'"' || c < 0x20) {
                wchar_t escaped[4];
                std::swprintf(escaped, 4, L"%%%02X", static_cast<unsigned>(c) & 0xff);
                uri += escaped;
            } else {
                uri += c;
            }
        }
        return uri;
    }

    // The box of what is shown; of everything when nothing is, so that a drawing on
    // hidden layers still gets a box that fits it.
    GK_BoundingBox DrawingBox() const {
        const int layerCount = m_doc.LayerTable().LayerCount();
        std::vector<char> shown(layerCount);
        for (int i = 0; i < layerCount; ++i)
            shown[i] = IsShown(i);
        GK_BoundingBox shownBox, all;
        for (int i = 0; i < m_doc.ObjectCount(); ++i) {
            const CVelmoObject& object = m_doc.Object(i);
            const GK_Geometry* geometry = Drawn(object);
            if (!geometry)
                continue;
            const GK_BoundingBox box = geometry->BoundingBox();
            if (!box.IsValid())
                continue;
            all.Union(box);
            const int layer = object.Attributes().m_layer_index;
            if (layer >= 0 && layer < layerCount && shown[layer])
                shownBox.Union(box);
        }
        return shownBox.IsValid() ? shownBox : all;
    }

    // Consecutive objects of one layer share a group that names the layer.
    void EnterLayer(int index) {
        if (index == m_runLayer)
            return;
        if (m_runLayer >= 0)
            m_buffer += " </g>\n";
        m_runLayer = index;
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        m_buffer += " <g class=\"";
        bool first = true;
        for (int at : Lineage(index)) {
            m_buffer += first ? "layer-" : " layer-";
            m_buffer += std::to_string(at);
            first = false;
        }
        m_buffer += "\" data-layer=\"" + std::to_string(index) + "\" data-name=\"" +
                    XmlEscape(layers[index].Name().str()) + "\"><title>" +
                    XmlEscape(layers.FullPathName(index).str()) + "</title>\n";
    }

    void WriteObject(const CVelmoObject& object) {
        const CVelmoObjectAttributes& a = object.Attributes();
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        if (a.m_layer_index < 0 || a.m_layer_index >= layers.LayerCount())
            return;
        const GK_Layer& layer = layers[a.m_layer_index];
        const GK_Color color = a.m_color_source == GK_3dmObjectAttributes::color_from_object
                                   ? a.m_color
                                   : layer.Color();
        m_path.clear();
        if (const auto* hatchObject = dynamic_cast<const CVelmoHatch*>(&object)) {
            if (hatchObject->Hatch())
                AppendHatchPathData(*hatchObject->Hatch(), m_path);
            if (m_path.empty())
                return;
            EnterLayer(a.m_layer_index);
            m_buffer += "  <path d=\"";
            m_buffer += m_path;
            m_buffer +=
                "\" fill=\"" + HexColor(color) + "\" fill-rule=\"evenodd\" stroke=\"none\"/>\n";
            return;
        }
        if (const auto* picture = dynamic_cast<const CVelmoPictureFrameObject*>(&object)) {
            WritePicture(*picture);
            return;
        }
        if (const auto* text = dynamic_cast<const CVelmoTextObject*>(&object)) {
            WriteText(*text, color);
            return;
        }
        const auto* curveObject = dynamic_cast<const CVelmoCurveObject*>(&object);
        if (!curveObject || !curveObject->Curve())
            return;
        AppendCurvePathData(*curveObject->Curve(), m_path);
        if (m_path.empty())
            return;
        EnterLayer(a.m_layer_index);
        m_buffer += "  <path d=\"";
        m_buffer += m_path;
        m_buffer += "\" stroke=\"" + HexColor(color) + "\"";
        const int linetype = a.m_linetype_source == GK_3dmObjectAttributes::linetype_from_object
                                 ? a.m_linetype_index
                                 : layer.LinetypeIndex();
        const CVelmoLinetypeTable& linetypes = m_doc.LinetypeTable();
        if (linetype >= 0 && linetype < linetypes.LinetypeCount()) {
            const auto [dashes, offset] = DashPattern(linetypes[linetype]);
            if (!dashes.empty()) {
                m_buffer += " stroke-dasharray=\"";
                for (std::size_t i = 0; i < dashes.size(); ++i) {
                    if (i > 0)
                        m_buffer += ' ';
                    AppendNumber(dashes[i], m_buffer);
                }
                m_buffer += '"';
                if (offset != 0.0) {
                    m_buffer += " stroke-dashoffset=\"";
                    AppendNumber(offset, m_buffer);
                    m_buffer += '"';
                }
            }
        }
        m_buffer += "/>\n";
    }

    std::ostream& m_out; // borrowed
    const CVelmoDoc& m_doc;
    std::vector<int> m_parent; // -1 for a top-level layer
    int m_runLayer = -1;       // the layer of the group now open, -1 for none
    std::string m_buffer;
    std::string m_path; // the path data of one object, kept to reuse its memory
};

} // namespace

bool WriteDocumentSvg(std::ostream& out, const CVelmoDoc& doc) {
    return SvgWriter(out, doc).Write();
}

std::string XmlEscape(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (const wchar_t wc : text) {
        const auto c = static_cast<char32_t>(wc);
        switch (c) {
        case U'&':
            out += "&amp;";
            continue;
        case U'<':
            out += "&lt;";
            continue;
        case U'>':
            out += "&gt;";
            continue;
        case U'"':
            out += "&quot;";
            continue;
        case U'\'':
            out += "&apos;";
            continue;
        default:
            break;
        }
        const bool allowed = c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
                             (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
        out += VmUtf8FromWide(std::wstring(1, static_cast<wchar_t>(allowed ? c : U'\uFFFD')));
    }
    return out;
}
