#include "cli/DocumentDxf.h"

#include "cli/DxfEntities.h"
#include "cli/DxfValues.h"
#include "cli/DxfWriter.h"
#include "host/base/GK_String.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

// Handles of the drawing's fixed parts. Table entries, image definitions and entities follow
// from kFirstFreeHandle on, in that order.
enum : std::uint64_t {
    kLayerTable = 0x1,
    kLinetypeTable,
    kAppIdTable,
    kDimStyleTable,
    kStyleTable,
    kUcsTable,
    kViewTable,
    kVportTable,
    kBlockRecordTable,
    kRootDictionary,
    kGroupDictionary,
    kLayoutDictionary,
    kPlotStyleDictionary,
    kPlotStyleNormal,
    kImageDictionary,
    kImageVariables,
    kModelRecord,
    kModelBlock,
    kModelBlockEnd,
    kModelLayout,
    kPaperRecord,
    kPaperBlock,
    kPaperBlockEnd,
    kPaperLayout,
    kActiveVport,
    kByBlockLinetype,
    kByLayerLinetype,
    kContinuousLinetype,
    kAcadAppId,
    kOwnAppId,
    kStandardDimStyle,
    kStandardStyle,
    kLayerZero,
    kFirstFreeHandle = 0x100,
};

// Names are told apart without regard to case, as CAD programs do.
std::wstring Folded(const std::wstring& name) {
    std::wstring folded = name;
    for (wchar_t& c : folded)
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
    return folded;
}

// `name`, or it with " (2)", " (3)", ... when a name of the set already has it.
std::wstring Unique(std::wstring name, std::set<std::wstring>& taken) {
    std::wstring candidate = name;
    for (int n = 2; taken.count(Folded(candidate)); ++n) {
        const std::wstring suffix = L" (" + std::to_wstring(n) + L")";
        candidate = name.substr(0, 255 - suffix.size()) + suffix;
    }
    taken.insert(Folded(candidate));
    return candidate;
}

struct ImageDef {
    std::wstring path;
    std::string key; // its name in the image dictionary
    std::uint64_t handle = 0;
    std::pair<int, int> pixels{1, 1};
    std::vector<std::uint64_t> images; // the IMAGE entities showing it; each reactor follows
};

constexpr const char* kUnitsWarning =
    "the model unit, points, has no DXF unit; the drawing is unitless";

class DxfDocumentWriter {
public:
    DxfDocumentWriter(std::ostream& out, const CVelmoDoc& doc) : m_out(out), m_doc(doc) {}

    bool Write(std::vector<std::string>& warnings) {
        Plan();
        WriteHeader();
        WriteClasses();
        WriteTables();
        WriteBlocks();
        WriteEntities();
        WriteObjects();
        m_out.Text(0, "EOF");
        Warn(warnings);
        return m_out.Finish();
    }

private:
    // What the header and the tables need before the first entity is written: the names,
    // the fonts and image files in use, the extents and the number of handles.
    void Plan() {
        PlanLayers();
        PlanLinetypes();
        std::uint64_t next = kFirstFreeHandle + m_layerNames.size() + m_linetypeNames.size();
        std::set<std::wstring> styleNames{L"standard"}, imageKeys;
        std::uint64_t entityHandles = 0;
        for (int i = 0; i < m_doc.ObjectCount(); ++i) {
            const CVelmoObject& object = m_doc.Object(i);
            if (const GK_Geometry* geometry = object.Geometry()) {
                const GK_BoundingBox box = geometry->BoundingBox();
                if (box.IsValid())
                    m_extents.Union(box);
            }
            entityHandles += HandleCount(object);
            if (const auto* text = dynamic_cast<const CVelmoTextObject*>(&object)) {
                const GK_Font* font = &text->Style().Font();
                if (m_textStyleOf.emplace(font, static_cast<int>(m_fonts.size())).second) {
                    m_fonts.push_back(font);
                    m_styleNames.push_back(VmUtf8FromWide(
                        Unique(DxfTableName(font->Description().str()), styleNames)));
                }
            } else if (const auto* picture =
                           dynamic_cast<const CVelmoPictureFrameObject*>(&object)) {
                const std::wstring& path = picture->Path().str();
                if (m_imageOf.emplace(path, m_images.size()).second) {
                    ImageDef def;
                    def.path = path;
                    GK_wString stem;
                    GK_wString::SplitPath(path.c_str(), nullptr, nullptr, &stem, nullptr);
                    def.key = VmUtf8FromWide(Unique(DxfTableName(stem.str()), imageKeys));
                    if (const auto pixels = ImagePixelSize(path))
                        def.pixels = *pixels;
                    m_images.push_back(std::move(def));
                }
            }
        }
        next += m_fonts.size();
        for (ImageDef& def : m_images)
            def.handle = next++;
        m_firstEntity = next;
        m_handleSeed = next + entityHandles;
    }

