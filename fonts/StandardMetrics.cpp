#include "fonts/StandardMetrics.h"

const StandardFontRecord* FindStandardFont(std::string_view name) {
    for (const StandardFontRecord& record : kStandardFontTable)
        if (name == record.name)
            return &record;
    return nullptr;
}

void ApplyStandardMetrics(std::string_view name, FontRecord& font) {
    const StandardFontRecord* record = FindStandardFont(name);
    if (!record)
        return;
    if (record->capHeight != 0)
        font.fontHeightScale = record->capHeight / 1000.0;
    font.largestWidth = record->largestWidth;
    // Sorted by width within a key, so of a key that is both a code and a Unicode value the
    // larger width stays.
    for (std::int32_t i = 0; i < record->pairCount; ++i)
        font.widths[record->pairs[i].key] = record->pairs[i].width;
}
