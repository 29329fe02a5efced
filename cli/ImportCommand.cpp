#include "cli/ImportCommand.h"

#include "cli/DocumentDxf.h"
#include "cli/DocumentJson.h"
#include "cli/DocumentSvg.h"
#include "cli/FontsFile.h"
#include "cli/JsonWriter.h"
#include "cli/MemoryLimit.h"
#include "cli/PlugInHost.h"
#include "cli/ScriptedOptions.h"
#include "cli/SettingsStore.h"
#include "cli/TarquilApp.h"
#include "cli/TerminalSpinner.h"
#include "cli/UsageError.h"
#include "host/base/CVelmoFileUtilities.h"
#include "host/base/GK_String.h"
#include "host/base/VmFontList.h"
#include "host/plugin/VmPlugInLibrary.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

std::string LowerAscii(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// Hands the stream for `target` ("-" is standard output) to `write`, which writes the report
// as it goes and says whether all of it got out. False, with the reason in `error`, when it
// did not.
bool WriteOutput(const std::string& target, const std::function<bool(std::ostream&)>& write,
                 std::string& error) {
    error.clear();
    if (target == "-") {
        if (!write(std::cout))
            error = "cannot write to standard output";
        return error.empty();
    }
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    if (!out) {
        error = "cannot open " + target + " for writing";
        return false;
    }
    if (!write(out))
        error = "cannot write " + target;
    return error.empty();
}

std::size_t MemoryLimitFor(const ImportArguments& args) {
    if (args.maxMemory.empty())
        return DefaultMemoryLimit();
    const std::optional<std::size_t> limit = ParseMemorySize(args.maxMemory);
    if (!limit)
        throw UsageError("--max-memory: " + args.maxMemory +
                         " is no size (give bytes, or a number with K, M or G)");
    return *limit;
}

void CheckArguments(const ImportArguments& args) {
    const int toStandardOutput =
        (args.jsonOut == "-") + (args.svgOut == "-") + (args.dxfOut == "-");
    if (toStandardOutput > 1)
        throw UsageError("only one of --json, --svg and --dxf can write to standard output");
}

// Why the file cannot be read, in the system's words; nothing when it can. The importer
// would only say that it could not read it.
std::optional<std::string> WhyUnreadable(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::strerror(errno);
    struct stat info {};
    const int error = ::fstat(fd, &info) != 0 ? errno : S_ISDIR(info.st_mode) ? EISDIR : 0;
    ::close(fd);
    if (error)
        return std::strerror(error);
    return std::nullopt;
}

// The wait cursor as a person at a terminal sees it: a spinner on standard error while the
// importer works. Only for a terminal, so that no pipe or file ever gets any of it, and not
// with --quiet. The host's messages and prompts go through streams that keep clear of it;
// everything is set back when the import is over.
class WaitCursorDisplay {
public:
    explicit WaitCursorDisplay(bool wanted) {
        if (!wanted || !TerminalSpinner::IsTerminal(STDERR_FILENO))
            return;
        m_spinner = std::make_unique<TerminalSpinner>(STDERR_FILENO);
        m_errors = std::make_unique<GuardedOutput>(*m_spinner, std::cerr);
        m_input = std::make_unique<GuardedInput>(*m_spinner, std::cin);
        CVelmoWaitCursor::SetListener([spinner = m_spinner.get()](bool shown) {
            if (shown)
                spinner->Show();
            else
                spinner->Hide();
        });
    }
    WaitCursorDisplay(const WaitCursorDisplay&) = delete;
    WaitCursorDisplay& operator=(const WaitCursorDisplay&) = delete;
    ~WaitCursorDisplay() {
        if (!m_spinner)
            return;
        CVelmoWaitCursor::SetListener(nullptr);
        if (VmMessages().Echo() == m_errors.get())
            VmMessages().SetEcho(&std::cerr);
        if (VmUi().HasTerminal())
            VmUi().SetTerminal(&std::cin, &std::cerr);
    }

    std::ostream& Errors() { return m_errors ? *m_errors : std::cerr; }
    std::istream& Input() { return m_input ? *m_input : std::cin; }

private:
    std::unique_ptr<TerminalSpinner> m_spinner;
    std::unique_ptr<GuardedOutput> m_errors;
    std::unique_ptr<GuardedInput> m_input;
};

// The host as the options set it up, before the plug-in is loaded. Options that configure
// the host itself belong here. The modeller runs without windows unless a person is there to
// answer.
void PrepareHost(const ImportArguments& args, const nlohmann::json& answers, CVelmoDoc& doc,
                 std::optional<std::vector<std::wstring>> fonts, WaitCursorDisplay& display) {
    HostAnswers host{answers, args.interactive, args.quiet, args.pages};
    host.input = &display.Input();
    host.errors = &display.Errors();
    SetUpHostAnswers(host);
    doc.SetHeadless(!args.interactive);
    CVelmoFileUtilities::SetTempFolder(VmWideFromBytes(args.tempDir).c_str());
    VmSetFontFamilies(std::move(fonts));
}

CVelmoFileReadOptions MakeReadOptions(const ImportArguments& args) {
    CVelmoFileReadOptions options;
    options.SetMode(CVelmoFileReadOptions::BatchModeFlag, args.batch);
    options.SetMode(CVelmoFileReadOptions::FitViewsFlag, args.fitViews);
    options.SetMode(CVelmoFileReadOptions::ReferenceObjectsFlag, args.reference);
    options.SetNoUserInterfaceQuestions(args.noQuestions);
    ApplyScriptedOptions(args.options, options.OptionsDictionary());
    return options;
}

} // namespace

