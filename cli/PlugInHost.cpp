#include "cli/PlugInHost.h"

#include "cli/SettingsStore.h"
#include "host/plugin/VmPlugInLibrary.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <filesystem>
#include <iostream>
#include <system_error>

#ifndef TARQUIL_PLUGIN_FILE
#error "TARQUIL_PLUGIN_FILE must come from the build"
#endif

void AddPlugInOption(CLI::App& command, std::string& path) {
    command
        .add_option("--plugin", path,
                    "The importer library to load (default: " TARQUIL_PLUGIN_FILE
                    " beside this program)")
        ->type_name("PATH");
}

std::string PlugInLibraryPath(const std::string& option) {
    if (!option.empty())
        return option;
    // The program's own file, whatever folder it was started from; when the system cannot
    // tell, the bare name makes the loader look in the current folder.
    std::error_code ec;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec)
        return TARQUIL_PLUGIN_FILE;
    return (self.parent_path() / TARQUIL_PLUGIN_FILE).string();
}

bool LoadPlugIn(VmPlugInLibrary& library, const std::string& option, SettingsContext& settings) {
    std::string error;
    if (library.Load(PlugInLibraryPath(option), settings, error))
        return true;
    std::cerr << "tarquil: error: " << error << "\n";
    return false;
}

std::optional<std::string> SettingsPathFor(const std::string& option) {
    auto path = ResolveSettingsPath(option, std::getenv);
    if (!path && option != "none")
        std::cerr << "tarquil: warning: neither XDG_CONFIG_HOME nor HOME is set; the settings "
                     "are neither loaded nor saved\n";
    return path;
}

void SetUpHostAnswers(const HostAnswers& answers) {
    VmUi().Reset();
    VmUi().SetScript(answers.script);
    if (answers.stringAnswer)
        VmUi().SetStringAnswer(*answers.stringAnswer);
    VelmoApp().SetHeadless(!answers.interactive);
    if (answers.interactive)
        VmUi().SetTerminal(answers.input, answers.errors);
    VmMessages().Clear();
    VmMessages().SetEcho(answers.quiet ? nullptr : answers.errors);
}
