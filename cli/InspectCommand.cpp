#include "cli/InspectCommand.h"

#include "cli/TarquilApp.h"

#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

namespace {

// Each byte becomes the character of the same number, so any byte survives in JSON.
std::string BytesAsLatin1Utf8(const std::string& bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (unsigned char b : bytes) {
        if (b < 0x80) {
            out += static_cast<char>(b);
        } else {
            out += static_cast<char>(0xC0 | (b >> 6));
            out += static_cast<char>(0x80 | (b & 0x3F));
        }
    }
    return out;
}

} // namespace

CLI::App* AddInspectCommand(CLI::App& app, InspectArguments& args) {
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
    return tokens;
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
    if (args.file == "-") {
        std::ostringstream s;
        s << std::cin.rdbuf();
        bytes = s.str();
    } else {
        std::ifstream in(args.file, std::ios::binary);
        if (!in) {
            std::cerr << "tarquil: cannot read " << args.file << "\n";
            return kExitFailure;
        }
        bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    std::cout << TokensReport(bytes, args.json);
    std::cout.flush();
    return std::cout ? kExitSuccess : kExitFailure;
}