CLI::App* AddImportCommand(CLI::App& parent, ImportArguments& args) {
    CLI::App* cmd = parent.add_subcommand("import", "Import a PDF, AI or EPS file into a new "
                                                    "document and report what it holds");
    cmd->add_option("FILE", args.input, "The drawing to import")->required();
    cmd->add_option("--type", args.type,
                    "Read the file as pdf, ai or eps (default: by its extension; unknown "
                    "extensions are read as pdf)")
        ->check(CLI::IsMember({"pdf", "ai", "eps"}, CLI::ignore_case));
    cmd->add_option("--option", args.options,
                    "KEY=VALUE or KEY:TYPE=VALUE (TYPE bool, int, double or string): an entry "
                    "of the options a script passes to the importer; repeatable")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
    cmd->add_flag("--batch", args.batch, "Run in batch mode, as a script does");
    cmd->add_flag("--fit-views", args.fitViews, "Ask the importer to fit the views afterwards");
    cmd->add_flag("--reference", args.reference, "Import as reference objects");
    cmd->add_flag("--no-questions", args.noQuestions, "Tell the importer not to ask anything");
    cmd->add_flag("--interactive", args.interactive,
                  "Ask questions on this terminal once the --answers run out (otherwise every "
                  "unanswered question takes its default)");
    cmd->add_option("--answers", args.answersPath,
                    "JSON file with a list of answers to prompts and dialogs, used in order")
        ->type_name("FILE");
    cmd->add_option("--pages", args.pages,
                    "The text to type at the page prompt of multi-page files")
        ->type_name("LIST");
    cmd->add_option("--settings", args.settings,
                    "Settings file kept between runs, or 'none' (default: "
                    "$XDG_CONFIG_HOME/tarquil/settings.json or "
                    "$HOME/.config/tarquil/settings.json)")
        ->type_name("FILE");
    cmd->add_option("--json", args.jsonOut, "Write the document as JSON ('-': standard output)")
        ->type_name("OUT");
    cmd->add_option("--json-indent", args.jsonIndent,
                    "Indent the JSON by N spaces a level, one key a line (default: compact)")
        ->type_name("N")
        ->check(CLI::Range(0, 32));
    cmd->add_option("--svg", args.svgOut, "Write the document as SVG ('-': standard output)")
        ->type_name("OUT");
    cmd->add_option("--dxf", args.dxfOut, "Write the document as DXF ('-': standard output)")
        ->type_name("OUT");
    cmd->add_flag("--quiet", args.quiet, "Do not echo the importer's messages on standard error");
    cmd->add_option("--temp-dir", args.tempDir,
                    "Folder for the image files that picture frames refer to (default: a "
                    "'tarquil' folder under $TMPDIR or /tmp); created when missing")
        ->type_name("DIR");
    cmd->add_option("--max-memory", args.maxMemory,
                    "The most memory the import may take, such as 512M or 2G ('none': no "
                    "bound; default: half of this machine's memory). Past it the import "
                    "ends with its out-of-memory message")
        ->type_name("SIZE");
    AddPlugInOption(*cmd, args.plugIn);
    cmd->add_option("--fonts", args.fontsPath,
                    "Match PDF fonts against the family names in FILE (UTF-8, one a line) "
                    "instead of the installed fonts")
        ->type_name("FILE");
    cmd->footer("Keys with a fixed type: PreserveModelScale, ImportFillsAsHatches, LoadText "
                "(bool); PdfUnits, AiUnits, EpsUnits (int); VelmoScale, PDFScale, AiScale, "
                "EpsScale (double). Other values are typed by their form.\n"
                "Exit status: 0 imported, 1 the import failed, 2 usage error.");
    return cmd;
}

