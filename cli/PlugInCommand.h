#pragma once
// `tarquil plugin`: the importer library as a host sees it, and its options button.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <string>

class VmPlugInLibrary;

struct PlugInArguments {
    std::string plugIn; // empty: the library beside the program
    bool json = false;
    std::string type; // options: pdf, ai or eps
    std::string answersPath;
    bool interactive = false;
    bool quiet = false;
    std::string settings; // empty: the default store
};

struct PlugInCommands {
    CLI::App* info = nullptr;
    CLI::App* options = nullptr;
};

PlugInCommands AddPlugInCommand(CLI::App& app, PlugInArguments& args);

// Loads the library, prints its exports, identity and file types, and unloads it. Exit 0, or
// 1 when the library was refused.
int RunPlugInInfo(const PlugInArguments& args);

// Loads the library with the settings store, presses the options button of the file type
// (ShowImportOptions), and unloads it, which saves the settings as an import does. Exit 0, 1
// when the library was refused, registers no such type or failed.
int RunPlugInOptions(const PlugInArguments& args);

// What `plugin info --json` prints, for a loaded (or since unloaded) library.
nlohmann::ordered_json PlugInInfoJson(const VmPlugInLibrary& library);
