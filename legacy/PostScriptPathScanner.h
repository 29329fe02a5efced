#pragma once
// Vector paths out of PostScript-based Illustrator and EPS files, by lines: each path line
// ends in its operator, and a painting operator turns the gathered lines into curves.
#include "host/base/GK_Array.h"
#include "host/base/GK_String.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/GK_Color.h"
#include "host/geometry/GK_Curve.h"
#include "host/plugin/CVelmoPlugIn.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// The scanner's state, shared by the whole program and set afresh by each legacy read.
struct LegacyScannerState {
    bool referenceObjects = false;
    GK_Color layerColor;
    GK_wString layerName;
    bool layerNameSeen = false;
    // Borrowed: the plug-in that names reference layers; null names none.
    const CVelmoFileImportPlugIn* plugIn = nullptr;
};

LegacyScannerState& LegacyScanner();

// Starts a read: the reference flag of the read, the current layer's colour and name.
void ResetLegacyScanner(bool referenceObjects, GK_Color layerColor, const wchar_t* layerName,
                        const CVelmoFileImportPlugIn* plugIn);

using PathLines = std::vector<std::string>;

// Scans from the stream's current position; neither rewinds nor closes it. Returns 1 when
// the scan reached its end, 0 when no "%%EndSetup" came or a line could not be stored.
// Curves are the caller's, with their layer indices in the parallel array.
int ScanPostScriptPaths(std::FILE* file, GK_SimpleArray<GK_Curve*>& curves,
                        GK_SimpleArray<long>& layers, CVelmoDoc& doc);

// The steps of the scan, open for tests.
int ScanLine(GK_SimpleArray<GK_Curve*>& curves, GK_SimpleArray<long>& layers, PathLines& pathLines,
             const char* line, CVelmoDoc& doc);
// The operator of a line; a string holding one NUL byte when there is none.
std::string LastOperator(const char* line);
// 1 when the line is a path line to keep; takes in layer colours and names.
int HandleLayerOperator(const char* line, const std::string& op);
int BuildCurves(GK_SimpleArray<GK_Curve*>& curves, GK_SimpleArray<long>& layers,
                const PathLines& pathLines, const std::string& op, CVelmoDoc& doc);
// The layer for the next curve, made if need be; -1 when no name can be made.
long LayerForCurves(CVelmoDoc& doc);