    // Each layer by its full path, "$" between the levels (DXF allows no colon in names, and
    // "$" is what it uses itself between the parts of a bound reference's layer names). The
    // first layer whose name is "0" becomes the drawing's layer 0.
    void PlanLayers() {
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        std::set<std::wstring> taken{L"0"};
        for (int i = 0; i < layers.LayerCount(); ++i) {
            std::wstring path = layers.FullPathName(i).str();
            for (std::size_t at = path.find(L"::"); at != std::wstring::npos;
                 at = path.find(L"::", at + 1))
                path.replace(at, 2, L"$");
            std::wstring name = DxfTableName(path);
            if (name == L"0" && !m_zeroIsOwn)
                m_zeroIsOwn = true;
            else
                name = Unique(name, taken);
            if (name != path)
                ++m_renamedLayers;
            m_layerNames.push_back(VmUtf8FromWide(name));
        }
    }

    void PlanLinetypes() {
        const CVelmoLinetypeTable& linetypes = m_doc.LinetypeTable();
        std::set<std::wstring> taken{L"byblock", L"bylayer", L"continuous"};
        for (int i = 0; i < linetypes.LinetypeCount(); ++i) {
            const std::wstring& own = linetypes[i].Name().str();
            const std::wstring name = Unique(DxfTableName(own), taken);
            if (name != own)
                ++m_renamedLinetypes;
            m_linetypeNames.push_back(VmUtf8FromWide(name));
        }
    }

    int HandleCount(const CVelmoObject& object) const {
        switch (object.ObjectKind()) {
        case CVelmoObject::curve_object: {
            const auto* curve = static_cast<const CVelmoCurveObject&>(object).Curve();
            return curve ? PlanCurve(*curve).EntityCount() : 0;
        }
        case CVelmoObject::hatch_object:
            return 1;
        case CVelmoObject::text_object:
            return TextEntityCount(static_cast<const CVelmoTextObject&>(object).Text());
        case CVelmoObject::picture_object:
            return kDxfImageHandles;
        }
        return 0;
    }

    void Variable(const char* name) { m_out.Text(9, name); }

    void WriteHeader() {
        DxfWriter& w = m_out;
        w.Text(0, "SECTION").Text(2, "HEADER");
        Variable("$ACADVER");
        w.Text(1, "AC1027");
        // Text is UTF-8 from this version on; the code page is only read by older programs.
        Variable("$DWGCODEPAGE");
        w.Text(3, "ANSI_1252");
        Variable("$INSBASE");
        w.Point(10, 0.0, 0.0, 0.0);
        const bool empty = !m_extents.IsValid();
        const GK_3dPoint low = empty ? GK_3dPoint(1e20, 1e20, 1e20) : m_extents.m_min;
        const GK_3dPoint high = empty ? GK_3dPoint(-1e20, -1e20, -1e20) : m_extents.m_max;
        Variable("$EXTMIN");
        w.Point(10, low.x, low.y, low.z);
        Variable("$EXTMAX");
        w.Point(10, high.x, high.y, high.z);
        Variable("$LIMMIN");
        w.Point2(10, empty ? 0.0 : low.x, empty ? 0.0 : low.y);
        Variable("$LIMMAX");
        w.Point2(10, empty ? 420.0 : high.x, empty ? 297.0 : high.y);
        Variable("$CLAYER");
        const int current = m_doc.LayerTable().CurrentLayerIndex();
        w.Text(8, current >= 0 && current < static_cast<int>(m_layerNames.size())
                      ? m_layerNames[current]
                      : "0");
        Variable("$TEXTSTYLE");
        w.Text(7, "Standard");
        Variable("$HANDSEED");
        w.Handle(5, m_handleSeed);
        int insUnits = 0;
        bool metric = true;
        switch (m_doc.ModelUnits().UnitSystem()) {
        case VmLengthUnit::Millimeters:
            insUnits = 4;
            break;
        case VmLengthUnit::Centimeters:
            insUnits = 5;
            break;
        case VmLengthUnit::Meters:
            insUnits = 6;
            break;
        case VmLengthUnit::Inches:
            insUnits = 1;
            metric = false;
            break;
        case VmLengthUnit::Feet:
            insUnits = 2;
            metric = false;
            break;
        case VmLengthUnit::Points:
            metric = false;
            m_unitless = true;
            break;
        }
        Variable("$INSUNITS");
        w.Int(70, insUnits);
        Variable("$MEASUREMENT");
        w.Int(70, metric ? 1 : 0);
        w.Text(0, "ENDSEC");
    }

