#pragma once
// Command-line questions: a prompt with clickable options, and a prompt for a string.
#include "host/base/GK_Array.h"
#include "host/base/GK_String.h"

#include <optional>
#include <string>
#include <vector>

struct CVelmoCommandOptionName {
    const wchar_t* english = L"";
    const wchar_t* local = L"";
};
struct CVelmoCommandOptionValue {
    const wchar_t* english = L"";
    const wchar_t* local = L"";
};

CVelmoCommandOptionName VmLocalizeCommandOptionName(const wchar_t* english, int contextId);
CVelmoCommandOptionValue VmLocalizeCommandOptionValue(const wchar_t* english, int contextId);

class CVelmoCommandOption {
public:
    enum Type { toggle, number, list };

    Type m_type = toggle;
    int m_option_index = 0;
    CVelmoCommandOptionName m_name;
    // toggle
    bool* m_toggle_value = nullptr;
    CVelmoCommandOptionValue m_toggle_off, m_toggle_on;
    // number
    double* m_number_value = nullptr;
    bool m_number_integer = false;
    double m_number_lower = 0.0, m_number_upper = 0.0;
    bool m_number_bounded = false;
    // list
    std::vector<CVelmoCommandOptionValue> m_list_values;
    int m_list_option_current = 0;

    const wchar_t* EnglishOptionName() const { return m_name.english; }
    const wchar_t* LocalOptionName() const { return m_name.local; }
    // "Name=Value" as the prompt shows it.
    std::wstring Describe() const;
};

class CVelmoGet {
public:
    enum result { cancel = 0, nothing = 1, option = 2, number = 3, string = 4 };

    virtual ~CVelmoGet();
    void SetCommandPrompt(const wchar_t* prompt) { m_prompt = prompt ? prompt : L""; }
    void AcceptNothing(bool enable = true) { m_acceptNothing = enable; }
    void ClearCommandOptions() { m_options.clear(); }

    // Each returns the new option's index, from 1.
    int AddCommandOptionToggle(CVelmoCommandOptionName name, CVelmoCommandOptionValue offValue,
                               CVelmoCommandOptionValue onValue, bool* value);
    int AddCommandOptionNumber(CVelmoCommandOptionName name, double* value,
                               const wchar_t* prompt = nullptr, bool integerValue = false,
                               double lowerLimit = -1.0e300, double upperLimit = 1.0e300);
    int AddCommandOptionList(CVelmoCommandOptionName name,
                             const GK_ClassArray<CVelmoCommandOptionValue>& values,
                             int listCurrentIndex);

    const CVelmoCommandOption* Option() const { return m_chosen; }
    int OptionIndex() const { return m_chosen ? m_chosen->m_option_index : 0; }
    result Result() const { return m_result; }

protected:
    // The prompt line as the command line shows it, options in parentheses.
    std::wstring PromptLine() const;
    // Applies an option answer ("Name", "Name=Value"); false when it names no option or the
    // value does not fit. A bare number or list name asks for the value.
    bool ApplyOptionAnswer(const std::string& answer);
    std::optional<std::string> NextAnswer(const std::wstring& prompt);
    // Asks until an answer fits: an option, Enter, cancel, or (when `takesText`) any text,
    // which is kept in m_text.
    result Ask(bool takesText);

    std::wstring m_prompt;
    bool m_acceptNothing = false;
    std::vector<CVelmoCommandOption> m_options;
    const CVelmoCommandOption* m_chosen = nullptr;
    result m_result = cancel;
    std::wstring m_text;
};

class CVelmoGetOption : public CVelmoGet {
public:
    ~CVelmoGetOption() override;
    // Asks once; returns option (the chosen one is Option()), nothing, or cancel.
    result GetOption();
};

class CVelmoGetString : public CVelmoGet {
public:
    ~CVelmoGetString() override;
    // Asks once; returns string (the text is String()), nothing, option or cancel.
    result GetString();
    const GK_wString& String() const { return m_string; }

private:
    GK_wString m_string;
};
