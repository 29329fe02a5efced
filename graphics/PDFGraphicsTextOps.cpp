// Text operators and the run protocol: a run is one Tj, one TJ or one or more ' texts, and
// runStart follows textAdvance after each flush so successive Tj lay out left to right from
// the same text matrix, which showing text never moves.
#include "graphics/PDFGraphics.h"

#include "pdf/token/PDFTokens.h"

#include <cmath>

namespace {

constexpr std::uint32_t Op(std::string_view word) {
    return PDFGraphics::PackOperator(word);
}

} // namespace

bool PDFGraphics::TextOp(std::uint32_t op) {
    switch (op) {
    case Op("BT"):
        state->BeginText();
        return true;
    case Op("ET"):
        // pendingText itself is left for BeginText to empty.
        if (!state->pendingText.empty()) {
            state->FlushTextRun(state->runStart);
            state->textAdvance = 0.0;
            state->runStart = 0.0;
        }
        return true;
    case Op("Tc"):
        state->SetCharSpacing(PopFloat(0.0));
        return true;
    case Op("Tw"):
        state->SetWordSpacing(PopFloat(0.0));
        return true;
    case Op("Tz"):
        state->SetHorizontalScale(PopFloat(0.0));
        return true;
    case Op("TL"):
        state->SetLeading(PopFloat(0.0));
        return true;
    case Op("Tr"):
        state->SetTextRenderMode(PopInteger());
        return true;
    case Op("Ts"):
        state->SetTextRise(PopFloat(0.0));
        return true;
    case Op("Tf"): {
        const double size = PopFloat(0.0);
        const std::string name = PopString();
        // Known by name alone: a second Tf of a loaded name keeps the last loaded widths.
        if (fontToUnicode.find(name) == fontToUnicode.end())
            LoadFont(name);
        // The entries exist from here on, null (empty) when the font had no such table.
        state->SetFont(name, size, fontToUnicode[name], fontEncoding[name]);
        return true;
    }
    case Op("Td"): {
        const double ty = PopFloat(0.0), tx = PopFloat(0.0);
        state->MoveText(tx, ty);
        state->textAdvance = 0.0;
        state->runStart = 0.0;
        return true;
    }
    case Op("TD"): {
        const double ty = PopFloat(0.0), tx = PopFloat(0.0);
        if (!state->pendingText.empty()) {
            state->FlushTextRun(state->runStart);
            state->textAdvance = 0.0;
            state->runStart = 0.0;
        }
        // The leading is positive whichever way the line moved.
        state->SetLeading(std::fabs(ty));
        state->MoveText(tx, ty);
        return true;
    }
    case Op("Tm"): {
        state->FlushTextRun(state->runStart);
        state->textAdvance = 0.0;
        state->runStart = 0.0;
        const double f = PopFloat(0.0), e = PopFloat(0.0), d = PopFloat(0.0);
        const double c = PopFloat(0.0), b = PopFloat(0.0), a = PopFloat(0.0);
        state->SetTextMatrix(a, b, c, d, e, f);
        return true;
    }
    case Op("T*"):
        state->MoveText(0.0, -state->leading);
        return true;
    case Op("Tj"):
        state->AppendText(PopString(), state->textAdvance);
        state->FlushTextRun(state->runStart);
        state->pendingText.clear();
        state->runStart = state->textAdvance;
        return true;
    case Op("TJ"):
        ShowTextArray();
        return true;
    case Op("'"): {
        const std::string text = PopString();
        (void)ExecuteWord("T*", document);
        // The advance is thrown away and nothing is flushed: the text waits in pendingText
        // for the next flush, at the runStart of that moment.
        double advance = 0.0;
        state->AppendText(text, advance);
        return true;
    }
    default:
        return false;
    }
}

void PDFGraphics::ShowTextArray() {
    PDFToken* top = Peek(0);
    if (top && top->IsType(kPdfKindArray)) {
        // Each TJ starts at the text matrix's origin, even right after another on its line.
        state->textAdvance = 0.0;
        state->runStart = 0.0;
        // Numbers are skipped: there is no kerning adjustment.
        for (PDFToken* item : static_cast<PDFArray*>(top)->items)
            if (item->IsType(kPdfKindString))
                state->AppendText(item->GetString(), state->textAdvance);
        state->FlushTextRun(state->runStart);
        state->pendingText.clear();
        state->runStart = state->textAdvance;
    }
    Drop();
}