    void Class(const char* name, const char* cppName, const char* app, int proxy, bool entity) {
        m_out.Text(0, "CLASS").Text(1, name).Text(2, cppName).Text(3, app);
        m_out.Int(90, proxy).Int(91, 0).Int(280, 0).Int(281, entity ? 1 : 0);
    }

    void WriteClasses() {
        m_out.Text(0, "SECTION").Text(2, "CLASSES");
        Class("ACDBDICTIONARYWDFLT", "AcDbDictionaryWithDefault", "ObjectDBX Classes", 0, false);
        Class("ACDBPLACEHOLDER", "AcDbPlaceHolder", "ObjectDBX Classes", 0, false);
        Class("LAYOUT", "AcDbLayout", "ObjectDBX Classes", 0, false);
        if (!m_images.empty()) {
            Class("RASTERVARIABLES", "AcDbRasterVariables", "ISM", 0, false);
            Class("IMAGE", "AcDbRasterImage", "ISM", 2175, true);
            Class("IMAGEDEF", "AcDbRasterImageDef", "ISM", 0, false);
            Class("IMAGEDEF_REACTOR", "AcDbRasterImageDefReactor", "ISM", 1, false);
        }
        m_out.Text(0, "ENDSEC");
    }

    void BeginTable(const char* name, std::uint64_t handle, int count) {
        m_out.Text(0, "TABLE").Text(2, name).Handle(5, handle).Handle(330, 0);
        m_out.Text(100, "AcDbSymbolTable").Int(70, count);
    }

    // The start of a table entry, up to its name.
    void BeginEntry(const char* kind, const char* subclass, std::uint64_t handle,
                    std::uint64_t table, const std::string& name) {
        m_out.BeginRecord();
        m_out.Text(0, kind).Handle(5, handle).Handle(330, table);
        m_out.Text(100, "AcDbSymbolTableRecord").Text(100, subclass).Text(2, name);
    }

    void EndEntry() {
        if (!m_out.EndRecord())
            ++m_notes.notFinite;
    }

