#include "cli/InspectCommand.h"

#include "cli/InspectDocument.h"
#include "cli/InspectSupport.h"
#include "cli/InspectTrace.h"
#include "cli/TarquilApp.h"

#include "filters/FilterPipeline.h"
#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"
#include "pdf/parser/ParseText.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

InspectCommands AddInspectCommand(CLI::App& app, InspectArguments& args) {
    CLI::App* inspect = app.add_subcommand("inspect", "Show how the PDF reader sees its input");
    inspect->require_subcommand(1);
    CLI::App* tokens = inspect->add_subcommand(
        "tokens", "Parse PDF text to its end and print the status and the operand stack, "
                  "bottom first, one token per line");
    tokens->add_option("FILE", args.file, "The bytes to parse; - for standard input")
        ->capture_default_str();
    tokens->add_flag("--json", args.json,
                     "Print {\"status\": N, \"stack\": [...]}; each byte of a token's text is "
                     "the character of the same number (U+0000 to U+00FF)");

    CLI::App* filter = inspect->add_subcommand(
        "filter", "Decode bytes as the data of a stream with the given dictionary, through its "
                  "/Filter and /DecodeParms; the status goes to standard error");
    filter
        ->add_option("--dict", args.dict,
                     "The stream's dictionary as PDF text, e.g. "
                     "'<</Filter[/ASCII85Decode/FlateDecode]>>'")
        ->required();
    filter->add_option("FILE", args.file, "The stream's data; - for standard input")
        ->capture_default_str();
    filter
        ->add_option("-o,--output", args.output,
                     "Where the decoded bytes go; - for standard output")
        ->capture_default_str();

    InspectCommands commands = AddInspectDocumentCommands(*inspect, args);
    commands.tokens = tokens;
    commands.filter = filter;
    commands.trace = AddInspectTraceCommand(*inspect, args);
    return commands;
}

std::string TokensReport(const std::string& bytes, bool json) {
    auto input = MakeMemoryInput(bytes.data(), bytes.size());
    // A length of 0 would make the memory input measure to a NUL; an empty text has none.
    PDFParser parser(bytes.empty() ? nullptr : input.get(), nullptr);
    const PDFStatus status = parser.ParseUntil("");
    if (json) {
        nlohmann::json stack = nlohmann::json::array();
        for (PDFToken* token : parser.operandStack)
            stack.push_back(BytesAsLatin1Utf8(token->ToString()));
        return nlohmann::json{{"status", status}, {"stack", stack}}.dump() + "\n";
    }
    std::string out = "status: " + std::to_string(status) + "\n";
    for (PDFToken* token : parser.operandStack)
        out += token->ToString() + "\n";
    return out;
}

int RunInspectTokens(const InspectArguments& args) {
    std::string bytes;
    if (!ReadInput(args.file, bytes))
        return kExitFailure;
    std::cout << TokensReport(bytes, args.json);
    std::cout.flush();
    return std::cout ? kExitSuccess : kExitFailure;
}

int RunInspectFilter(const InspectArguments& args) {
    // The dictionary is read by the same parser as any PDF text, without a document.
    PDFToken* dict = ParseDictionaryText(args.dict);
    if (!dict) {
        std::cerr << "tarquil: error: --dict must be one PDF dictionary, such as "
                     "'<</Filter/FlateDecode>>'\n";
        return kExitUsage;
    }

    std::string bytes;
    if (!ReadInput(args.file, bytes)) {
        dict->Release();
        return kExitFailure;
    }
    const PDFTokenRef stream(new PDFParser::PDFStream(std::move(bytes), dict));
    std::string decoded;
    const PDFStatus status =
        DecodeStream(*static_cast<const PDFParser::PDFStream*>(stream.Get()), decoded);

    const bool written = WriteOutput(args.output, decoded);
    std::cerr << "status: " << status << "\n";
    return status == kPdfOk && written ? kExitSuccess : kExitFailure;
}
