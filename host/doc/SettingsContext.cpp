#include "host/doc/SettingsContext.h"

#include "host/base/GK_String.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

using nlohmann::json;

bool SettingsContext::ReadFile(const std::string& path, std::string* error) {
    m_values.clear();
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    std::stringstream text;
    text << in.rdbuf();
    const json root = json::parse(text.str(), nullptr, false);
    if (root.is_discarded() || !root.is_object() || !root.contains("sections") ||
        !root["sections"].is_object()) {
        if (error)
            *error = "the settings file " + path + " is damaged; defaults are used";
        return false;
    }
    for (const auto& [section, keys] : root["sections"].items()) {
        if (!keys.is_object())
            continue;
        auto& target = m_values[VmWideFromUtf8(section)];
        for (const auto& [key, entry] : keys.items()) {
            if (!entry.is_object() || !entry.contains("type") || !entry.contains("value"))
                continue;
            const std::string type =
                entry["type"].is_string() ? entry["type"].get<std::string>() : "";
            const json& v = entry["value"];
            const std::wstring wkey = VmWideFromUtf8(key);
            if (type == "double" && v.is_number())
                target[wkey] = v.get<double>();
            else if (type == "bool" && v.is_boolean())
                target[wkey] = v.get<bool>();
            else if (type == "int" && v.is_number_integer())
                target[wkey] = v.get<int>();
        }
    }
    return true;
}

bool SettingsContext::WriteFileAtomic(const std::string& path, std::string* error) const {
    json sections = json::object();
    for (const auto& [section, keys] : m_values) {
        json& s = sections[VmUtf8FromWide(section)];
        s = json::object();
        for (const auto& [key, value] : keys) {
            json entry;
            if (std::holds_alternative<double>(value)) {
                entry["type"] = "double";
                entry["value"] = std::get<double>(value);
            } else if (std::holds_alternative<bool>(value)) {
                entry["type"] = "bool";
                entry["value"] = std::get<bool>(value);
            } else {
                entry["type"] = "int";
                entry["value"] = std::get<int>(value);
            }
            s[VmUtf8FromWide(key)] = entry;
        }
    }
    const json root = {{"version", 1}, {"sections", sections}};
    const std::string text = root.dump(2) + "\n";

    std::error_code ec;
    const std::filesystem::path target(path);
    if (target.has_parent_path())
        std::filesystem::create_directories(target.parent_path(), ec);
    const std::string temp = path + ".tmp" + std::to_string(::getpid());
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        out << text;
        out.flush();
        if (!out) {
            if (error)
                *error = "cannot write " + temp;
            std::remove(temp.c_str());
            return false;
        }
    }
    std::filesystem::rename(temp, target, ec);
    if (ec) {
        if (error)
            *error = "cannot replace " + path + ": " + ec.message();
        std::remove(temp.c_str());
        return false;
    }
    return true;
}
