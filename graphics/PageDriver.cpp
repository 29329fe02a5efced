// The page walk: selection, per-page placement and rotation, content streams and then the
// normal appearances of annotations, all through one interpreter per page.
#include "graphics/PageDriver.h"

#include "filters/DecodeLimit.h"
#include "filters/FilterPipeline.h"
#include "graphics/PDFGraphics.h"
#include "pdf/input/MemoryInput.h"
#include "pdf/input/infile_streambuf.h"
#include "pdf/xref/PDFDocument.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace {

using Array = PDFParserTokens::PDFArray;
using Dict = PDFParserTokens::PDFDict;
using Ref = PDFParserTokens::PDFRef;
using Stream = PDFParserTokens::PDFStream;

// Sine of degrees, folded so that the axes give exactly 0 and ±1: a page turned by a
// multiple of 90 must not pick up a 1e-16 shear.
double DegreeSine(double angle) {
    angle = std::fmod(angle, 360.0);
    if (angle < 0.0)
        angle += 360.0;
    if (angle > 180.0)
        return -DegreeSine(angle - 180.0);
    if (angle > 90.0)
        return DegreeSine(180.0 - angle);
    return std::sin(std::atan2(1.0, 1.0) * angle / 45.0);
}

bool IsNull(const PDFToken* token) {
    return !token || token->IsType(kPdfKindNull);
}

// Loads a reference; anything else is its own value.
PDFStatus Load(PDFDocument& doc, PDFToken* token, PDFToken** out) {
    *out = token;
    if (!token || !token->IsType(kPdfKindRef))
        return kPdfOk;
    const auto* ref = static_cast<const Ref*>(token);
    return doc.LoadObject(ref->objectNumber, ref->generation, out);
}

PDFStatus FindPageToken(PDFDocument& doc, std::int32_t pageNumber, PDFToken** page) {
    PDFToken* pages = nullptr;
    const PDFStatus status = doc.LookupPath(doc.root, "Pages", &pages);
    if (status != kPdfOk)
        return status;
    std::int32_t counter = 0;
    return doc.FindPage(pages, pageNumber, &counter, page);
}

// Four numbers of a direct array of exactly four items.
bool ReadFour(const PDFToken* token, double (&out)[4]) {
    if (!token || !token->IsType(kPdfKindArray))
        return false;
    const auto& items = static_cast<const Array*>(token)->items;
    if (items.size() != 4)
        return false;
    for (std::size_t i = 0; i < 4; ++i)
        out[i] = items[i]->GetFloat(0.0);
    return true;
}

struct Placement {
    double angle = 0.0;
    double size = 0.0;
    double e = 0.0;
    double f = 0.0;
};

// Rotation and size come from the page object alone: attributes are not inherited from the
// page tree, so a box written only on a parent leaves the page without a size.
Placement PlacePage(PDFDocument& doc, PDFToken* page, std::int32_t pageOrdinal,
                    const PendingPageBox& pendingBox) {
    Placement p;
    if (!page || !page->IsType(kPdfKindDict))
        return p;
    const auto* dict = static_cast<const Dict*>(page);
    if (const PDFToken* rotate = dict->Find("Rotate")) {
        double a = -rotate->GetFloat(0.0);
        // Adding 360 while negative, done in one step so a hostile value cannot spin.
        if (a < 0.0) {
            a = std::fmod(a, 360.0);
            if (a < 0.0)
                a += 360.0;
        }
        p.angle = a + 0.0; // no negative zero in the matrix
    }
    PDFToken* box = dict->Find("MediaBox");
    // With no /MediaBox at all the second page takes its size from what the sink has
    // gathered so far, when the sink can say (the output sink can; other states leave 0).
    if (!box) {
        if (pageOrdinal == 1 && pendingBox)
            pendingBox(p.size, p.e, p.f);
        return p;
    }
    PDFToken* resolved = nullptr;
    if (!box || doc.ResolveToken(box, &resolved) != kPdfOk || !resolved ||
        !resolved->IsType(kPdfKindArray))
        return p;
    const auto& items = static_cast<const Array*>(resolved)->items;
    double c[4] = {0.0, 0.0, 0.0, 0.0};
    for (std::size_t i = 0; i < 4 && i < items.size(); ++i)
        c[i] = items[i]->GetFloat(0.0);
    // Parity by floor rather than an integer cast, which a huge angle would overflow.
    const double quarter = std::floor((p.angle + 45.0) / 90.0);
    if (std::fmod(quarter, 2.0) == 0.0) {
        // The centre with its coordinates exchanged: what the rotation turns about.
        p.size = c[3] - c[1];
        p.e = (c[1] + c[3]) / 2.0;
        p.f = (c[0] + c[2]) / 2.0;
    } else {
        p.size = c[2] - c[0];
        p.e = (c[0] + c[2]) / 2.0;
        p.f = (c[1] + c[3]) / 2.0;
    }
    return p;
}

