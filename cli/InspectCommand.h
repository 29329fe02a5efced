#pragma once
// `tarquil inspect`: shows how the PDF reader sees a piece of input.
#include <CLI/CLI.hpp>

#include <string>

struct InspectArguments {
    std::string file = "-"; // "-" is standard input
    bool json = false;
};

// Adds "inspect" with its subcommands; returns the "tokens" subcommand.
CLI::App* AddInspectCommand(CLI::App& app, InspectArguments& args);

// Parses the bytes with a parser that has no document, to the end, and prints the status
// and the operand stack from bottom to top. Returns the exit status.
int RunInspectTokens(const InspectArguments& args);

// The plain and JSON forms of that report, for a given byte string.
std::string TokensReport(const std::string& bytes, bool json);
