#pragma once
// The file that keeps the plug-in's settings from one run to the next, as the modeller's
// own settings store would.
#include "host/doc/SettingsContext.h"

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

// The store of all plug-ins' settings; the plug-in loader hands a plug-in its section of
// Context() at load and takes it back at unload (VmPlugInLibrary).
class SettingsStore {
public:
    explicit SettingsStore(std::optional<std::string> path) : m_path(std::move(path)) {}

    // Reads the file. A missing file is the first run and says nothing; a damaged one is
    // reported to `warnings` and then left alone.
    void Read(std::ostream& warnings);
    // Writes the whole store, other sections as read. False, with a note to `warnings`, when
    // the file could not be written.
    bool Write(std::ostream& warnings);

    SettingsContext& Context() { return m_context; }
    const std::optional<std::string>& Path() const { return m_path; }

private:
    std::optional<std::string> m_path;
    SettingsContext m_context;
    bool m_damaged = false;
};
