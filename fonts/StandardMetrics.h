#pragma once
// Applying the table of a standard font to a font record.
#include "fonts/FontRecord.h"
#include "fonts/StandardFontTables.h"

#include <string_view>

// The record whose name equals `name` exactly, or null. There is no alias table: a subset
// prefix, a style suffix or another family's name finds nothing.
const StandardFontRecord* FindStandardFont(std::string_view name);

// For a standard font: its cap height (when it has one), its largest width and its widths by
// key, a later pair of a doubled key overwriting the earlier one. Any other name changes
// nothing. missingWidth and averageWidth are left alone.
void ApplyStandardMetrics(std::string_view name, FontRecord& font);
