#pragma once
// `tarquil import FILE`: loads the importer library as the modeller does, reads a drawing into
// a new document the way the modeller's Import command does, then reports the document.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

struct ImportArguments {
    std::string input;
    std::string type; // pdf, ai or eps; empty: by the file's extension
    std::vector<std::string> options;
    bool batch = false;
    bool fitViews = false;
    bool reference = false;
    bool noQuestions = false;
    bool interactive = false;
    bool quiet = false;
    std::string answersPath;
    std::optional<std::string> pages;
    std::string settings; // empty: the default store
    std::string jsonOut;
    int jsonIndent = -1; // spaces per level; negative: compact
    std::string svgOut;
    std::string tempDir;   // empty: the host's default temporary folder
    std::string maxMemory; // empty: half of the machine's memory
    std::string plugIn;    // empty: the library beside the program
    std::string fontsPath; // empty: the installed font families
};

// Declares the subcommand and its options on `parent`; parsing fills `args`.
CLI::App* AddImportCommand(CLI::App& parent, ImportArguments& args);

// Runs the import and writes the reports. Returns the exit status: 0 when the importer
// returned 1, else 1 (also when the library was refused); 2 when FILE cannot be opened.
// Throws UsageError for arguments that cannot be used.
int RunImport(const ImportArguments& args);

// The importer's format index: 0 PDF, 1 AI, 2 EPS. An explicit type wins; otherwise the
// extension decides without regard to case, and anything unknown is read as PDF.
int FormatIndexFor(const std::string& type, const std::string& path);

// The scripted answers of `--answers`: a JSON list. Throws UsageError when the file cannot
// be read or holds anything else.
nlohmann::json ReadAnswersFile(const std::string& path);