    void WriteTables() {
        m_out.Text(0, "SECTION").Text(2, "TABLES");
        WriteVport();
        WriteLinetypes();
        WriteLayers();
        WriteStyles();
        BeginTable("VIEW", kViewTable, 0);
        m_out.Text(0, "ENDTAB");
        BeginTable("UCS", kUcsTable, 0);
        m_out.Text(0, "ENDTAB");
        BeginTable("APPID", kAppIdTable, 2);
        for (const auto& [handle, name] :
             {std::pair(kAcadAppId, "ACAD"), {kOwnAppId, kDxfAppName}}) {
            BeginEntry("APPID", "AcDbRegAppTableRecord", handle, kAppIdTable, name);
            m_out.Int(70, 0);
            EndEntry();
        }
        m_out.Text(0, "ENDTAB");
        BeginTable("DIMSTYLE", kDimStyleTable, 1);
        m_out.Text(100, "AcDbDimStyleTable");
        m_out.Text(0, "DIMSTYLE").Handle(105, kStandardDimStyle).Handle(330, kDimStyleTable);
        m_out.Text(100, "AcDbSymbolTableRecord").Text(100, "AcDbDimStyleTableRecord");
        m_out.Text(2, "Standard").Int(70, 0).Handle(340, kStandardStyle);
        m_out.Text(0, "ENDTAB");
        BeginTable("BLOCK_RECORD", kBlockRecordTable, 2);
        for (const auto& [handle, layout, name] :
             {std::tuple(kModelRecord, kModelLayout, "*Model_Space"),
              {kPaperRecord, kPaperLayout, "*Paper_Space"}}) {
            BeginEntry("BLOCK_RECORD", "AcDbBlockTableRecord", handle, kBlockRecordTable, name);
            m_out.Handle(340, layout).Int(70, 0).Int(280, 1).Int(281, 0);
            EndEntry();
        }
        m_out.Text(0, "ENDTAB");
        m_out.Text(0, "ENDSEC");
    }

    // The view that a program opens the drawing with: its extents, with a little room.
    void WriteVport() {
        BeginTable("VPORT", kVportTable, 1);
        GK_3dPoint centre(0.0, 0.0, 0.0);
        double height = 100.0, aspect = 1.5;
        if (m_extents.IsValid()) {
            centre = m_extents.Center();
            const GK_3dVector size = m_extents.Diagonal();
            height = std::max(size.y, size.x / aspect) * 1.1;
            if (!(height > 0.0))
                height = 1.0;
        }
        BeginEntry("VPORT", "AcDbViewportTableRecord", kActiveVport, kVportTable, "*Active");
        DxfWriter& w = m_out;
        w.Int(70, 0).Point2(10, 0.0, 0.0).Point2(11, 1.0, 1.0).Point2(12, centre.x, centre.y);
        w.Point2(13, 0.0, 0.0).Point2(14, 0.5, 0.5).Point2(15, 0.5, 0.5);
        w.Point(16, 0.0, 0.0, 1.0).Point(17, 0.0, 0.0, 0.0);
        w.Real(40, height).Real(41, aspect).Real(42, 50.0).Real(43, 0.0).Real(44, 0.0);
        w.Real(50, 0.0).Real(51, 0.0).Int(71, 0).Int(72, 1000).Int(73, 1).Int(74, 3);
        w.Int(75, 0).Int(76, 0).Int(77, 0).Int(78, 0).Int(281, 0).Int(65, 0);
        EndEntry();
        m_out.Text(0, "ENDTAB");
    }

    void WriteLinetypes() {
        const CVelmoLinetypeTable& linetypes = m_doc.LinetypeTable();
        BeginTable("LTYPE", kLinetypeTable, 3 + linetypes.LinetypeCount());
        for (const auto& [handle, name] : {std::pair(kByBlockLinetype, "ByBlock"),
                                           {kByLayerLinetype, "ByLayer"},
                                           {kContinuousLinetype, "Continuous"}}) {
            BeginEntry("LTYPE", "AcDbLinetypeTableRecord", handle, kLinetypeTable, name);
            m_out.Int(70, 0).Text(3, name == std::string("Continuous") ? "Solid line" : "");
            m_out.Int(72, 65).Int(73, 0).Real(40, 0.0);
            EndEntry();
        }
        for (int i = 0; i < linetypes.LinetypeCount(); ++i) {
            const GK_Linetype& linetype = linetypes[i];
            // DXF patterns begin with a dash: a leading gap moves to the end, which shifts
            // where the dashes fall along a curve by that gap.
            std::vector<double> pattern;
            double length = 0.0;
            for (int s = 0; s < linetype.SegmentCount(); ++s) {
                const GK_LinetypeSegment& segment = linetype.Segment(s);
                const bool gap = segment.m_seg_type == GK_LinetypeSegment::stSpace;
                pattern.push_back(gap ? -std::abs(segment.m_length) : std::abs(segment.m_length));
                length += std::abs(segment.m_length);
            }
            const auto firstDash =
                std::find_if(pattern.begin(), pattern.end(), [](double v) { return v >= 0.0; });
            if (firstDash != pattern.begin() && firstDash != pattern.end()) {
                std::rotate(pattern.begin(), firstDash, pattern.end());
                ++m_shiftedLinetypes;
            }
            BeginEntry("LTYPE", "AcDbLinetypeTableRecord", LinetypeHandle(i), kLinetypeTable,
                       m_linetypeNames[i]);
            m_out.Int(70, 0).Text(3, DxfText(linetype.Name().str()));
            m_out.Int(72, 65).Int(73, static_cast<int>(pattern.size())).Real(40, length);
            for (double v : pattern)
                m_out.Real(49, v).Int(74, 0);
            EndEntry();
        }
        m_out.Text(0, "ENDTAB");
    }

