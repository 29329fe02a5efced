#include "cli/PlugInCommand.h"

#include "cli/ImportCommand.h"
#include "cli/PlugInHost.h"
#include "cli/SettingsStore.h"
#include "cli/TarquilApp.h"
#include "host/base/GK_String.h"
#include "host/plugin/VmPlugInLibrary.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace {

using ordered_json = nlohmann::ordered_json;

std::string Utf8(const std::wstring& text) {
    return VmUtf8FromWide(text);
}

std::string Hex(unsigned int value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", value);
    return text;
}

// The text report: a label in a column, then the value, a line each. Appended piece by piece,
// which the optimised GCC 12 build does not mistake for overlapping copies.
void AddLine(std::string& text, const char* label, const std::string& value) {
    const std::size_t start = text.size();
    text += label;
    text.resize(start + 14, ' ');
    text += value;
    text += '\n';
}

std::string InfoText(const VmPlugInLibrary& library) {
    const VelmoPlugInExports& e = library.Exports();
    const VmPlugInIdentity& id = library.Identity();
    std::string framework = e.usesMfc ? "used" : "not used";
    framework += ", version ";
    framework += std::to_string(e.mfcVersion);
    framework += "; build tool ";
    framework += std::to_string(e.mscVersion);
    std::string text;
    AddLine(text, "Library", library.Path());
    AddLine(text, "Title", Utf8(id.title));
    AddLine(text, "Local title", Utf8(id.localisedTitle));
    AddLine(text, "Id", id.id.ToString());
    AddLine(text, "Version", Utf8(id.versionText));
    AddLine(text, "Interface", Hex(e.sdkVersion) + ", service release " + Hex(e.sdkServiceRelease));
    AddLine(text, "Framework", framework);
    AddLine(text, "Developer", Utf8(e.developerOrganization));
    AddLine(text, "Address", Utf8(e.developerAddress));
    AddLine(text, "Country", Utf8(e.developerCountry));
    AddLine(text, "Phone", Utf8(e.developerPhone));
    AddLine(text, "Fax", Utf8(e.developerFax));
    AddLine(text, "E-mail", Utf8(e.developerEmail));
    AddLine(text, "Website", Utf8(e.developerWebsite));
    AddLine(text, "Updates", Utf8(e.updateUrl));
    text += "File types\n";
    const auto& types = library.FileTypes();
    for (int i = 0; i < types.Count(); ++i) {
        std::string extensions;
        for (int x = 0; x < types[i].ExtensionCount(); ++x) {
            if (x)
                extensions += ' ';
            extensions += Utf8(types[i].Extension(x).str());
        }
        extensions.resize(std::max<std::size_t>(extensions.size(), 3), ' ');
        text += "  ";
        text += std::to_string(i);
        text += "  ";
        text += extensions;
        text += "  ";
        text += Utf8(types[i].Description().str());
        text += '\n';
    }
    return text;
}

// The registered file type of a format, found by its extension as the host's dialog finds
// the entry the user chose; -1 when the plug-in registered none.
int FileTypeIndex(const VmPlugInLibrary& library, const std::string& type) {
    const std::wstring extension = VmWideFromUtf8(type);
    const auto& types = library.FileTypes();
    for (int i = 0; i < types.Count(); ++i)
        for (int x = 0; x < types[i].ExtensionCount(); ++x)
            if (types[i].Extension(x).CompareNoCase(extension.c_str()) == 0)
                return i;
    return -1;
}

} // namespace

PlugInCommands AddPlugInCommand(CLI::App& app, PlugInArguments& args) {
    CLI::App* plugIn =
        app.add_subcommand("plugin", "Load the importer library as the modeller does and show "
                                     "what it presents");
    plugIn->require_subcommand(1);

    CLI::App* info = plugIn->add_subcommand(
        "info", "Print the library's exports, the plug-in's identity and its file types");
    info->add_flag("--json", args.json, "Print them as one JSON object");
    AddPlugInOption(*info, args.plugIn);

    CLI::App* options = plugIn->add_subcommand(
        "options", "Press the options button of a file type, as in the modeller's Open and "
                   "Import dialogs: the import options dialog, shown even after \"do not show "
                   "again\"; the settings are saved as an import saves them");
    options->add_option("--type", args.type, "The file type: pdf, ai or eps")
        ->required()
        ->check(CLI::IsMember({"pdf", "ai", "eps"}, CLI::ignore_case));
    options
        ->add_option("--answers", args.answersPath,
                     "JSON file with a list of answers to the dialog, as for import")
        ->type_name("FILE");
    options->add_flag("--interactive", args.interactive,
                      "Ask on this terminal once the --answers run out (otherwise the "
                      "unanswered dialog is cancelled)");
    options->add_option("--settings", args.settings, "The settings store, as for import")
        ->type_name("FILE");
    options->add_flag("--quiet", args.quiet, "Do not echo the importer's messages");
    AddPlugInOption(*options, args.plugIn);
    return {info, options};
}