int FormatIndexFor(const std::string& type, const std::string& path) {
    std::string t = LowerAscii(type);
    if (t.empty()) {
        const std::size_t slash = path.find_last_of("/\\");
        const std::size_t dot = path.find_last_of('.');
        if (dot != std::string::npos && (slash == std::string::npos || dot > slash))
            t = LowerAscii(path.substr(dot + 1));
    }
    if (t == "ai")
        return 1;
    if (t == "eps")
        return 2;
    return 0;
}

nlohmann::json ReadAnswersFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw UsageError("--answers: cannot read " + path);
    std::stringstream text;
    text << in.rdbuf();
    const nlohmann::json answers = nlohmann::json::parse(text.str(), nullptr, false);
    if (answers.is_discarded())
        throw UsageError("--answers: " + path + " is not valid JSON");
    if (!answers.is_array())
        throw UsageError("--answers: " + path + " must hold a JSON list of answers");
    return answers;
}

int RunImport(const ImportArguments& args) {
    // Everything the user could have got wrong is checked before anything is read or
    // written, so a usage error leaves no trace.
    CheckArguments(args);
    const std::size_t memoryLimitBytes = MemoryLimitFor(args);
    if (const auto why = WhyUnreadable(args.input)) {
        std::cerr << "tarquil: cannot open " << args.input << ": " << *why << "\n";
        return kExitUsage;
    }
    const int formatIndex = FormatIndexFor(args.type, args.input);
    const CVelmoFileReadOptions options = MakeReadOptions(args);
    const nlohmann::json answers =
        args.answersPath.empty() ? nlohmann::json::array() : ReadAnswersFile(args.answersPath);
    std::optional<std::vector<std::wstring>> fonts;
    if (!args.fontsPath.empty())
        fonts = ReadFontsFile(args.fontsPath);
    const auto settingsPath = SettingsPathFor(args.settings);

    CVelmoDoc doc;
    WaitCursorDisplay display(!args.quiet);
    PrepareHost(args, answers, doc, std::move(fonts), display);

    // The modeller loads a plug-in before its first use and hands it its settings; it takes
    // them back when it unloads the plug-in.
    SettingsStore settings(settingsPath);
    settings.Read(std::cerr);
    VmPlugInLibrary library;
    if (!LoadPlugIn(library, args.plugIn, settings.Context()))
        return kExitFailure;
    const std::wstring path = VmWideFromBytes(args.input);
    int result = 0;
    {
        const MemoryLimitScope memoryLimit(memoryLimitBytes);
        result = VelmoReadFile(*library.PlugIn(), path.c_str(), formatIndex, doc, options);
    }
    // The document is the host's: it is reported after the library is gone.
    library.Unload();
    settings.Write(std::cerr);

    bool written = true;
    std::string error;
    const auto writeJson = [&](std::ostream& out) {
        JsonWriter writer(out, args.jsonIndent);
        WriteDocumentJson(writer, doc, result, VmMessages().Messages());
        return writer.Finish();
    };
    if (!args.jsonOut.empty() && !WriteOutput(args.jsonOut, writeJson, error)) {
        std::cerr << "tarquil: error: " << error << "\n";
        written = false;
    }
    const auto writeSvg = [&](std::ostream& out) { return WriteDocumentSvg(out, doc); };
    if (!args.svgOut.empty() && !WriteOutput(args.svgOut, writeSvg, error)) {
        std::cerr << "tarquil: error: " << error << "\n";
        written = false;
    }
    const auto writeDxf = [&](std::ostream& out) {
        std::vector<std::string> warnings;
        const bool ok = WriteDocumentDxf(out, doc, warnings);
        for (const std::string& warning : warnings)
            std::cerr << "tarquil: warning: DXF: " << warning << "\n";
        return ok;
    };
    if (!args.dxfOut.empty() && !WriteOutput(args.dxfOut, writeDxf, error)) {
        std::cerr << "tarquil: error: " << error << "\n";
        written = false;
    }
    return result == 1 && written ? 0 : 1;
}