    std::uint64_t LayerHandle(int index) const { return kFirstFreeHandle + index; }
    std::uint64_t LinetypeHandle(int index) const {
        return kFirstFreeHandle + m_layerNames.size() + index;
    }
    std::uint64_t StyleHandle(int index) const {
        return kFirstFreeHandle + m_layerNames.size() + m_linetypeNames.size() + index;
    }

    std::string LinetypeName(int index) const {
        if (index < 0 || index >= static_cast<int>(m_linetypeNames.size()))
            return "Continuous";
        return m_linetypeNames[index];
    }

    // DXF layers are flat: a layer is off or locked when it or a layer above it is, as the
    // document shows and edits it.
    bool Inherited(int index, bool (GK_Layer::*flag)() const, bool wanted) const {
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        for (int at = index, guard = 0; at >= 0 && guard <= layers.LayerCount(); ++guard) {
            if ((layers[at].*flag)() == wanted)
                return true;
            const GK_UUID& parent = layers[at].ParentId();
            at = parent.IsNil() ? -1 : layers.FindLayerFromId(parent);
        }
        return false;
    }

    void WriteLayers() {
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        BeginTable("LAYER", kLayerTable, layers.LayerCount() + (m_zeroIsOwn ? 0 : 1));
        if (!m_zeroIsOwn) {
            BeginEntry("LAYER", "AcDbLayerTableRecord", kLayerZero, kLayerTable, "0");
            m_out.Int(70, 0).Int(62, 7).Text(6, "Continuous").Int(370, -3);
            m_out.Handle(390, kPlotStyleNormal);
            EndEntry();
        }
        for (int i = 0; i < layers.LayerCount(); ++i) {
            const GK_Layer& layer = layers[i];
            const bool off = Inherited(i, &GK_Layer::IsVisible, false);
            const bool locked = Inherited(i, &GK_Layer::IsLocked, true);
            BeginEntry("LAYER", "AcDbLayerTableRecord", LayerHandle(i), kLayerTable,
                       m_layerNames[i]);
            const int index = DxfColorIndex(layer.Color());
            m_out.Int(70, locked ? 4 : 0).Int(62, off ? -index : index);
            m_out.Int(420, DxfTrueColor(layer.Color()));
            m_out.Text(6, LinetypeName(layer.LinetypeIndex()));
            m_out.Int(370, DxfLineweight(layer.PlotWeight()));
            m_out.Handle(390, kPlotStyleNormal);
            // A reference layer holds what was imported as a reference, which DXF has no
            // flag for: it says so in its extended data.
            if (layer.IsReference())
                m_out.Text(1001, kDxfAppName).Text(1000, "reference");
            EndEntry();
        }
        m_out.Text(0, "ENDTAB");
    }

