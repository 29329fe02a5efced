#include "legacy/PostScriptPathScanner.h"

#include "legacy/ClassicNumbers.h"
#include "legacy/LineReader.h"

#include "host/geometry/VelmoMergeCurves.h"

#include <cctype>
#include <cstring>
#include <new>
#include <strings.h>

LegacyScannerState& LegacyScanner() {
    static LegacyScannerState state;
    return state;
}

void ResetLegacyScanner(bool referenceObjects, GK_Color layerColor, const wchar_t* layerName,
                        const CVelmoFileImportPlugIn* plugIn) {
    LegacyScannerState& s = LegacyScanner();
    s.referenceObjects = referenceObjects;
    s.layerColor = layerColor;
    s.layerName = GK_wString(layerName);
    s.layerNameSeen = false;
    s.plugIn = plugIn;
}

namespace {

bool IsSpace(char c) {
    const auto u = static_cast<unsigned char>(c);
    return u < 0x80 && std::isspace(u);
}

bool EqualsNoCase(const std::string& a, const char* b) {
    return strcasecmp(a.c_str(), b) == 0;
}

// Deletes the curves of an array it owns.
void DeleteCurves(GK_SimpleArray<GK_Curve*>& array) {
    for (GK_Curve* c : array)
        delete c;
    array.Empty();
}

GK_NurbsCurve* MakeCubic(const double (&p)[4][2]) {
    auto* cubic = new GK_NurbsCurve(3, false, 4, 4);
    const double knots[] = {0, 0, 0, 1, 1, 1};
    for (int i = 0; i < 6; ++i)
        cubic->SetKnot(i, knots[i]);
    for (int i = 0; i < 4; ++i)
        cubic->SetCV(i, GK_3dPoint(p[i][0], p[i][1], 0.0));
    return cubic;
}

} // namespace

std::string LastOperator(const char* line) {
    const std::size_t n = std::strlen(line);
    if (n == 0)
        return std::string(1, '\0');
    if (n == 1)
        return std::string(1, line[0]);
    if (IsSpace(line[n - 2]))
        return std::string(1, line[n - 1]);
    if (line[n - 2] == 'L')
        return std::string(line + n - 2, 2); // "Lb", "Ln" and any "L?" word end
    std::size_t start = n;
    while (start > 0 && !IsSpace(line[start - 1]))
        --start;
    const std::string word(line + start, n - start);
    static const struct {
        const char* word;
        const char* op;
    } kSpelled[] = {
        {"moveto", "m"}, {"mo", "m"},     {"curveto", "c"}, {"cv", "c"},
        {"lineto", "l"}, {"ln", "l"},     {"li", "l"},      {"closepath", "f"},
        {"clp", "f"},    {"eofill", "f"}, {"ef", "f"},      {"stroke", "f"},
    };
    for (const auto& s : kSpelled)
        if (EqualsNoCase(word, s.word))
            return s.op;
    return std::string(1, '\0');
}

int HandleLayerOperator(const char* line, const std::string& op) {
    for (const char* pathOp : {"m", "l", "c", "v", "y"})
        if (EqualsNoCase(op, pathOp))
            return 1;
    LegacyScannerState& s = LegacyScanner();
    if (EqualsNoCase(op, "Lb")) {
        long values[10];
        const char* p = line;
        for (long& v : values) {
            char* end = nullptr;
            v = ClassicStrtol(p, &end);
            p = end;
        }
        s.layerColor = GK_Color(static_cast<int>(values[7]), static_cast<int>(values[8]),
                                static_cast<int>(values[9]));
        return 0;
    }
    if (EqualsNoCase(op, "Ln")) {
        const char* open = std::strchr(line, '(');
        if (!open)
            return 0;
        std::string name(open + 1);
        const std::size_t close = name.find(')');
        if (close != std::string::npos)
            name.resize(close);
        s.layerName = GK_wString(name.c_str());
        s.layerNameSeen = true;
        return 0;
    }
    return 0;
}

int ScanLine(GK_SimpleArray<GK_Curve*>& curves, GK_SimpleArray<long>& layers, PathLines& pathLines,
             const char* line, CVelmoDoc& doc) {
    const std::string op = LastOperator(line);
    if (HandleLayerOperator(line, op) == 1) {
        try {
            pathLines.emplace_back(line);
        } catch (const std::bad_alloc&) {
            return 0;
        }
        return 1;
    }
    bool paints = false;
    for (const char* paint : {"n", "f", "s", "b"})
        paints = paints || EqualsNoCase(op, paint);
    if (!paints)
        return 1; // unknown lines between path lines leave the path alone
    const int result = BuildCurves(curves, layers, pathLines, op, doc);
    pathLines.clear();
    return result;
}

