#pragma once
// The host's store of plug-in settings: typed values by section and key. A load answers
// only for a key saved with that type.
#include <map>
#include <string>
#include <variant>

class SettingsContext {
public:
    using Value = std::variant<double, bool, int>;

    bool LoadDouble(const wchar_t* section, const wchar_t* key, double& value) const {
        return Load(section, key, value);
    }
    bool LoadBool(const wchar_t* section, const wchar_t* key, bool& value) const {
        return Load(section, key, value);
    }
    bool LoadInt(const wchar_t* section, const wchar_t* key, int& value) const {
        return Load(section, key, value);
    }
    void SaveDouble(const wchar_t* section, const wchar_t* key, double value) {
        m_values[section][key] = value;
    }
    void SaveBool(const wchar_t* section, const wchar_t* key, bool value) {
        m_values[section][key] = value;
    }
    void SaveInt(const wchar_t* section, const wchar_t* key, int value) {
        m_values[section][key] = value;
    }

    const std::map<std::wstring, std::map<std::wstring, Value>>& Sections() const {
        return m_values;
    }
    void Clear() { m_values.clear(); }

    // Persistence as JSON text. ReadFile gives false (and leaves the store empty) for a
    // missing or unreadable file; a damaged one also gives `error`.
    bool ReadFile(const std::string& path, std::string* error = nullptr);
    // Writes a temporary file beside the target and renames it over, so a crash never
    // leaves a half-written store.
    bool WriteFileAtomic(const std::string& path, std::string* error = nullptr) const;

private:
    template <class T> bool Load(const wchar_t* section, const wchar_t* key, T& value) const {
        const auto s = m_values.find(section ? section : L"");
        if (s == m_values.end())
            return false;
        const auto k = s->second.find(key ? key : L"");
        if (k == s->second.end() || !std::holds_alternative<T>(k->second))
            return false;
        value = std::get<T>(k->second);
        return true;
    }
    std::map<std::wstring, std::map<std::wstring, Value>> m_values;
};
