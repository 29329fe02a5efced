// Catalog access and the page tree: lookups by key path, the page count and the search for
// the n-th page. The tree is trusted as a counted tree; nothing is inherited from parents.
#include "pdf/parser/PDFParser.h"
#include "pdf/xref/PDFDocument.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace {

using Array = PDFParserTokens::PDFArray;
using Dict = PDFParserTokens::PDFDict;

// Real page trees are a handful of levels deep; anything deeper is taken for hostile.
constexpr std::size_t kMaxTreeDepth = 256;

// The counter is a caller's 32-bit number; hostile /Count values must not overflow it.
std::int32_t Advance(std::int32_t counter, std::int64_t by) {
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(counter + by, std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max()));
}

// A Pages node whose kids are being searched, with the counter it was opened at.
struct OpenNode {
    const PDFToken* node;
    std::int32_t counter;
};

PDFStatus FindPageFrom(PDFDocument& doc, PDFToken* node, std::int32_t target, std::int32_t* counter,
                       PDFToken** page, std::vector<OpenNode>& path) {
    if (!node)
        return kPdfNullReference;
    if (node->IsType(kPdfKindRef)) {
        const PDFStatus status = doc.ResolveToken(node, &node);
        if (status != kPdfOk)
            return status;
    }
    // 10029 for a node that is no dictionary, whatever its text says.
    if (!node || !node->IsType(kPdfKindDict))
        return kPdfExpectedArray;
    const auto* dict = static_cast<const Dict*>(node);
    const PDFToken* type = dict->Find("Type");
    if (!type)
        return kPdfNoTypeItem;
    const std::string typeName = type->GetString();
    if (typeName == "Page") {
        if (*counter == target) {
            *page = node;
            return kPdfOk;
        }
        *counter = Advance(*counter, 1);
        return kPdfContinue;
    }
    if (typeName != "Pages")
        return kPdfUnknownType;

    PDFToken* count = dict->Find("Count");
    if (count && count->IsType(kPdfKindRef))
        (void)doc.ResolveToken(count, &count); // a failed load leaves null: no count
    if (!count)
        return kPdfNoCountItem;
    const std::int32_t n = count->GetInteger(0);
    if (std::int64_t{*counter} + n <= target) {
        *counter = Advance(*counter, n); // the subtree is passed unopened
        return kPdfContinue;
    }
    if (*counter > target)
        return kPdfPageNotFound;

    // The walk below a node depends on nothing but the node and the counter. Meeting the
    // same pair again inside itself means the tree holds itself and the walk would repeat
    // forever; a tree that holds itself but passes pages on the way round changes the
    // counter and goes on as any other tree, up to the depth bound.
    for (const OpenNode& open : path)
        if (open.node == node && open.counter == *counter)
            return kPdfErrorLoadingObject;
    if (path.size() >= kMaxTreeDepth)
        return kPdfErrorLoadingObject;

    // /Kids must be a direct array: an indirect one is not followed.
    PDFToken* kids = dict->Find("Kids");
    if (!kids || !kids->IsType(kPdfKindArray))
        return kPdfNoKidsItem;
    path.push_back({node, *counter});
    PDFStatus result = kPdfPageNotFound;
    for (PDFToken* kid : static_cast<const Array*>(kids)->items) {
        const PDFStatus status = FindPageFrom(doc, kid, target, counter, page, path);
        if (status != kPdfContinue) {
            result = status;
            break;
        }
    }
    path.pop_back();
    return result;
}

} // namespace

PDFStatus PDFDocument::ResolveToken(PDFToken* token, PDFToken** out) {
    *out = nullptr;
    if (!token)
        return kPdfNullReference;
    if (!token->IsType(kPdfKindRef)) {
        *out = token;
        return kPdfOk;
    }
    const auto* ref = static_cast<const PDFParserTokens::PDFRef*>(token);
    return LoadObject(ref->objectNumber, ref->generation, out);
}

PDFStatus PDFDocument::ResolveRoot(PDFToken** out) {
    return ResolveToken(root, out);
}

