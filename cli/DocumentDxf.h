#pragma once
// The document after an import as an ASCII DXF drawing of AutoCAD 2013 (AC1027), for CAD
// programs: layers, linetypes and a text style per font in the tables, and each object in
// document order as the entity that holds it exactly: LINE, LWPOLYLINE, SPLINE, HATCH, TEXT,
// IMAGE. Text is UTF-8, as the version asks.
//
// It is written while it is produced, object by object; what it keeps in memory is the tables'
// names and one entry per image file.
#include "host/doc/CVelmoDoc.h"

#include <ostream>
#include <string>
#include <vector>

// Writes the drawing to `out`; true when all of it got there. `warnings` receives one line for
// each kind of object that DXF could not hold as it is and was written in the nearest form (or,
// when no form holds it, left out), with their number.
[[nodiscard]] bool WriteDocumentDxf(std::ostream& out, const CVelmoDoc& doc,
                                    std::vector<std::string>& warnings);
