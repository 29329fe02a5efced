#include "host/ui/VmDialogs.h"

#include "host/base/GK_String.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <charconv>
#include <cmath>
#include <map>

int VelmoMessageBox(const wchar_t* text, const wchar_t* title, unsigned flags) {
    VmMessages().Add("box", title ? title : L"", text ? text : L"", flags);
    return 1;
}

void VmPluginOptionIOWarningDialog(const wchar_t* text, bool /*showAlways*/) {
    VmMessages().Add("warning", L"",
                     VmFormat(L"The %ls import options will now be used without asking. To "
                              L"change them, use the Options button of the Import dialog.",
                              text ? text : L""));
}

namespace {

using nlohmann::json;

// Stores a scripted value under `key`, keeping the type the key already has.
bool StoreJsonValue(CVmParameterDictionary& dict, const std::wstring& key, const json& v) {
    const auto& values = dict.Values();
    const auto it = values.find(key);
    const int kind = it == values.end() ? -1 : static_cast<int>(it->second.index());
    if (v.is_boolean()) {
        if (kind == 0)
            dict.Set(key, v.get<bool>() ? 1 : 0);
        else
            dict.Set(key, v.get<bool>());
        return true;
    }
    if (v.is_number()) {
        const double d = v.get<double>();
        if (kind == 1 || (kind == -1 && v.is_number_float()))
            dict.Set(key, d);
        else if (kind == 2)
            dict.Set(key, d != 0.0);
        else if (std::trunc(d) == d && std::fabs(d) < 2147483648.0)
            dict.Set(key, static_cast<int>(d));
        else
            return false;
        return true;
    }
    if (v.is_string()) {
        dict.Set(key, VmWideFromUtf8(v.get<std::string>()));
        return true;
    }
    return false;
}

std::string DescribeValue(const CVmParameterDictionary::Value& v) {
    if (std::holds_alternative<int>(v))
        return std::to_string(std::get<int>(v));
    if (std::holds_alternative<bool>(v))
        return std::get<bool>(v) ? "true" : "false";
    if (std::holds_alternative<double>(v)) {
        char buf[64];
        const auto r = std::to_chars(buf, buf + sizeof buf, std::get<double>(v));
        return std::string(buf, r.ptr);
    }
    return VmUtf8FromWide(std::get<std::wstring>(v));
}

// The import options dialog of a headless host. A scripted object sets its keys and
// means OK unless it sets "success" itself; anything else leaves the dictionary alone,
// which the caller reads as cancel. At a terminal the user edits values line by line.
void ShowImportOptionsDialog(CVmParameterDictionary& dict) {
    VmMessages().Add("prompt", L"", L"Import options dialog\n");
    if (auto answer = VmUi().NextScripted()) {
        if (!answer->is_object())
            return;
        for (const auto& [key, value] : answer->items())
            StoreJsonValue(dict, VmWideFromUtf8(key), value);
        if (!answer->contains("success"))
            dict.SetInt(L"success", 0);
        return;
    }
    if (!VmUi().HasTerminal())
        return;
    std::string listing = "Import options:\n";
    for (const auto& [key, value] : dict.Values())
        listing += "  " + VmUtf8FromWide(key) + " = " + DescribeValue(value) + "\n";
    VmUi().WriteTerminal(listing + "Type Key=Value to change a value, Enter for OK, "
                                   "<cancel> to cancel.\n");
    for (;;) {
        const auto line = VmUi().ReadTerminalLine("Options: ");
        if (!line || VmIsCancelAnswer(*line))
            return;
        if (line->empty()) {
            dict.SetInt(L"success", 0);
            return;
        }
        const std::size_t eq = line->find('=');
        const json parsed =
            eq == std::string::npos ? json() : json::parse(line->substr(eq + 1), nullptr, false);
        if (eq == std::string::npos || parsed.is_discarded() ||
            !StoreJsonValue(dict, VmWideFromUtf8(line->substr(0, eq)), parsed))
            VmUi().WriteTerminal("Not understood; write Key=Value, e.g. ImportScale=2.5\n");
    }
}

// Callbacks registered at run time, ahead of the built-in ones.
std::map<std::wstring, VmNamedCallback>& Callbacks() {
    static std::map<std::wstring, VmNamedCallback> callbacks;
    return callbacks;
}

VmNamedCallback BuiltInCallback(const std::wstring& name) {
    if (name == L"ShowImportPDFDialog")
        return ShowImportOptionsDialog;
    return {};
}

} // namespace

void VmRegisterNamedCallback(const std::wstring& name, VmNamedCallback callback) {
    if (callback)
        Callbacks()[name] = std::move(callback);
    else
        Callbacks().erase(name);
}

bool VmExecuteNamedCallback(const wchar_t* name, CVmParameterDictionary& dictionary) {
    const std::wstring key = name ? name : L"";
    const auto it = Callbacks().find(key);
    const VmNamedCallback callback = it != Callbacks().end() ? it->second : BuiltInCallback(key);
    if (!callback)
        return false;
    callback(dictionary);
    return true;
}