PDFStatus PDFDocument::LookupPath(PDFToken* start, const char* path, PDFToken** out) {
    *out = nullptr;
    PDFToken* current = start;
    const std::string keys = path ? path : "";
    std::size_t from = 0;
    for (;;) {
        const std::size_t slash = keys.find('/', from);
        const std::string key =
            keys.substr(from, slash == std::string::npos ? std::string::npos : slash - from);
        if (!current)
            return kPdfNullReference;
        if (current->IsType(kPdfKindRef)) {
            const PDFStatus status = ResolveToken(current, &current);
            if (status != kPdfOk)
                return status;
            if (!current)
                return -1;
        }
        if (current->IsType(kPdfKindDict)) {
            current = static_cast<const Dict*>(current)->Find(key);
        } else if (current->IsType(kPdfKindArray)) {
            // The index is read as atoi reads it. One outside the array is taken like a
            // missing key (null, so 10028 at the end) rather than read past the items;
            // strtol saturates where atoi would overflow, which lands outside as well.
            const auto* array = static_cast<const Array*>(current);
            const long index = std::strtol(key.c_str(), nullptr, 10);
            current = index >= 0 && index < array->Size()
                          ? array->items[static_cast<std::size_t>(index)]
                          : nullptr;
        } else {
            return -1;
        }
        // A key whose value is null is the same as a missing one.
        if (current && current->IsType(kPdfKindNull))
            current = nullptr;
        if (slash == std::string::npos)
            break;
        from = slash + 1;
    }
    if (!current)
        return kPdfNullReference;
    if (current->IsType(kPdfKindRef))
        return ResolveToken(current, out);
    *out = current;
    return kPdfOk;
}

PDFStatus PDFDocument::PageCount(std::int32_t* count) {
    PDFToken* pages = nullptr;
    const PDFStatus status = LookupPath(root, "Pages", &pages);
    if (status == kPdfBadReference) {
        // A broken /Pages reference makes a one-page document whose reading fails later.
        *count = 1;
        return kPdfOk;
    }
    if (status != kPdfOk)
        return status;
    if (!pages->IsType(kPdfKindDict))
        return kPdfExpectedDictionary;
    const auto* dict = static_cast<const Dict*>(pages);
    const PDFToken* type = dict->Find("Type");
    if (!type)
        return kPdfNoTypeItem;
    if (type->GetString() != "Pages") {
        *count = 1;
        return kPdfOk;
    }
    PDFToken* value = dict->Find("Count");
    if (value && value->IsType(kPdfKindRef))
        (void)ResolveToken(value, &value); // a failed load leaves null: no count
    if (!value)
        return kPdfNoCountItem;
    *count = value->GetInteger(1);
    return kPdfOk;
}

PDFStatus PDFDocument::FindPage(PDFToken* node, std::int32_t target, std::int32_t* counter,
                                PDFToken** page) {
    *page = nullptr;
    std::vector<OpenNode> path;
    return FindPageFrom(*this, node, target, counter, page, path);
}

PDFStatus PDFDocument::LoadPageProperties(std::int32_t pageNumber) {
    PDFToken* pages = nullptr;
    PDFStatus status = LookupPath(root, "Pages", &pages);
    if (status != kPdfOk)
        return status;
    std::int32_t counter = 0;
    PDFToken* page = nullptr;
    status = FindPage(pages, pageNumber, &counter, &page);
    if (status != kPdfOk)
        return status;
    // A page without /Resources fails here and keeps the previous page's properties.
    PDFToken* resources = nullptr;
    status = LookupPath(page, "Resources", &resources);
    if (status != kPdfOk)
        return status;

    if (pageProperties)
        pageProperties->Release();
    pageProperties = nullptr;
    if (ResolveToken(resources, &resources) != kPdfOk || !resources->IsType(kPdfKindDict))
        return kPdfOk;
    PDFToken* properties = nullptr;
    if (ResolveToken(static_cast<const Dict*>(resources)->Find("Properties"), &properties) !=
            kPdfOk ||
        !properties->IsType(kPdfKindDict))
        return kPdfOk;
    properties->AddRef();
    pageProperties = properties;
    return kPdfOk;
}
