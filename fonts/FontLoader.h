#pragma once
// Reading one font resource into a FontRecord: its name, its code translation and its
// metrics. Font programs are never read, /Subtype is not looked at (a Type0 font is known by
// its /DescendantFonts alone), and nothing is reported: whatever cannot be read leaves the
// fields at their start values.
#include "fonts/FontRecord.h"

#include <string>

class PDFDocument;
class PDFToken;

// Resets `font` (all but missingWidth) and fills it from entry `name` of the Font resource
// dictionary `fontDict`. Both `document` and `fontDict` are borrowed and may be null.
void LoadFont(PDFDocument* document, PDFToken* fontDict, const std::string& name, FontRecord& font);

// One font descriptor: /Flags (only the italic bit), /Descent, /CapHeight with /Ascent,
// /FontBBox and, when `withMissingWidth`, /MissingWidth. `descriptor` is a borrowed PDFDict.
void ReadDescriptor(PDFDocument* document, PDFToken* descriptor, FontRecord& font,
                    bool withMissingWidth);

// A CIDFont's /W array: "c [w1 w2 ...]" gives codes c, c+1, ... their widths, and the range
// form "first last w" gives the width to `first` alone; the first malformed entry ends it.
// `widthArray` is a borrowed PDFArray.
void ReadCidWidths(PDFDocument* document, PDFToken* widthArray, FontRecord& font);
