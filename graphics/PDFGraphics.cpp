// Construction, resources and the operator switch with its general, path, colour and
// marked-content operators. Text operators are in PDFGraphicsTextOps.cpp.
#include "graphics/PDFGraphics.h"

#include "pdf/token/PDFTokens.h"

#include <vector>

namespace {

constexpr std::size_t kMaxSavedStates = 65536;

constexpr std::uint32_t Op(std::string_view word) {
    return PDFGraphics::PackOperator(word);
}

} // namespace

PDFGraphics::PDFGraphics(PDFDocument* document, PDFGraphicsState* graphicsState, PDFToken* page)
    : PDFParser(nullptr, document), state(graphicsState) {
    if (!page || !page->IsType(kPdfKindDict))
        return;
    pageDict = page;
    resources = FindDict(pageDict, "Resources");
    state->hasClipBox = false;
    SetClipFrom(static_cast<PDFDict*>(pageDict)->Find("MediaBox"));
    // The crop box replaces the media box; the two are not intersected.
    SetClipFrom(static_cast<PDFDict*>(pageDict)->Find("CropBox"));
    if (!resources)
        return;
    colorSpaceDict = FindDict(resources, "ColorSpace");
    shadingDict = FindDict(resources, "Shading");
    if (!static_cast<PDFDict*>(resources)->Find("Font") && swappedResources)
        fontDict = FindDict(swappedResources, "Font");
    else
        fontDict = FindDict(resources, "Font");
}

PDFGraphics::~PDFGraphics() = default;

PDFToken* PDFGraphics::FindDict(PDFToken* dict, const std::string& key) {
    // A form may leave anything as its resources: only a dictionary has entries.
    if (!dict || !dict->IsType(kPdfKindDict))
        return nullptr;
    PDFToken* value = static_cast<PDFDict*>(dict)->Find(key);
    PDFToken* resolved = nullptr;
    if (!value || Resolve(value, &resolved) != kPdfOk || !resolved ||
        !resolved->IsType(kPdfKindDict))
        return nullptr;
    return resolved;
}

void PDFGraphics::SetClipFrom(PDFToken* box) {
    PDFToken* resolved = nullptr;
    if (!box || Resolve(box, &resolved) != kPdfOk || !resolved || !resolved->IsType(kPdfKindArray))
        return;
    const auto& items = static_cast<PDFArray*>(resolved)->items;
    if (items.size() != 4)
        return;
    state->SetClipBox(items[0]->GetFloat(0.0), items[1]->GetFloat(0.0), items[2]->GetFloat(0.0),
                      items[3]->GetFloat(0.0));
}

PDFToken* PDFGraphics::SwapResources(PDFToken* newResources) {
    // Deliberately not resolved: a reference, like a null, leaves everything as it is, so
    // restoring with the null the first caller got back keeps the swapped dictionary.
    if (!newResources || !newResources->IsType(kPdfKindDict))
        return swappedResources;
    PDFToken* old = swappedResources;
    swappedResources = newResources;
    PDFToken* fonts = static_cast<PDFDict*>(newResources)->Find("Font");
    if (fonts && fonts->IsType(kPdfKindDict))
        fontDict = fonts;
    return old;
}

void PDFGraphics::SetColorSpaceName(std::uint8_t which, const std::string& name) {
    colorSpaceName[which & 1] = name;
}

PDFStatus PDFGraphics::ExecuteWord(const std::string& word, PDFDocument* doc) {
    if (readFailure != kPdfOk)
        return readFailure;
    const std::uint32_t op = PackOperator(word);
    const std::uint8_t which = !word.empty() && word[0] >= 'A' && word[0] <= 'Z' ? 1 : 0;
    if (GeneralOp(op) || PathOp(op) || ColourOp(op, which) || TextOp(op) || MarkedOp(op, doc))
        return readFailure;
    const PDFStatus status = PDFParser::ExecuteWord(word, doc);
    return status == kPdfUnknownOp ? kPdfOk : status;
}

bool PDFGraphics::GeneralOp(std::uint32_t op) {
    switch (op) {
    case Op("q"):
        // Saved states nest a few dozen deep in real files. Past this depth the read stops:
        // a frame is cheap, but a million of them are not.
        if (state->stateStack.size() >= kMaxSavedStates) {
            readFailure = kPdfStatesTooDeep;
            return true;
        }
        state->SaveState();
        return true;
    case Op("Q"):
        state->RestoreState();
        return true;
    case Op("cm"): {
        const double f = PopFloat(0.0), e = PopFloat(0.0), d = PopFloat(0.0);
        const double c = PopFloat(0.0), b = PopFloat(0.0), a = PopFloat(0.0);
        state->ConcatMatrix(a, b, c, d, e, f);
        return true;
    }
    case Op("w"): {
        // The sum of the first two entries, not a norm, is the only scaling a width gets.
        const PDFMatrix& m = state->currentMatrix;
        state->SetLineWidth(PopFloat(0.0) * (m.a + m.b));
        return true;
    }
    case Op("J"):
        state->SetLineCap(static_cast<std::uint32_t>(PopInteger()));
        return true;
    case Op("j"):
        state->SetLineJoin(static_cast<std::uint32_t>(PopInteger()));
        return true;
    case Op("M"):
        state->SetMiterLimit(PopFloat(0.0));
        return true;
    case Op("d"): {
        const double phase = PopFloat(0.0);
        PDFToken* top = Peek(0);
        if (!top || !top->IsType(kPdfKindArray))
            return true;
        std::vector<double> lengths;
        for (PDFToken* item : static_cast<PDFArray*>(top)->items)
            lengths.push_back(item->GetFloat(0.0));
        Drop();
        // "[] 0 d" keeps the earlier dash.
        if (!lengths.empty())
            state->SetDash(static_cast<std::uint32_t>(lengths.size()), lengths.data(), phase);
        return true;
    }
    case Op("ri"):
        state->SetRenderingIntent(PopString());
        return true;
    case Op("i"):
        state->SetFlatness(PopFloat(0.0));
        return true;
    case Op("gs"):
        state->SetExtGStateName(PopString());
        return true;
    case Op("sh"):
        ShowShading();
        return true;
    case Op("Do"):
        DoXObject();
        return true;
    case Op("BI"):
        Push(new PDFMark("BI"));
        return true;
    case Op("EI"):
        EndInlineImage();
        return true;
    default:
        return false;
    }
}

