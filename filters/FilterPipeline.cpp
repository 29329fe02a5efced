#include "filters/FilterPipeline.h"

#include "filters/CcittFax.h"
#include "filters/DecodeLimit.h"
#include "filters/Filters.h"

#include <cstring>

namespace {

using PDFDict = PDFParserTokens::PDFDict;
using PDFArray = PDFParserTokens::PDFArray;

struct NamedFilter {
    const char* name;
    FilterFunction function;
};

// Looked up in this order; names must match exactly.
const NamedFilter kFilters[] = {
    {"ASCIIHexEncode", ASCIIHexEncode},
    {"ASCIIHexDecode", ASCIIHexDecode},
    {"ASCII85Encode", ASCII85Encode},
    {"ASCII85Decode", ASCII85Decode},
    {"FlateEncode", FlateEncode},
    {"FlateDecode", FlateDecode},
    {"RunLengthDecode", RunLengthDecode},
    {"CCITTFaxDecode", CCITTFaxDecode},
    {"ASCIIBinaryDecode", ASCIIBinaryDecode},
    {"ASCIIBinaryEncode", ASCIIBinaryEncode},
    {"ASCIIBWEncode", ASCIIBWEncode},
};

// The entries of every dictionary of the array in one new dictionary, later keys taking the
// place of earlier ones. One set of parameters then serves every filter of the chain.
PDFToken* MergeParameters(const PDFArray& array) {
    auto* merged = new PDFDict();
    for (PDFToken* item : array.items) {
        if (!item || !item->IsType(kPdfKindDict))
            continue;
        for (const auto& [key, value] : static_cast<PDFDict*>(item)->entries) {
            if (!value)
                continue;
            PDFToken*& slot = (*merged)[key];
            if (slot)
                slot->Release();
            value->AddRef();
            slot = value;
        }
    }
    return merged;
}

// A JBIG2 stream decodes to the end-of-file segment of a fixed JBIG2 file: there is no JBIG2
// decoder here, and the fixed bytes keep such images from passing for real data.
PDFStatus JBIG2Decode(std::string& output) {
    return ASCIIHexDecode("00000004330100000000", output, nullptr);
}

} // namespace

FilterFunction FindFilter(const std::string& name) {
    for (const NamedFilter& f : kFilters)
        if (name == f.name)
            return f.function;
    return nullptr;
}

PDFStatus ApplyFilter(const std::string& name, PDFToken* parms, const std::string& input,
                      std::string& output) {
    if (FilterFunction f = FindFilter(name)) {
        const PDFStatus status = f(input, output, parms);
        // Filters that can multiply their input watch the bound as they go; this catches
        // the rest, which at most keep the size they were given.
        const DecodeLimit limit = CurrentDecodeLimit();
        if (status == kPdfOk && output.size() > limit.bytes)
            return limit.status;
        return status;
    }
    if (name == "DCTDecode") {
        // Tagged, not decoded: the image output writes what follows the tag to a JPEG file.
        output.assign("JPEG:");
        output.append(input);
        return kPdfOk;
    }
    if (name == "JBIG2Decode")
        return JBIG2Decode(output);
    return kPdfUnknownFilter;
}

namespace {
PDFStatus DecodeStreamData(const PDFParserTokens::PDFStream& stream, std::string& out);
} // namespace

PDFStatus DecodeStream(const PDFParserTokens::PDFStream& stream, std::string& out) {
    const PDFStatus status = DecodeStreamData(stream, out);
    // What was decoded counts against the read's budget, failed streams included.
    if (!ChargeDecoded(out.size()) && status == kPdfOk)
        return kPdfDecodeBudgetExceeded;
    return status;
}

namespace {

PDFStatus DecodeStreamData(const PDFParserTokens::PDFStream& stream, std::string& out) {
    out = stream.data;
    if (!stream.dict || !stream.dict->IsType(kPdfKindDict))
        return kPdfOk;
    const auto& dict = *static_cast<const PDFDict*>(stream.dict);
    PDFToken* filter = dict.Find("Filter");
    if (!filter)
        return kPdfOk;

    // Nothing here is resolved: an indirect /Filter names no filter, an indirect
    // /DecodeParms counts as absent.
    PDFTokenRef merged;
    PDFToken* parms = dict.Find("DecodeParms");
    if (parms && parms->IsType(kPdfKindArray)) {
        merged.Reset(MergeParameters(*static_cast<PDFArray*>(parms)));
        parms = merged.Get();
    } else if (parms && !parms->IsType(kPdfKindDict)) {
        parms = nullptr;
    }

    if (!filter->IsType(kPdfKindArray)) {
        const PDFStatus status = ApplyFilter(filter->GetString(), parms, stream.data, out);
        if (status != kPdfOk)
            return status;
    } else {
        bool first = true;
        for (PDFToken* item : static_cast<PDFArray*>(filter)->items) {
            const std::string name = item ? item->GetString() : std::string();
            PDFStatus status;
            if (first) {
                status = ApplyFilter(name, parms, stream.data, out);
            } else {
                std::string input = std::move(out);
                out.clear();
                status = ApplyFilter(name, parms, input, out);
                // A name no filter answers leaves the data as the stage before left them.
                if (status == kPdfUnknownFilter)
                    out = std::move(input);
            }
            first = false;
            if (status != kPdfOk)
                return status;
        }
    }
    if (!parms)
        return kPdfOk;
    return ApplyPredictor(parms, out);
}

} // namespace
