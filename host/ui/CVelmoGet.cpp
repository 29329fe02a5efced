#include "host/ui/CVelmoGet.h"

#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <charconv>
#include <cmath>
#include <cwctype>

CVelmoCommandOptionName VmLocalizeCommandOptionName(const wchar_t* english, int /*contextId*/) {
    return {english, english};
}

CVelmoCommandOptionValue VmLocalizeCommandOptionValue(const wchar_t* english, int /*contextId*/) {
    return {english, english};
}

CVelmoGet::~CVelmoGet() = default;
CVelmoGetOption::~CVelmoGetOption() = default;
CVelmoGetString::~CVelmoGetString() = default;

namespace {

std::wstring NumberText(double v) {
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, v);
    return VmWideFromUtf8(std::string(buf, r.ptr));
}

bool SameNoCase(const std::wstring& a, const std::wstring& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::towlower(static_cast<wint_t>(a[i])) != std::towlower(static_cast<wint_t>(b[i])))
            return false;
    return true;
}

bool ParseNumber(const std::string& text, double& value) {
    std::size_t b = 0, e = text.size();
    while (b < e && text[b] == ' ')
        ++b;
    while (e > b && text[e - 1] == ' ')
        --e;
    if (b < e && text[b] == '+')
        ++b;
    if (b == e)
        return false;
    const auto r = std::from_chars(text.data() + b, text.data() + e, value);
    return r.ec == std::errc() && r.ptr == text.data() + e && std::isfinite(value);
}

} // namespace

std::wstring CVelmoCommandOption::Describe() const {
    std::wstring s = m_name.local;
    switch (m_type) {
    case toggle:
        s += L"=";
        s += (m_toggle_value && *m_toggle_value) ? m_toggle_on.local : m_toggle_off.local;
        break;
    case number:
        if (m_number_value)
            s += L"=" + NumberText(*m_number_value);
        break;
    case list:
        if (m_list_option_current >= 0 &&
            m_list_option_current < static_cast<int>(m_list_values.size()))
            s += std::wstring(L"=") + m_list_values[m_list_option_current].local;
        break;
    }
    return s;
}

int CVelmoGet::AddCommandOptionToggle(CVelmoCommandOptionName name,
                                      CVelmoCommandOptionValue offValue,
                                      CVelmoCommandOptionValue onValue, bool* value) {
    CVelmoCommandOption o;
    o.m_type = CVelmoCommandOption::toggle;
    o.m_name = name;
    o.m_toggle_off = offValue;
    o.m_toggle_on = onValue;
    o.m_toggle_value = value;
    o.m_option_index = static_cast<int>(m_options.size()) + 1;
    m_options.push_back(o);
    return o.m_option_index;
}

int CVelmoGet::AddCommandOptionNumber(CVelmoCommandOptionName name, double* value,
                                      const wchar_t* /*prompt*/, bool integerValue,
                                      double lowerLimit, double upperLimit) {
    CVelmoCommandOption o;
    o.m_type = CVelmoCommandOption::number;
    o.m_name = name;
    o.m_number_value = value;
    o.m_number_integer = integerValue;
    o.m_number_lower = lowerLimit;
    o.m_number_upper = upperLimit;
    o.m_number_bounded = true;
    o.m_option_index = static_cast<int>(m_options.size()) + 1;
    m_options.push_back(o);
    return o.m_option_index;
}

int CVelmoGet::AddCommandOptionList(CVelmoCommandOptionName name,
                                    const GK_ClassArray<CVelmoCommandOptionValue>& values,
                                    int listCurrentIndex) {
    CVelmoCommandOption o;
    o.m_type = CVelmoCommandOption::list;
    o.m_name = name;
    for (const auto& v : values)
        o.m_list_values.push_back(v);
    o.m_list_option_current = listCurrentIndex;
    o.m_option_index = static_cast<int>(m_options.size()) + 1;
    m_options.push_back(o);
    return o.m_option_index;
}

std::wstring CVelmoGet::PromptLine() const {
    std::wstring line = m_prompt;
    if (m_acceptNothing)
        line += L" <Enter>";
    if (!m_options.empty()) {
        line += L" (";
        for (const auto& o : m_options)
            line += L" " + o.Describe();
        line += L" )";
    }
    return line + L": ";
}

