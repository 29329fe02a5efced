#pragma once
// `tarquil inspect`: shows how the PDF reader sees a piece of input.
#include <CLI/CLI.hpp>

#include <string>

struct InspectArguments {
    std::string file = "-"; // "-" is standard input
    bool json = false;
    std::string dict;         // filter: the stream's dictionary as PDF text
    std::string output = "-"; // filter, stream: where the decoded bytes go
    int object = 0;           // object, stream: the object number
    int generation = -1;      // object, stream: -1 takes the table's generation
    std::string pages;        // trace: the answer to the page prompt; empty asks as usual
};

struct InspectCommands {
    CLI::App* tokens = nullptr;
    CLI::App* filter = nullptr;
    CLI::App* info = nullptr;
    CLI::App* object = nullptr;
    CLI::App* stream = nullptr;
    CLI::App* trace = nullptr;
};

// Adds "inspect" with its subcommands.
InspectCommands AddInspectCommand(CLI::App& app, InspectArguments& args);

// Parses the bytes with a parser that has no document, to the end, and prints the status
// and the operand stack from bottom to top. Returns the exit status.
int RunInspectTokens(const InspectArguments& args);

// The plain and JSON forms of that report, for a given byte string.
std::string TokensReport(const std::string& bytes, bool json);

// Makes a stream of the input bytes with the dictionary args.dict, decodes it through its
// filters, writes the bytes (also on failure: what the failing filter left) and prints
// "status: N" on standard error. Exit 0 for status 0, 1 otherwise, 2 for a dictionary that
// does not parse.
int RunInspectFilter(const InspectArguments& args);
