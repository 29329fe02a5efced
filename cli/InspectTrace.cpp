#include "cli/InspectTrace.h"

#include "cli/TarquilApp.h"
#include "cli/TraceState.h"

#include "graphics/PDFGraphics.h"
#include "graphics/PageDriver.h"
#include "host/ui/VmUiDriver.h"
#include "shell/PagePrompt.h"

#include <cstdio>
#include <iostream>

namespace {

// Tells the trace which colour space the operands of each colour operator are in.
class TracingGraphics : public PDFGraphics {
public:
    TracingGraphics(PDFDocument* document, TraceState* trace, PDFToken* page)
        : PDFGraphics(document, trace, page), m_trace(trace) {}

    void ApplyColour(std::uint8_t which) override {
        m_trace->colourSpace = colorSpaceName[which];
        PDFGraphics::ApplyColour(which);
        m_trace->colourSpace.clear();
    }

private:
    TraceState* m_trace; // borrowed
};

} // namespace

CLI::App* AddInspectTraceCommand(CLI::App& inspect, InspectArguments& args) {
    CLI::App* trace = inspect.add_subcommand(
        "trace",
        "Read a PDF and print every call the interpreter makes on the graphics state, one "
        "line each: the operation and its arguments (numbers as %g, byte strings as PDF "
        "string literals, tokens in their PDF form). Stroke, Fill, EoFill and Clip add "
        "path=[[kind x y] ...] in device space and clipBox=[xmin ymin xmax ymax] when set; "
        "SetColour adds space (the colour space of the operands) and rgb (the bytes set); "
        "FlushTextRun adds pendingText, textMatrix, currentMatrix, fontSize, fontHeightScale "
        "and fontFamily; DrawImage adds width, height, bitsPerComponent, colorSpace, "
        "dataLength and corners. The read status goes to standard error");
    trace->add_option("FILE", args.file, "The PDF file to read")->required();
    trace->add_option("--pages", args.pages,
                      "Pages to read, as typed at the page prompt, e.g. '1,3-4'; all when "
                      "absent");
    trace->add_flag("--json", args.json,
                    "Print one JSON list of {\"op\": NAME, \"args\": [...], ...} with the "
                    "extra values under the names above; byte strings one byte per "
                    "character (U+0000 to U+00FF)");
    return trace;
}

int RunInspectTrace(const InspectArguments& args) {
    std::FILE* file = std::fopen(args.file.c_str(), "rb");
    if (!file) {
        std::cerr << "tarquil: cannot read " << args.file << "\n";
        return kExitFailure;
    }
    if (!args.pages.empty())
        VmUi().SetStringAnswer(args.pages);

    TraceState trace;
    // Batch mode, so the page question goes to the command-line prompt and its answer.
    const PDFStatus status =
        ReadDocument(file, trace, true, PromptForPages, {},
                     [&trace](PDFDocument* document, PDFGraphicsState*, PDFToken* page) {
                         return std::make_unique<TracingGraphics>(document, &trace, page);
                     });
    std::cout << (args.json ? trace.JsonReport() : trace.TextReport());
    std::cout.flush();
    std::cerr << "status: " << status << "\n";
    return status == kPdfOk && std::cout ? kExitSuccess : kExitFailure;
}
