#include "cli/SettingsStore.h"

#include <ostream>

namespace {

// XDG asks that a relative value be ignored, as if it were not set.
std::optional<std::string> Directory(const EnvironmentLookup& getenv, const char* name) {
    const char* value = getenv(name);
    if (!value || !*value || value[0] != '/')
        return std::nullopt;
    return std::string(value);
}

} // namespace

std::optional<std::string> ResolveSettingsPath(const std::string& option,
                                               const EnvironmentLookup& getenv) {
    if (option == "none")
        return std::nullopt;
    if (!option.empty())
        return option;
    if (const auto config = Directory(getenv, "XDG_CONFIG_HOME"))
        return *config + "/tarquil/settings.json";
    if (const auto home = Directory(getenv, "HOME"))
        return *home + "/.config/tarquil/settings.json";
    return std::nullopt;
}

void SettingsStore::Read(std::ostream& warnings) {
    if (!m_path)
        return;
    std::string error;
    if (!m_context.ReadFile(*m_path, &error) && !error.empty()) {
        // Writing over it later would throw away whatever the user still wants from it.
        m_damaged = true;
        warnings << "tarquil: warning: " << error << "; it will not be overwritten\n";
    }
}

bool SettingsStore::Write(std::ostream& warnings) {
    if (!m_path || m_damaged)
        return true;
    std::string error;
    if (m_context.WriteFileAtomic(*m_path, &error))
        return true;
    warnings << "tarquil: warning: the settings were not saved: " << error << "\n";
    return false;
}
