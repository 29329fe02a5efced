#pragma once
// The file that keeps the plug-in's settings from one run to the next, as the modeller's
// own settings store would.
#include "host/doc/SettingsContext.h"
#include "host/plugin/CVelmoPlugIn.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

// What `--settings` names: the word "none" for no store at all, a path, or (empty) the
// default $XDG_CONFIG_HOME/tarquil/settings.json, else $HOME/.config/tarquil/settings.json.
// No path when there is no store, or no usable environment variable for the default.
using EnvironmentLookup = std::function<const char*(const char*)>;
std::optional<std::string> ResolveSettingsPath(const std::string& option,
                                               const EnvironmentLookup& getenv);

// The plug-in's section of the store: its id as text.
std::wstring PlugInSettingsSection(const CVelmoPlugIn& plugIn);

class SettingsStore {
public:
    explicit SettingsStore(std::optional<std::string> path) : m_path(std::move(path)) {}

    // Reads the file and hands the plug-in its section. A missing file is the first run
    // and says nothing; a damaged one is reported to `warnings` and then left alone.
    void Load(CVelmoPlugIn& plugIn, std::ostream& warnings);
    // Takes the plug-in's section back and writes the whole store, other sections as read.
    // False, with a note to `warnings`, when the file could not be written.
    bool Save(CVelmoPlugIn& plugIn, std::ostream& warnings);

    const std::optional<std::string>& Path() const { return m_path; }

private:
    std::optional<std::string> m_path;
    SettingsContext m_context;
    bool m_damaged = false;
};