ordered_json PlugInInfoJson(const VmPlugInLibrary& library) {
    const VelmoPlugInExports& e = library.Exports();
    const VmPlugInIdentity& id = library.Identity();
    ordered_json types = ordered_json::array();
    const auto& fileTypes = library.FileTypes();
    for (int i = 0; i < fileTypes.Count(); ++i) {
        ordered_json extensions = ordered_json::array();
        for (int x = 0; x < fileTypes[i].ExtensionCount(); ++x)
            extensions.push_back(Utf8(fileTypes[i].Extension(x).str()));
        types.push_back({{"index", i},
                         {"description", Utf8(fileTypes[i].Description().str())},
                         {"extensions", extensions},
                         {"showInFileDialogs", fileTypes[i].ShowInFileDialogs()},
                         {"plugInId", fileTypes[i].PlugInId().ToString()}});
    }
    return {{"library", library.Path()},
            {"exports",
             {{"VelmoPlugInMfcVersion", e.mfcVersion},
              {"VelmoPlugInMscVersion", e.mscVersion},
              {"VelmoPlugInUsesMfc", e.usesMfc},
              {"VelmoPlugInSdkVersion", e.sdkVersion},
              {"VelmoPlugInSdkServiceRelease", e.sdkServiceRelease},
              {"VelmoPlugInDeveloperOrganization", Utf8(e.developerOrganization)},
              {"VelmoPlugInDeveloperAddress", Utf8(e.developerAddress)},
              {"VelmoPlugInDeveloperCountry", Utf8(e.developerCountry)},
              {"VelmoPlugInDeveloperPhone", Utf8(e.developerPhone)},
              {"VelmoPlugInDeveloperFax", Utf8(e.developerFax)},
              {"VelmoPlugInDeveloperEmail", Utf8(e.developerEmail)},
              {"VelmoPlugInDeveloperWebsite", Utf8(e.developerWebsite)},
              {"VelmoPlugInUpdateURL", Utf8(e.updateUrl)}}},
            {"plugIn",
             {{"id", id.id.ToString()},
              {"title", Utf8(id.title)},
              {"localisedTitle", Utf8(id.localisedTitle)},
              {"version", Utf8(id.versionText)}}},
            {"fileTypes", types}};
}

int RunPlugInInfo(const PlugInArguments& args) {
    // As a host sees the plug-in on its first start: default settings, none stored.
    SettingsContext settings;
    VmPlugInLibrary library;
    if (!LoadPlugIn(library, args.plugIn, settings))
        return kExitFailure;
    library.Unload();
    std::cout << (args.json ? PlugInInfoJson(library).dump(
                                  2, ' ', false, nlohmann::json::error_handler_t::replace) +
                                  "\n"
                            : InfoText(library));
    return kExitSuccess;
}

int RunPlugInOptions(const PlugInArguments& args) {
    const nlohmann::json answers =
        args.answersPath.empty() ? nlohmann::json::array() : ReadAnswersFile(args.answersPath);
    const auto settingsPath = SettingsPathFor(args.settings);
    SetUpHostAnswers({answers, args.interactive, args.quiet, std::nullopt});

    SettingsStore settings(settingsPath);
    settings.Read(std::cerr);
    VmPlugInLibrary library;
    if (!LoadPlugIn(library, args.plugIn, settings.Context()))
        return kExitFailure;
    const int index = FileTypeIndex(library, args.type);
    if (index < 0) {
        std::cerr << "tarquil: error: the plug-in registers no file type " << args.type << "\n";
        return kExitFailure;
    }
    const bool shown = VelmoShowImportOptions(*library.PlugIn(), library.FileTypes()[index]);
    library.Unload();
    settings.Write(std::cerr);
    return shown ? kExitSuccess : kExitFailure;
}