    // A style per font the texts use, named after it; the font is named by its family, with
    // weight and slant in the extended data that CAD programs read for system fonts.
    void WriteStyles() {
        BeginTable("STYLE", kStyleTable, 1 + static_cast<int>(m_fonts.size()));
        BeginEntry("STYLE", "AcDbTextStyleTableRecord", kStandardStyle, kStyleTable, "Standard");
        m_out.Int(70, 0).Real(40, 0.0).Real(41, 1.0).Real(50, 0.0).Int(71, 0).Real(42, 2.5);
        m_out.Text(3, "txt").Text(4, "");
        EndEntry();
        for (std::size_t i = 0; i < m_fonts.size(); ++i) {
            const GK_Font& font = *m_fonts[i];
            const std::string family = DxfText(font.FamilyName().str());
            BeginEntry("STYLE", "AcDbTextStyleTableRecord", StyleHandle(static_cast<int>(i)),
                       kStyleTable, m_styleNames[i]);
            m_out.Int(70, 0).Real(40, 0.0).Real(41, 1.0).Real(50, 0.0).Int(71, 0).Real(42, 1.0);
            m_out.Text(3, family).Text(4, "");
            m_out.Text(1001, "ACAD").Text(1000, family);
            m_out.Int(1071, (font.IsItalic() ? 0x1000000 : 0) | (font.IsBold() ? 0x2000000 : 0));
            EndEntry();
        }
        m_out.Text(0, "ENDTAB");
    }

    void WriteBlocks() {
        DxfWriter& w = m_out;
        w.Text(0, "SECTION").Text(2, "BLOCKS");
        for (const auto& [record, begin, end, name] :
             {std::tuple(kModelRecord, kModelBlock, kModelBlockEnd, "*Model_Space"),
              {kPaperRecord, kPaperBlock, kPaperBlockEnd, "*Paper_Space"}}) {
            w.Text(0, "BLOCK").Handle(5, begin).Handle(330, record).Text(100, "AcDbEntity");
            w.Text(8, "0").Text(100, "AcDbBlockBegin").Text(2, name).Int(70, 0);
            w.Point(10, 0.0, 0.0, 0.0).Text(3, name).Text(1, "");
            w.Text(0, "ENDBLK").Handle(5, end).Handle(330, record).Text(100, "AcDbEntity");
            w.Text(8, "0").Text(100, "AcDbBlockEnd");
        }
        w.Text(0, "ENDSEC");
    }

    DxfEntityStyle StyleOf(const CVelmoObject& object) const {
        const CVelmoObjectAttributes& a = object.Attributes();
        DxfEntityStyle style;
        style.layer =
            a.m_layer_index >= 0 && a.m_layer_index < static_cast<int>(m_layerNames.size())
                ? m_layerNames[a.m_layer_index]
                : "0";
        if (a.m_color_source == GK_3dmObjectAttributes::color_from_object)
            style.color = a.m_color;
        if (a.m_linetype_source == GK_3dmObjectAttributes::linetype_from_object)
            style.linetype = LinetypeName(a.m_linetype_index);
        if (a.m_plot_weight_source == GK_3dmObjectAttributes::plot_weight_from_object)
            style.lineweight = DxfLineweight(a.m_plot_weight_mm);
        style.reference = object.IsReference();
        return style;
    }

    void WriteEntities() {
        m_out.Text(0, "SECTION").Text(2, "ENTITIES");
        DxfEntityContext ctx{m_out, kModelRecord, m_notes};
        std::uint64_t handle = m_firstEntity;
        for (int i = 0; i < m_doc.ObjectCount(); ++i) {
            const CVelmoObject& object = m_doc.Object(i);
            const DxfEntityStyle style = StyleOf(object);
            const std::uint64_t first = handle;
            if (object.ObjectKind() != CVelmoObject::curve_object)
                handle += HandleCount(object);
            switch (object.ObjectKind()) {
            case CVelmoObject::curve_object:
                if (const GK_Curve* curve = static_cast<const CVelmoCurveObject&>(object).Curve()) {
                    const DxfCurvePlan plan = PlanCurve(*curve);
                    handle += plan.EntityCount();
                    WriteCurveEntities(ctx, plan, style, first);
                }
                break;
            case CVelmoObject::hatch_object:
                if (const GK_Hatch* hatch = static_cast<const CVelmoHatch&>(object).Hatch()) {
                    const CVelmoHatchPatternTable& patterns = m_doc.HatchPatternTable();
                    const int p = hatch->PatternIndex();
                    WriteHatchEntity(ctx, *hatch,
                                     p >= 0 && p < patterns.HatchPatternCount() ? &patterns[p]
                                                                                : nullptr,
                                     style, first);
                }
                break;
            case CVelmoObject::text_object: {
                const auto& text = static_cast<const CVelmoTextObject&>(object);
                const int f = m_textStyleOf.at(&text.Style().Font());
                WriteTextEntities(ctx, text.Text(), m_styleNames[f], style, first);
                break;
            }
            case CVelmoObject::picture_object: {
                const auto& picture = static_cast<const CVelmoPictureFrameObject&>(object);
                ImageDef& def = m_images[m_imageOf.at(picture.Path().str())];
                if (WriteImageEntity(ctx, picture.Frame(), def.pixels, def.handle, style, first))
                    def.images.push_back(first);
                break;
            }
            }
        }
        m_out.Text(0, "ENDSEC");
    }