// Runs `bytes` through the interpreter and detaches the stream before the bytes go.
PDFStatus Interpret(PDFGraphics& graphics, const std::string& bytes) {
    std::unique_ptr<std::istream> input = MakeMemoryInput(bytes.data(), bytes.size());
    // A stream boundary is a token boundary: nothing read ahead carries over.
    graphics.hasPushback = false;
    graphics.SetStream(input.get(), false);
    const PDFStatus status = graphics.ParseUntil("");
    graphics.SetStream(nullptr, false);
    return status;
}

PDFStatus DrawAnnotations(PDFDocument& doc, PDFGraphics& graphics, PDFGraphicsState& sink,
                          PDFToken* page) {
    PDFToken* annots = nullptr;
    if (doc.LookupPath(page, "Annots", &annots) != kPdfOk || !annots ||
        !annots->IsType(kPdfKindArray))
        return kPdfOk;
    // Not reset per annotation: one without a usable /BBox reuses the previous placement.
    std::string prefix = "q ";
    for (PDFToken* item : static_cast<const Array*>(annots)->items) {
        if (IsNull(item))
            return kPdfNullReference;
        PDFToken* annot = nullptr;
        const PDFStatus loaded = Load(doc, item, &annot);
        if (loaded != kPdfOk)
            return loaded;
        if (!annot || !annot->IsType(kPdfKindDict))
            continue;
        const auto* dict = static_cast<const Dict*>(annot);
        double r[4] = {0.0, 0.0, 0.0, 0.0};
        if (!ReadFour(dict->Find("Rect"), r))
            r[0] = r[1] = r[2] = r[3] = 0.0;
        const PDFToken* ap = dict->Find("AP");
        if (!ap || !ap->IsType(kPdfKindDict))
            continue;
        PDFToken* normal = static_cast<const Dict*>(ap)->Find("N");
        if (!normal)
            continue;
        (void)Load(doc, normal, &normal); // a failed load leaves no stream: skipped below
        if (!normal || !normal->IsType(kPdfKindStream))
            continue;
        const auto* stream = static_cast<const Stream*>(normal);
        const auto* streamDict = static_cast<const Dict*>(stream->dict);
        PDFToken* kept = graphics.SwapResources(streamDict->Find("Resources"));
        double b[4] = {0.0, 0.0, 0.0, 0.0};
        if (ReadFour(streamDict->Find("BBox"), b) && r[0] != r[2]) {
            char text[256];
            std::snprintf(text, sizeof text, "q %g %g %g %g %g %g cm ",
                          (r[2] - r[0]) / (b[2] - b[0]), 0.0, 0.0, (r[3] - r[1]) / (b[3] - b[1]),
                          ((r[0] + r[2]) - (b[0] + b[2])) / 2.0,
                          ((r[1] + r[3]) - (b[1] + b[3])) / 2.0);
            prefix = text;
        }
        std::string decoded;
        const PDFStatus status = DecodeStream(*stream, decoded);
        if (status != kPdfOk)
            return status;
        sink.SaveState();
        // A broken appearance costs only itself, unless its data contradict their own
        // dictionary: that ends the whole read, as it would in page content.
        (void)Interpret(graphics, prefix + decoded + " Q");
        if (graphics.readFailure != kPdfOk)
            return graphics.readFailure;
        graphics.SwapResources(kept);
        sink.RestoreState();
    }
    return kPdfOk;
}