int BuildCurves(GK_SimpleArray<GK_Curve*>& curves, GK_SimpleArray<long>& layers,
                const PathLines& pathLines, const std::string& op, CVelmoDoc& doc) {
    if (op == "n" || op == "N")
        return 1; // a clipping or invisible path
    if (pathLines.empty())
        return 1;

    double points[3][2] = {};
    double current[2] = {0.0, 0.0};
    GK_SimpleArray<GK_Curve*> segments;

    for (const std::string& text : pathLines) {
        const std::string lineOp = LastOperator(text.c_str());
        int pairs = 0;
        if (lineOp == "m" || lineOp == "l" || lineOp == "L")
            pairs = 1;
        else if (lineOp == "c" || lineOp == "C")
            pairs = 3;
        else if (lineOp == "v" || lineOp == "V" || lineOp == "y" || lineOp == "Y")
            pairs = 2;

        bool complete = true;
        const char* p = text.c_str();
        for (int i = 0; i < 2 * pairs && complete; ++i) {
            char* end = nullptr;
            const double v = ClassicStrtod(p, &end);
            if (end == p)
                complete = false; // points keeps what it got; the line is not acted on
            else
                points[i / 2][i % 2] = v;
            p = end;
        }
        if (!complete)
            continue;

        if (EqualsNoCase(lineOp, "m")) {
            current[0] = points[0][0];
            current[1] = points[0][1];
        } else if (EqualsNoCase(lineOp, "l")) {
            segments.Append(new GK_LineCurve(GK_3dPoint(current[0], current[1], 0.0),
                                             GK_3dPoint(points[0][0], points[0][1], 0.0)));
            current[0] = points[0][0];
            current[1] = points[0][1];
        } else if (EqualsNoCase(lineOp, "c")) {
            const double cv[4][2] = {{current[0], current[1]},
                                     {points[0][0], points[0][1]},
                                     {points[1][0], points[1][1]},
                                     {points[2][0], points[2][1]}};
            segments.Append(MakeCubic(cv));
            current[0] = points[2][0];
            current[1] = points[2][1];
        } else if (EqualsNoCase(lineOp, "v")) {
            const double cv[4][2] = {{current[0], current[1]},
                                     {current[0], current[1]},
                                     {points[0][0], points[0][1]},
                                     {points[1][0], points[1][1]}};
            segments.Append(MakeCubic(cv));
            current[0] = points[1][0];
            current[1] = points[1][1];
        } else if (EqualsNoCase(lineOp, "y")) {
            const double cv[4][2] = {{current[0], current[1]},
                                     {points[0][0], points[0][1]},
                                     {points[1][0], points[1][1]},
                                     {points[1][0], points[1][1]}};
            segments.Append(MakeCubic(cv));
            current[0] = points[1][0];
            current[1] = points[1][1];
        }
    }

    if (segments.IsEmpty())
        return 1;
    GK_SimpleArray<GK_Curve*> merged;
    GK_SimpleArray<int> indices;
    if (VelmoMergeCurves(segments, merged, doc.AbsoluteTolerance(), 0, &indices) == 1) {
        for (GK_Curve* c : merged) {
            curves.Append(c);
            layers.Append(LayerForCurves(doc));
        }
        merged.Empty();
        DeleteCurves(segments);
    } else {
        for (GK_Curve* c : segments) {
            curves.Append(c);
            layers.Append(LayerForCurves(doc));
        }
        segments.Empty();
        DeleteCurves(merged);
    }
    return 1;
}

int ScanPostScriptPaths(std::FILE* file, GK_SimpleArray<GK_Curve*>& curves,
                        GK_SimpleArray<long>& layers, CVelmoDoc& doc) {
    char line[kScannerLineBuffer];
    for (;;) {
        if (!ReadScannerLine(file, line))
            return 0;
        if (strncasecmp(line, "%%EndSetup", 10) == 0)
            break;
    }
    PathLines pathLines; // lines left without a painting operator are dropped at the end
    while (ReadScannerLine(file, line)) {
        if (strncasecmp(line, "%%PageTrailer", 13) == 0)
            break;
        if (line[0] == '%')
            continue;
        if (ScanLine(curves, layers, pathLines, line, doc) == 0)
            return 0;
    }
    return 1;
}
