#pragma once
// A string-keyed bag of typed values passed to and from named callbacks. A get answers only
// for a key that holds a value of its own type, and leaves the out value alone otherwise.
#include <map>
#include <string>
#include <variant>

class CVmParameterDictionary {
public:
    using Value = std::variant<int, double, bool, std::wstring>;

    void SetInt(const wchar_t* key, int value) { m_values[key] = value; }
    void SetDouble(const wchar_t* key, double value) { m_values[key] = value; }
    void SetBool(const wchar_t* key, bool value) { m_values[key] = value; }
    void SetString(const wchar_t* key, const std::wstring& value) { m_values[key] = value; }
    bool GetInt(const wchar_t* key, int& value) const { return Get(key, value); }
    bool GetDouble(const wchar_t* key, double& value) const { return Get(key, value); }
    bool GetBool(const wchar_t* key, bool& value) const { return Get(key, value); }
    bool GetString(const wchar_t* key, std::wstring& value) const { return Get(key, value); }

    bool Has(const wchar_t* key) const { return m_values.count(key) != 0; }
    const std::map<std::wstring, Value>& Values() const { return m_values; }
    void Set(const std::wstring& key, const Value& value) { m_values[key] = value; }

private:
    template <class T> bool Get(const wchar_t* key, T& value) const {
        const auto it = m_values.find(key);
        if (it == m_values.end() || !std::holds_alternative<T>(it->second))
            return false;
        value = std::get<T>(it->second);
        return true;
    }
    std::map<std::wstring, Value> m_values;
};
