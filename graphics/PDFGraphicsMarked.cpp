// Marked content and optional-content groups.
#include "graphics/PDFGraphicsState.h"

#include "pdf/token/PDFTokens.h"
#include "pdf/xref/PDFDocument.h"

void PDFGraphicsState::MarkPoint(const std::string& /*tag*/, PDFToken* properties) {
    if (properties)
        properties->Release();
}

void PDFGraphicsState::BeginMarkedContent(PDFDocument* document, const std::string& tag,
                                          PDFToken* properties) {
    const PDFTokenRef owned(properties);
    if (document) {
        // A file without groups tries again at every marked-content operator; one with
        // groups tells the sink once, at the first.
        if (document->optionalContentGroups.empty()) {
            document->LoadOptionalContent();
            if (!document->optionalContentGroups.empty())
                OptionalContentLoaded(document->optionalContentGroups);
        }
    }
    if (!properties || !document)
        return;
    if (!properties->IsType(kPdfKindName) || tag != "OC")
        return;
    // Whether the group is on is not asked here: hidden content still reaches the sink, on
    // its group's layer, and the layer does the hiding.
    const PDFToken* table = document->pageProperties;
    if (!table || !table->IsType(kPdfKindDict))
        return;
    PDFToken* entry =
        static_cast<const PDFParserTokens::PDFDict*>(table)->Find(properties->GetString());
    if (!entry)
        return;
    PDFToken* group = nullptr;
    if (document->ResolveToken(entry, &group) != kPdfOk || !group || !group->IsType(kPdfKindDict))
        return;
    // A membership dictionary has no /Name of its own and so names the empty group.
    const PDFToken* name = static_cast<const PDFParserTokens::PDFDict*>(group)->Find("Name");
    SetOptionalContentName(name ? name->GetString() : std::string());
}

void PDFGraphicsState::EndMarkedContent() {}

void PDFGraphicsState::SetOptionalContentName(const std::string& name) {
    optionalContentName = name;
}

void PDFGraphicsState::OptionalContentLoaded(
    const std::map<std::string, OptionalContentGroup>& /*groups*/) {}
