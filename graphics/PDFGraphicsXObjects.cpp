// The Do operator: a form is interpreted in place on the same parser, an image becomes a
// record for the sink (graphics/ImageXObject.cpp). Other subtypes only lose their name.
#include "filters/FilterPipeline.h"
#include "graphics/PDFGraphics.h"
#include "pdf/input/MemoryInput.h"

#include <memory>

namespace {

// Forms drawn inside forms deeper than this are taken as names that are not found. Real
// files nest a few levels; other readers stop at a few dozen. Without a bound, a form that
// draws itself would never end.
constexpr int kMaxFormDepth = 32;
// Forms drawn on one page, nested or not, beyond which a Do of a form is taken as a name
// that is not found. A form that draws itself twice would otherwise run 2^32 times under the
// depth bound; real pages draw a few thousand forms at most.
constexpr std::size_t kMaxFormDrawsPerPage = 100000;

} // namespace

void PDFGraphics::DoXObject() {
    PDFToken* const kept = swappedResources;
    const std::string name = PopString();
    if (formDepth >= kMaxFormDepth)
        return;

    // The form's own XObjects first, then the page's.
    PDFToken* found = nullptr;
    if (PDFToken* xobjects = FindDict(swappedResources, "XObject"))
        found = static_cast<PDFDict*>(xobjects)->Find(name);
    if (!found && resources)
        if (PDFToken* xobjects = FindDict(resources, "XObject"))
            found = static_cast<PDFDict*>(xobjects)->Find(name);
    PDFToken* object = nullptr;
    if (!found || Resolve(found, &object) != kPdfOk || !object)
        return;
    // Anything but a stream under /XObject is taken as a name that is not there.
    if (!object->IsType(kPdfKindStream))
        return;
    auto* stream = static_cast<PDFStream*>(object);
    const auto* dict = static_cast<const PDFDict*>(stream->dict);

    // Images set the resources too; colour spaces and fonts do not follow them.
    if (PDFToken* own = dict->Find("Resources")) {
        PDFToken* resolved = nullptr;
        if (Resolve(own, &resolved) == kPdfOk && resolved)
            swappedResources = resolved;
    }
    const PDFToken* subtype = dict->Find("Subtype");
    const std::string kind = subtype ? subtype->GetString() : std::string();
    if (kind == "Form" && formDraws >= kMaxFormDrawsPerPage)
        swappedResources = kept;
    else if (kind == "Form")
        DrawForm(stream, kept);
    else if (kind == "Image")
        DrawImageXObject(stream, kept);
    else
        swappedResources = kept;
}

void PDFGraphics::DrawForm(PDFStream* form, PDFToken* keptResources) {
    const auto* dict = static_cast<const PDFDict*>(form->dict);
    state->SaveState();
    PDFToken* matrix = nullptr;
    if (Resolve(dict->Find("Matrix"), &matrix) == kPdfOk && matrix &&
        matrix->IsType(kPdfKindArray) && static_cast<PDFArray*>(matrix)->items.size() == 6) {
        // An item that is no number reads as the identity's own value.
        const auto& m = static_cast<PDFArray*>(matrix)->items;
        state->ConcatMatrix(m[0]->GetFloat(1.0), m[1]->GetFloat(0.0), m[2]->GetFloat(0.0),
                            m[3]->GetFloat(1.0), m[4]->GetFloat(0.0), m[5]->GetFloat(0.0));
    }
    std::string content;
    // A form that does not decode is dropped with its state and resources left as they
    // are: the outer stream goes on under them.
    if (DecodeStream(*form, content) != kPdfOk)
        return;

    // The form runs on this parser, with its operand stack and font maps. What the outer
    // stream had read ahead waits for it.
    std::istream* const outerInput = input;
    const bool outerOwns = ownsInput;
    const bool outerPushback = hasPushback;
    const int outerChar = lastChar;
    const std::string outerStop = stopWord;
    std::unique_ptr<std::istream> formInput = MakeMemoryInput(content.data(), content.size());
    hasPushback = false;
    ownsInput = false; // the outer input is only set aside, not given up
    SetStream(formInput.get(), false);
    ++formDepth;
    ++formDraws;
    // A form that fails part-way just ends; a read failure shows in the next word.
    (void)ParseUntil("");
    --formDepth;
    SetStream(outerInput, outerOwns);
    hasPushback = outerPushback;
    lastChar = outerChar;
    stopWord = outerStop;
    stopped = false;
    // An unbalanced Q inside the form has popped its frame already, and this one pops
    // the outer stream's: forms are not fenced.
    state->RestoreState();
    swappedResources = keptResources;
}
