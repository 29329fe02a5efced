#pragma once
// What `tarquil` does as a host around the importer library: where the library is, and how
// the headless user interface answers the plug-in's questions.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <iostream>
#include <optional>
#include <string>

class SettingsContext;
class VmPlugInLibrary;

// Declares `--plugin PATH` on a command.
void AddPlugInOption(CLI::App& command, std::string& path);

// The library that `--plugin` named, or, when it named none, the importer built beside this
// program.
std::string PlugInLibraryPath(const std::string& option);

// Loads the library that `--plugin` named, handing it `settings` (borrowed for as long as it
// is loaded); false, with the reason on standard error, when it cannot be loaded.
[[nodiscard]] bool LoadPlugIn(VmPlugInLibrary& library, const std::string& option,
                              SettingsContext& settings);

// The settings file that `--settings` names; with the default and neither XDG_CONFIG_HOME nor
// HOME set there is none, and standard error says so.
std::optional<std::string> SettingsPathFor(const std::string& option);

// How the host answers: the scripted answers first, then (when interactive) this terminal,
// otherwise each question's default; the plug-in's messages echoed on standard error unless
// quiet. Clears the messages of any earlier run.
struct HostAnswers {
    nlohmann::json script = nlohmann::json::array();
    bool interactive = false;
    bool quiet = false;
    std::optional<std::string> stringAnswer; // to every string prompt, ahead of the script
    // Where an interactive run asks and where messages are echoed (borrowed).
    std::istream* input = &std::cin;
    std::ostream* errors = &std::cerr;
};
void SetUpHostAnswers(const HostAnswers& answers);