// `ended` is set when a content stream stops short of its end with 0: the read ends there
// without an error.
PDFStatus ReadPage(PDFDocument& doc, PDFGraphicsState& sink, std::int32_t pageNumber,
                   std::int32_t pageOrdinal, double& pageCursor, bool& ended,
                   const PendingPageBox& pendingBox, const InterpreterFactory& makeInterpreter,
                   FontCache& fonts) {
    PDFToken* page = nullptr;
    PDFStatus status = FindPageToken(doc, pageNumber, &page);
    if (status != kPdfOk)
        return status;

    const Placement place = PlacePage(doc, page, pageOrdinal, pendingBox);
    const double half = place.size / 2.0;
    if (pageOrdinal != 0)
        pageCursor -= half;
    const double a = place.angle;
    sink.SetMatrix(1, 0, 0, 1, 0, 0);
    sink.ConcatMatrix(1, 0, 0, 1, 0, pageCursor);
    sink.ConcatMatrix(1, 0, 0, 1, place.e, place.f);
    sink.ConcatMatrix(DegreeSine(a + 90.0), DegreeSine(a), DegreeSine(a + 180.0),
                      DegreeSine(a + 90.0), 0, 0);
    sink.ConcatMatrix(1, 0, 0, 1, -place.e, -place.f);
    pageCursor -= half;

    status = FindPageToken(doc, pageNumber, &page);
    if (status != kPdfOk)
        return status;
    // A page without /Contents, even a blank one, ends the read.
    PDFToken* contents = nullptr;
    status = doc.LookupPath(page, "Contents", &contents);
    if (status != kPdfOk)
        return status;
    (void)doc.LoadPageProperties(pageNumber);

    std::vector<const Stream*> streams;
    if (contents->IsType(kPdfKindArray)) {
        for (PDFToken* item : static_cast<const Array*>(contents)->items) {
            if (IsNull(item))
                return kPdfNullReference;
            PDFToken* part = nullptr;
            status = Load(doc, item, &part);
            if (status != kPdfOk)
                return status;
            if (part && part->IsType(kPdfKindStream))
                streams.push_back(static_cast<const Stream*>(part));
        }
    } else if (contents->IsType(kPdfKindStream)) {
        streams.push_back(static_cast<const Stream*>(contents));
    }

    std::unique_ptr<PDFGraphics> interpreter =
        makeInterpreter ? makeInterpreter(&doc, &sink, page)
                        : std::make_unique<PDFGraphics>(&doc, &sink, page);
    PDFGraphics& graphics = *interpreter;
    graphics.fontCache = &fonts;
    for (const Stream* stream : streams) {
        std::string decoded;
        status = DecodeStream(*stream, decoded);
        if (status != kPdfOk)
            return status;
        status = Interpret(graphics, decoded);
        // Only running off the end is normal; anything else, 0 included, ends the read.
        if (status != kPdfEof) {
            ended = true;
            return status;
        }
    }
    return DrawAnnotations(doc, graphics, sink, page);
}

} // namespace

PDFStatus ReadDocument(std::FILE* file, PDFGraphicsState& sink, bool batchMode,
                       const PagePrompt& prompt, const PendingPageBox& pendingBox,
                       const InterpreterFactory& makeInterpreter) {
    if (!file)
        return kPdfCannotOpenFile;
    // Every stream this read decodes, forms drawn again and again included, counts against
    // one budget.
    const DecodeBudgetScope decodeBudget;
    // Declared in this order so that the pages go first, then the document, and the reader
    // last, which closes the file; the same on every early return.
    infile_streambuf buffer(file);
    std::istream reader(&buffer);
    PDFDocument doc(&reader);
    std::set<int> selectedPages;

    PDFStatus status = doc.Open();
    if (status != kPdfOk)
        return status;
    if (!doc.root)
        return kPdfNullReference;
    if (doc.root->IsType(kPdfKindRef)) {
        PDFToken* loaded = nullptr;
        status = Load(doc, doc.root, &loaded);
        if (status != kPdfOk)
            return status;
    }
    std::int32_t pageCount = 0;
    status = doc.PageCount(&pageCount);
    if (status != kPdfOk)
        return status;
    // Every page is an object of the table, so a /Count above the table's size is a lie; it
    // would otherwise have the page selection hold billions of page numbers.
    if (pageCount > 0 && static_cast<std::size_t>(pageCount) > doc.entries.size())
        pageCount = static_cast<std::int32_t>(doc.entries.size());
    if (pageCount > 1) {
        if (prompt)
            selectedPages = prompt(pageCount, batchMode);
        if (selectedPages.empty())
            return kPdfCanceled;
    } else {
        selectedPages.insert(0);
    }

    double pageCursor = 0.0;
    std::int32_t pageOrdinal = 0;
    FontCache fonts;
    for (const int pageNumber : selectedPages) {
        bool ended = false;
        status = ReadPage(doc, sink, pageNumber, pageOrdinal, pageCursor, ended, pendingBox,
                          makeInterpreter, fonts);
        if (status != kPdfOk || ended)
            return status;
        ++pageOrdinal;
    }
    return kPdfOk;
}
