// Optional content groups: the default configuration's starting states and the /Order tree,
// in one table keyed by group name. Nothing here reports failure; a broken entry is passed
// over or counts as a group without a name.
#include "pdf/parser/PDFParser.h"
#include "pdf/xref/PDFDocument.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using Array = PDFParserTokens::PDFArray;
using Dict = PDFParserTokens::PDFDict;

// /Order nests a level per layer of the layer tree; deeper than this is taken for hostile.
constexpr std::size_t kMaxOrderDepth = 256;
// Arrays may be shared through references, so a small file can describe an /Order whose
// reading doubles at each level. Real files have a few thousand entries at most.
constexpr std::size_t kOrderItemBudget = 1000000;

// The token, a reference loaded; null when there is none or the load fails.
PDFToken* Resolved(PDFDocument& doc, PDFToken* token) {
    PDFToken* value = nullptr;
    (void)doc.ResolveToken(token, &value);
    return value;
}

bool IsDict(const PDFToken* token) {
    return token && token->IsType(kPdfKindDict);
}

// /Name of a group dictionary as it stands (not resolved); empty if there is none.
std::string GroupName(const PDFToken* group) {
    const PDFToken* name = static_cast<const Dict*>(group)->Find("Name");
    return name ? name->GetString() : std::string();
}

// The array at `path` from the catalog, resolved once more; null if there is none.
Array* ArrayAt(PDFDocument& doc, PDFToken* catalog, const char* path) {
    PDFToken* value = nullptr;
    if (doc.LookupPath(catalog, path, &value) != kPdfOk)
        return nullptr;
    value = Resolved(doc, value);
    return value && value->IsType(kPdfKindArray) ? static_cast<Array*>(value) : nullptr;
}

} // namespace

void PDFDocument::LoadOptionalContent() {
    PDFToken* catalog = nullptr;
    if (ResolveRoot(&catalog) != kPdfOk)
        return;

    PDFToken* baseState = nullptr;
    const bool baseOff = LookupPath(catalog, "OCProperties/D/BaseState", &baseState) == kPdfOk &&
                         baseState->GetString() == "OFF";

    if (const Array* groups = ArrayAt(*this, catalog, "OCProperties/OCGs")) {
        for (PDFToken* item : groups->items) {
            const PDFToken* group = Resolved(*this, item);
            OptionalContentGroup& entry =
                optionalContentGroups[IsDict(group) ? GroupName(group) : std::string()];
            entry.parentName.clear();
            entry.visible = !baseOff;
        }
    }

    // Groups listed here need not be in /OCGs: they get an entry, top-level.
    const auto setStates = [&](const char* path, bool visible) {
        const Array* list = ArrayAt(*this, catalog, path);
        if (!list)
            return;
        for (PDFToken* item : list->items) {
            const PDFToken* group = item ? Resolved(*this, item) : nullptr;
            if (IsDict(group))
                optionalContentGroups[GroupName(group)].visible = visible;
        }
    };
    setStates("OCProperties/D/OFF", false);
    setStates("OCProperties/D/ON", true); // after OFF: a group listed in both starts visible

    if (Array* order = ArrayAt(*this, catalog, "OCProperties/D/Order")) {
        std::vector<PDFToken*> path;
        std::size_t budget = kOrderItemBudget;
        ReadOrder(std::string(), order, path, budget);
    }
}

void PDFDocument::ReadOrder(const std::string& parentName, PDFToken* array,
                            std::vector<PDFToken*>& path, std::size_t& budget) {
    path.push_back(array);
    // A nested array holds the children of the group standing before it in its own array;
    // with none before it they are top-level.
    std::string lastName;
    for (PDFToken* item : static_cast<const Array*>(array)->items) {
        if (budget == 0)
            break;
        --budget;
        PDFToken* value = item ? Resolved(*this, item) : nullptr;
        if (!value)
            continue;
        if (value->IsType(kPdfKindArray)) {
            // An array that holds itself, through references, would be read forever: it is
            // passed over like a label, as is anything nested beyond the depth bound.
            if (path.size() < kMaxOrderDepth &&
                std::find(path.begin(), path.end(), value) == path.end())
                ReadOrder(lastName, value, path, budget);
            continue;
        }
        if (!IsDict(value))
            continue; // labels and anything else that is no group
        lastName = GroupName(value);
        // A group named at two places takes the parent of the last one.
        optionalContentGroups[lastName].parentName = parentName;
    }
    path.pop_back();
}
