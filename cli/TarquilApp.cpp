#include "cli/TarquilApp.h"

#include "cli/ImportCommand.h"
#include "cli/InspectCommand.h"
#include "cli/InspectDocument.h"
#include "cli/InspectTrace.h"
#include "cli/PlugInCommand.h"
#include "cli/PlugInHost.h"
#include "cli/UsageError.h"
#include "host/base/GK_String.h"
#include "host/plugin/VmPlugInLibrary.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>

#ifndef TARQUIL_VERSION
#error "TARQUIL_VERSION must come from the build"
#endif

namespace {

// The program's version, then the title and version of the importer beside it, or why there
// is none to show.
std::string VersionText() {
    SettingsContext settings;
    VmPlugInLibrary library;
    std::string error;
    const std::string program = std::string("tarquil ") + TARQUIL_VERSION + "\n";
    if (!library.Load(PlugInLibraryPath(""), settings, error))
        return program + "(no importer: " + error + ")";
    library.Unload();
    return program + VmUtf8FromWide(library.Identity().title) + " " +
           VmUtf8FromWide(library.Identity().versionText);
}

} // namespace

int RunTarquil(int argc, const char* const* argv) {
    CLI::App app("Imports PDF, AI and EPS drawings outside Velmo, with the importer it uses, "
                 "and reports the document that results.",
                 "tarquil");
    app.set_version_flag("--version", VersionText, "Print the version and exit");
    app.footer("Run 'tarquil COMMAND --help' for the options of a command.\n"
               "Exit status: 0 success, 1 the import failed or the importer library was "
               "refused, 2 usage error.");

    ImportArguments importArgs;
    CLI::App* import = AddImportCommand(app, importArgs);
    InspectArguments inspectArgs;
    const InspectCommands inspect = AddInspectCommand(app, inspectArgs);
    PlugInArguments plugInArgs;
    const PlugInCommands plugIn = AddPlugInCommand(app, plugInArgs);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return kExitUsage;
    }

    try {
        if (import->parsed())
            return RunImport(importArgs);
        if (plugIn.info->parsed())
            return RunPlugInInfo(plugInArgs);
        if (plugIn.options->parsed())
            return RunPlugInOptions(plugInArgs);
        if (inspect.tokens->parsed())
            return RunInspectTokens(inspectArgs);
        if (inspect.filter->parsed())
            return RunInspectFilter(inspectArgs);
        if (inspect.info->parsed())
            return RunInspectInfo(inspectArgs);
        if (inspect.object->parsed())
            return RunInspectObject(inspectArgs);
        if (inspect.stream->parsed())
            return RunInspectStream(inspectArgs);
        if (inspect.trace->parsed())
            return RunInspectTrace(inspectArgs);
    } catch (const UsageError& e) {
        std::cerr << "tarquil: error: " << e.what() << "\n"
                  << "Run with --help for more information.\n";
        return kExitUsage;
    }

    std::cerr << app.help();
    return kExitUsage;
}
