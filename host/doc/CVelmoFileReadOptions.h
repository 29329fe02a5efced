#pragma once
// What the host tells a file reader: mode flags and a script's options dictionary.
#include <map>
#include <string>
#include <variant>

// A string-keyed dictionary of typed values. A getter answers only for a key that holds a
// value of its own type.
class GK_ArchivableDictionary {
public:
    using Value = std::variant<bool, int, double, std::wstring>;

    int Count() const { return static_cast<int>(m_values.size()); }
    void SetBool(const std::wstring& key, bool value) { m_values[key] = value; }
    void SetInt32(const std::wstring& key, int value) { m_values[key] = value; }
    void SetDouble(const std::wstring& key, double value) { m_values[key] = value; }
    void SetString(const std::wstring& key, const std::wstring& value) { m_values[key] = value; }

    bool TryGetBool(const wchar_t* key, bool& value) const { return TryGet(key, value); }
    bool TryGetInt32(const wchar_t* key, int& value) const { return TryGet(key, value); }
    bool TryGetDouble(const wchar_t* key, double& value) const { return TryGet(key, value); }
    bool TryGetString(const wchar_t* key, std::wstring& value) const { return TryGet(key, value); }

    const std::map<std::wstring, Value>& Values() const { return m_values; }

private:
    template <class T> bool TryGet(const wchar_t* key, T& value) const {
        const auto it = m_values.find(key ? key : L"");
        if (it == m_values.end() || !std::holds_alternative<T>(it->second))
            return false;
        value = std::get<T>(it->second);
        return true;
    }
    std::map<std::wstring, Value> m_values;
};

class CVelmoFileReadOptions {
public:
    enum ModeFlag {
        FitViewsFlag = 1,
        ReferenceObjectsFlag = 4,
        BatchModeFlag = 5,
    };

    bool Mode(ModeFlag flag) const { return (m_modes >> static_cast<int>(flag)) & 1u; }
    void SetMode(ModeFlag flag, bool on) {
        const unsigned bit = 1u << static_cast<int>(flag);
        m_modes = on ? (m_modes | bit) : (m_modes & ~bit);
    }
    bool NoUserInterfaceQuestions() const { return m_noQuestions; }
    void SetNoUserInterfaceQuestions(bool on) { m_noQuestions = on; }

    const GK_ArchivableDictionary& OptionsDictionary() const { return m_dictionary; }
    GK_ArchivableDictionary& OptionsDictionary() { return m_dictionary; }

private:
    unsigned m_modes = 0;
    bool m_noQuestions = false;
    GK_ArchivableDictionary m_dictionary;
};