std::optional<std::string> CVelmoGet::NextAnswer(const std::wstring& prompt) {
    VmMessages().Add("prompt", L"", prompt);
    std::optional<std::string> answer;
    if (auto scripted = VmUi().NextScripted()) {
        answer = scripted->is_string() ? scripted->get<std::string>()
                 : scripted->is_null() ? std::string()
                                       : scripted->dump();
    } else {
        answer = VmUi().ReadTerminalLine("");
    }
    VmMessages().Add("print", L"", VmWideFromUtf8(answer.value_or("")) + L"\n");
    return answer;
}

bool CVelmoGet::ApplyOptionAnswer(const std::string& answer) {
    const std::size_t eq = answer.find('=');
    const std::wstring name = VmWideFromUtf8(answer.substr(0, eq));
    std::optional<std::string> value;
    if (eq != std::string::npos)
        value = answer.substr(eq + 1);

    CVelmoCommandOption* found = nullptr;
    for (auto& o : m_options)
        if (SameNoCase(name, o.m_name.english) || SameNoCase(name, o.m_name.local))
            found = &o;
    if (!found)
        return false;

    switch (found->m_type) {
    case CVelmoCommandOption::toggle: {
        if (!found->m_toggle_value)
            return false;
        if (!value) {
            *found->m_toggle_value = !*found->m_toggle_value;
        } else {
            const std::wstring v = VmWideFromUtf8(*value);
            if (SameNoCase(v, found->m_toggle_on.english) ||
                SameNoCase(v, found->m_toggle_on.local))
                *found->m_toggle_value = true;
            else if (SameNoCase(v, found->m_toggle_off.english) ||
                     SameNoCase(v, found->m_toggle_off.local))
                *found->m_toggle_value = false;
            else
                return false;
        }
        break;
    }
    case CVelmoCommandOption::number: {
        if (!value)
            value = NextAnswer(std::wstring(found->m_name.local) + L" <" +
                               (found->m_number_value ? NumberText(*found->m_number_value) : L"") +
                               L">: ");
        double v = 0.0;
        if (!value || !ParseNumber(*value, v))
            return false;
        if (found->m_number_bounded && (v < found->m_number_lower || v > found->m_number_upper))
            return false;
        if (found->m_number_integer)
            v = std::trunc(v);
        if (found->m_number_value)
            *found->m_number_value = v;
        break;
    }
    case CVelmoCommandOption::list: {
        const int n = static_cast<int>(found->m_list_values.size());
        if (!value) {
            if (n > 0)
                found->m_list_option_current = (found->m_list_option_current + 1) % n;
            break;
        }
        const std::wstring v = VmWideFromUtf8(*value);
        int index = -1;
        for (int i = 0; i < n; ++i)
            if (SameNoCase(v, found->m_list_values[i].english) ||
                SameNoCase(v, found->m_list_values[i].local))
                index = i;
        if (index < 0)
            return false;
        found->m_list_option_current = index;
        break;
    }
    }
    m_chosen = found;
    return true;
}

CVelmoGet::result CVelmoGet::Ask(bool takesText) {
    m_chosen = nullptr;
    // A script or a terminal may give answers that fit nothing; each is reported and the
    // question asked again, so only the end of all answers gives the default.
    for (;;) {
        const auto answer = NextAnswer(PromptLine());
        if (!answer)
            return m_result = m_acceptNothing ? nothing : cancel;
        if (VmIsCancelAnswer(*answer))
            return m_result = cancel;
        if (VmIsEnterAnswer(*answer)) {
            if (m_acceptNothing)
                return m_result = nothing;
            continue;
        }
        if (!m_options.empty() && ApplyOptionAnswer(*answer))
            return m_result = option;
        if (takesText) {
            m_text = VmWideFromUtf8(*answer);
            return m_result = string;
        }
        VmMessages().Add("print", L"",
                         L"Unknown command option: " + VmWideFromUtf8(*answer) + L"\n");
    }
}

CVelmoGet::result CVelmoGetOption::GetOption() {
    return Ask(false);
}

CVelmoGet::result CVelmoGetString::GetString() {
    m_string.Empty();
    if (const auto& fixed = VmUi().StringAnswer()) {
        m_chosen = nullptr;
        VmMessages().Add("prompt", L"", PromptLine());
        VmMessages().Add("print", L"", VmWideFromUtf8(*fixed) + L"\n");
        if (VmIsCancelAnswer(*fixed))
            return m_result = cancel;
        if (fixed->empty() || *fixed == "<enter>")
            return m_result = m_acceptNothing ? nothing : cancel;
        m_string = GK_wString(VmWideFromUtf8(*fixed));
        return m_result = string;
    }
    const result r = Ask(true);
    if (r == string)
        m_string = GK_wString(m_text);
    return r;
}