    void Dictionary(std::uint64_t handle, std::uint64_t owner,
                    const std::vector<std::pair<std::string, std::uint64_t>>& entries) {
        m_out.Text(0, "DICTIONARY").Handle(5, handle).Handle(330, owner);
        m_out.Text(100, "AcDbDictionary").Int(281, 1);
        for (const auto& [name, entry] : entries)
            m_out.Text(3, name).Handle(350, entry);
    }

    void Layout(std::uint64_t handle, const char* name, int order, std::uint64_t record) {
        DxfWriter& w = m_out;
        w.Text(0, "LAYOUT").Handle(5, handle).Handle(330, kLayoutDictionary);
        w.Text(100, "AcDbPlotSettings").Text(1, "").Text(2, "none_device").Text(4, "");
        w.Text(6, "").Real(40, 0.0).Real(41, 0.0).Real(42, 0.0).Real(43, 0.0);
        w.Real(44, 420.0).Real(45, 297.0).Real(46, 0.0).Real(47, 0.0).Real(48, 0.0);
        w.Real(49, 0.0).Real(140, 0.0).Real(141, 0.0).Real(142, 1.0).Real(143, 1.0);
        w.Int(70, order == 0 ? 1024 : 0).Int(72, 1).Int(73, 0).Int(74, 5).Text(7, "");
        w.Int(75, 16).Int(76, 0).Int(77, 2).Int(78, 300).Real(147, 1.0).Real(148, 0.0);
        w.Real(149, 0.0);
        w.Text(100, "AcDbLayout").Text(1, name).Int(70, 1).Int(71, order);
        w.Point2(10, 0.0, 0.0).Point2(11, 420.0, 297.0).Point(12, 0.0, 0.0, 0.0);
        w.Point(14, 1e20, 1e20, 1e20).Point(15, -1e20, -1e20, -1e20).Real(146, 0.0);
        w.Point(13, 0.0, 0.0, 0.0).Point(16, 1.0, 0.0, 0.0).Point(17, 0.0, 1.0, 0.0);
        w.Int(76, 1).Handle(330, record);
    }

    void WriteObjects() {
        DxfWriter& w = m_out;
        w.Text(0, "SECTION").Text(2, "OBJECTS");
        std::vector<std::pair<std::string, std::uint64_t>> root = {
            {"ACAD_GROUP", kGroupDictionary}};
        if (!m_images.empty()) {
            root.push_back({"ACAD_IMAGE_DICT", kImageDictionary});
            root.push_back({"ACAD_IMAGE_VARS", kImageVariables});
        }
        root.push_back({"ACAD_LAYOUT", kLayoutDictionary});
        root.push_back({"ACAD_PLOTSTYLENAME", kPlotStyleDictionary});
        Dictionary(kRootDictionary, 0, root);
        Dictionary(kGroupDictionary, kRootDictionary, {});
        Dictionary(kLayoutDictionary, kRootDictionary,
                   {{"Layout1", kPaperLayout}, {"Model", kModelLayout}});
        w.Text(0, "ACDBDICTIONARYWDFLT").Handle(5, kPlotStyleDictionary);
        w.Handle(330, kRootDictionary).Text(100, "AcDbDictionary").Int(281, 1);
        w.Text(3, "Normal").Handle(350, kPlotStyleNormal);
        w.Text(100, "AcDbDictionaryWithDefault").Handle(340, kPlotStyleNormal);
        w.Text(0, "ACDBPLACEHOLDER").Handle(5, kPlotStyleNormal).Handle(330, kPlotStyleDictionary);
        Layout(kModelLayout, "Model", 0, kModelRecord);
        Layout(kPaperLayout, "Layout1", 1, kPaperRecord);
        if (!m_images.empty())
            WriteImageObjects();
        w.Text(0, "ENDSEC");
    }

