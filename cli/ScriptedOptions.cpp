#include "cli/ScriptedOptions.h"

#include "cli/UsageError.h"
#include "host/base/GK_String.h"

#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>
#include <utility>
#include <variant>

namespace {

constexpr std::array<std::pair<std::wstring_view, ScriptedType>, 10> kKnownKeys = {{
    {L"PreserveModelScale", ScriptedType::Bool},
    {L"VelmoScale", ScriptedType::Double},
    {L"PdfUnits", ScriptedType::Int},
    {L"PDFScale", ScriptedType::Double},
    {L"ImportFillsAsHatches", ScriptedType::Bool},
    {L"LoadText", ScriptedType::Bool},
    {L"AiUnits", ScriptedType::Int},
    {L"AiScale", ScriptedType::Double},
    {L"EpsUnits", ScriptedType::Int},
    {L"EpsScale", ScriptedType::Double},
}};

std::string Lower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return out;
}

// from_chars rejects a leading '+', which people write; everything else it rejects is
// rejected here too, including surrounding spaces.
std::string_view WithoutPlus(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+')
        text.remove_prefix(1);
    return text;
}

bool ParseBool(std::string_view text, bool& value) {
    const std::string t = Lower(text);
    if (t == "true" || t == "yes" || t == "on" || t == "1") {
        value = true;
        return true;
    }
    if (t == "false" || t == "no" || t == "off" || t == "0") {
        value = false;
        return true;
    }
    return false;
}

bool ParseInt(std::string_view text, int& value) {
    text = WithoutPlus(text);
    const char* end = text.data() + text.size();
    const auto r = std::from_chars(text.data(), end, value);
    return !text.empty() && r.ec == std::errc() && r.ptr == end;
}

// Classic-locale decimal or scientific notation; infinities and NaN are not sizes or
// scales, so they are refused.
bool ParseDouble(std::string_view text, double& value) {
    text = WithoutPlus(text);
    const char* end = text.data() + text.size();
    const auto r = std::from_chars(text.data(), end, value, std::chars_format::general);
    return !text.empty() && r.ec == std::errc() && r.ptr == end && std::isfinite(value);
}

const char* TypeName(ScriptedType type) {
    switch (type) {
    case ScriptedType::Bool:
        return "bool";
    case ScriptedType::Int:
        return "int";
    case ScriptedType::Double:
        return "double";
    case ScriptedType::String:
        return "string";
    }
    return "?";
}

GK_ArchivableDictionary::Value ParseAs(ScriptedType type, std::string_view text,
                                       std::string_view argument) {
    switch (type) {
    case ScriptedType::Bool: {
        bool b = false;
        if (ParseBool(text, b))
            return b;
        break;
    }
    case ScriptedType::Int: {
        int i = 0;
        if (ParseInt(text, i))
            return i;
        break;
    }
    case ScriptedType::Double: {
        double d = 0.0;
        if (ParseDouble(text, d))
            return d;
        break;
    }
    case ScriptedType::String:
        return VmWideFromBytes(std::string(text));
    }
    throw UsageError("--option " + std::string(argument) + ": \"" + std::string(text) +
                     "\" is not a valid " + TypeName(type) + " value");
}

GK_ArchivableDictionary::Value Infer(std::string_view text) {
    const std::string lower = Lower(text);
    if (lower == "true" || lower == "false")
        return lower == "true";
    int i = 0;
    if (ParseInt(text, i))
        return i;
    double d = 0.0;
    if (ParseDouble(text, d))
        return d;
    return VmWideFromBytes(std::string(text));
}

} // namespace

bool KnownOptionType(std::wstring_view key, ScriptedType& type) {
    for (const auto& [name, t] : kKnownKeys) {
        if (name == key) {
            type = t;
            return true;
        }
    }
    return false;
}

ScriptedOption ParseScriptedOption(std::string_view argument) {
    const std::size_t eq = argument.find('=');
    if (eq == std::string_view::npos)
        throw UsageError("--option " + std::string(argument) + ": expected KEY=VALUE");
    std::string_view key = argument.substr(0, eq);
    const std::string_view text = argument.substr(eq + 1);

    bool forced = false;
    ScriptedType type = ScriptedType::String;
    if (const std::size_t colon = key.rfind(':'); colon != std::string_view::npos) {
        const std::string suffix = Lower(key.substr(colon + 1));
        if (suffix == "bool")
            type = ScriptedType::Bool;
        else if (suffix == "int")
            type = ScriptedType::Int;
        else if (suffix == "double")
            type = ScriptedType::Double;
        else if (suffix == "string")
            type = ScriptedType::String;
        else
            throw UsageError("--option " + std::string(argument) + ": unknown type \"" +
                             std::string(key.substr(colon + 1)) +
                             "\" (use bool, int, double or string)");
        forced = true;
        key = key.substr(0, colon);
    }
    if (key.empty())
        throw UsageError("--option " + std::string(argument) + ": the key is empty");

    ScriptedOption option;
    option.key = VmWideFromBytes(std::string(key));
    if (!forced && !KnownOptionType(option.key, type))
        option.value = Infer(text);
    else
        option.value = ParseAs(type, text, argument);
    return option;
}

void ApplyScriptedOptions(const std::vector<std::string>& arguments,
                          GK_ArchivableDictionary& dictionary) {
    for (const std::string& argument : arguments) {
        ScriptedOption option = ParseScriptedOption(argument);
        std::visit(
            [&](auto&& v) {
                using T = std::decay_t<decltype(v)>;
                if constexpr (std::is_same_v<T, bool>)
                    dictionary.SetBool(option.key, v);
                else if constexpr (std::is_same_v<T, int>)
                    dictionary.SetInt32(option.key, v);
                else if constexpr (std::is_same_v<T, double>)
                    dictionary.SetDouble(option.key, v);
                else
                    dictionary.SetString(option.key, v);
            },
            option.value);
    }
}