void PDFGraphics::EndInlineImage() {
    // Inline images are discarded whole: the dictionary's keys and values and the mark go.
    const int mark = FindMark();
    if (mark < 0)
        return;
    while (static_cast<int>(operandStack.size()) > mark)
        Drop();
}

bool PDFGraphics::PathOp(std::uint32_t op) {
    switch (op) {
    case Op("m"): {
        const double y = PopFloat(0.0), x = PopFloat(0.0);
        state->MoveTo(x, y);
        return true;
    }
    case Op("l"): {
        const double y = PopFloat(0.0), x = PopFloat(0.0);
        state->LineTo(x, y);
        return true;
    }
    case Op("c"): {
        const double y3 = PopFloat(0.0), x3 = PopFloat(0.0), y2 = PopFloat(0.0);
        const double x2 = PopFloat(0.0), y1 = PopFloat(0.0), x1 = PopFloat(0.0);
        state->CurveTo(x1, y1, x2, y2, x3, y3);
        return true;
    }
    case Op("v"): {
        const double y3 = PopFloat(0.0), x3 = PopFloat(0.0), y2 = PopFloat(0.0);
        const double x2 = PopFloat(0.0);
        state->CurveTo(state->currentX, state->currentY, x2, y2, x3, y3);
        return true;
    }
    case Op("y"): {
        const double y3 = PopFloat(0.0), x3 = PopFloat(0.0), y1 = PopFloat(0.0);
        const double x1 = PopFloat(0.0);
        state->CurveTo(x1, y1, x3, y3, x3, y3);
        return true;
    }
    case Op("h"):
        state->ClosePath();
        return true;
    case Op("re"): {
        const double h = PopFloat(0.0), w = PopFloat(0.0), y = PopFloat(0.0);
        const double x = PopFloat(0.0);
        state->MoveTo(x, y);
        state->LineTo(x + w, y);
        state->LineTo(x + w, y + h);
        state->LineTo(x, y + h);
        state->ClosePath();
        return true;
    }
    // Stroke always comes before the fill: the sink makes its objects in call order.
    case Op("S"):
        state->Stroke();
        break;
    case Op("s"):
        state->ClosePath();
        state->Stroke();
        break;
    case Op("f"):
    case Op("F"):
        state->Fill();
        break;
    case Op("f*"):
        state->ClosePath();
        state->EoFill();
        break;
    case Op("B"):
        state->Stroke();
        state->Fill();
        break;
    case Op("B*"):
        state->Stroke();
        state->EoFill();
        break;
    case Op("b"):
        state->ClosePath();
        state->Stroke();
        state->Fill();
        break;
    case Op("b*"):
        state->ClosePath();
        state->Stroke();
        state->EoFill();
        break;
    case Op("n"):
        break;
    case Op("W"):
        state->Clip(0);
        return true;
    case Op("W*"):
        state->Clip(1);
        return true;
    default:
        return false;
    }
    state->EndPath();
    return true;
}

bool PDFGraphics::ColourOp(std::uint32_t op, std::uint8_t which) {
    switch (op) {
    case Op("CS"):
    case Op("cs"):
        // Naming a space sets no colour: the old one stays until SC and friends.
        SetColorSpaceName(which, PopString());
        return true;
    case Op("SC"):
    case Op("SCN"):
    case Op("sc"):
    case Op("scn"):
        ApplyColour(which);
        return true;
    case Op("G"):
    case Op("g"):
        SetColorSpaceName(which, "DeviceGray");
        ApplyColour(which);
        return true;
    case Op("RG"):
    case Op("rg"):
        SetColorSpaceName(which, "DeviceRGB");
        ApplyColour(which);
        return true;
    case Op("K"):
    case Op("k"):
        SetColorSpaceName(which, "DeviceCMYK");
        ApplyColour(which);
        return true;
    default:
        return false;
    }
}

bool PDFGraphics::MarkedOp(std::uint32_t op, PDFDocument* doc) {
    switch (op) {
    case Op("MP"):
        state->MarkPoint(PopString(), nullptr);
        return true;
    case Op("DP"): {
        // Without a property dictionary on top the operands stay where they are.
        PDFToken* top = Peek(0);
        if (!top || !top->IsType(kPdfKindDict))
            return true;
        PDFToken* properties = Pop();
        const std::string tag = PopString();
        state->MarkPoint(tag, properties);
        return true;
    }
    case Op("BMC"): {
        const std::string tag = PopString();
        state->layerStack.push_back(state->layerIndex);
        state->BeginMarkedContent(doc, tag, nullptr);
        return true;
    }
    case Op("BDC"): {
        PDFToken* properties = operandStack.empty() ? nullptr : Pop();
        const std::string tag = PopString();
        state->layerStack.push_back(state->layerIndex);
        state->BeginMarkedContent(doc, tag, properties);
        return true;
    }
    case Op("EMC"):
        state->EndMarkedContent();
        // An unbalanced EMC keeps the current layer.
        if (!state->layerStack.empty()) {
            state->layerIndex = state->layerStack.back();
            state->layerStack.pop_back();
        }
        return true;
    default:
        return false;
    }
}