    void WriteImageObjects() {
        DxfWriter& w = m_out;
        std::vector<std::pair<std::string, std::uint64_t>> entries;
        for (const ImageDef& def : m_images)
            entries.push_back({def.key, def.handle});
        Dictionary(kImageDictionary, kRootDictionary, entries);
        w.Text(0, "RASTERVARIABLES").Handle(5, kImageVariables);
        w.Text(102, "{ACAD_REACTORS").Handle(330, kRootDictionary).Text(102, "}");
        w.Handle(330, kRootDictionary).Text(100, "AcDbRasterVariables");
        w.Int(90, 0).Int(70, 0).Int(71, 1).Int(72, 0);
        for (const ImageDef& def : m_images) {
            w.Text(0, "IMAGEDEF").Handle(5, def.handle).Text(102, "{ACAD_REACTORS");
            w.Handle(330, kImageDictionary);
            for (std::uint64_t image : def.images)
                w.Handle(330, image + 1);
            w.Text(102, "}").Handle(330, kImageDictionary).Text(100, "AcDbRasterImageDef");
            w.Int(90, 0).Text(1, DxfText(def.path));
            w.Point2(10, def.pixels.first, def.pixels.second).Point2(11, 1.0, 1.0);
            w.Int(280, 1).Int(281, 0);
            for (std::uint64_t image : def.images) {
                w.Text(0, "IMAGEDEF_REACTOR").Handle(5, image + 1).Handle(330, image);
                w.Text(100, "AcDbRasterImageDefReactor").Int(90, 2).Handle(330, image);
            }
        }
    }

    void Warn(std::vector<std::string>& warnings) const {
        const auto say = [&](int count, const std::string& what) {
            if (count > 0)
                warnings.push_back(std::to_string(count) + " " + what);
        };
        const DxfNotes& n = m_notes;
        if (m_unitless)
            warnings.push_back(kUnitsWarning);
        say(m_renamedLayers, "layer names changed to names DXF allows");
        say(m_renamedLinetypes, "linetype names changed to names DXF allows");
        say(m_shiftedLinetypes, "linetypes began with a gap, now moved to their end");
        say(n.splinePolylines, "polylines not parallel to the ground written as splines");
        say(n.splitTexts, "texts longer than " + std::to_string(kDxfTextPiece) +
                              " characters written in pieces placed by estimated width");
        say(n.clampedSlants, "texts slanted beyond 85 degrees written at 85 degrees");
        say(n.linePatterns, "hatches with a line pattern written as one family of lines");
        say(n.lostLoops, "hatch boundaries of a kind DXF cannot hold left out");
        say(n.emptyHatches, "hatches without a boundary DXF can hold left out");
        say(n.unknownCurves, "curves of a kind DXF cannot hold left out");
        say(n.notFinite, "objects with numbers that are not finite left out");
    }

    DxfWriter m_out;
    const CVelmoDoc& m_doc;
    std::vector<std::string> m_layerNames, m_linetypeNames, m_styleNames;
    std::vector<const GK_Font*> m_fonts;
    std::map<const GK_Font*, int> m_textStyleOf;
    std::vector<ImageDef> m_images;
    std::unordered_map<std::wstring, std::size_t> m_imageOf;
    GK_BoundingBox m_extents;
    std::uint64_t m_firstEntity = kFirstFreeHandle;
    std::uint64_t m_handleSeed = kFirstFreeHandle;
    bool m_zeroIsOwn = false;
    bool m_unitless = false;
    int m_renamedLayers = 0, m_renamedLinetypes = 0, m_shiftedLinetypes = 0;
    DxfNotes m_notes;
};

} // namespace

bool WriteDocumentDxf(std::ostream& out, const CVelmoDoc& doc, std::vector<std::string>& warnings) {
    return DxfDocumentWriter(out, doc).Write(warnings);
}
