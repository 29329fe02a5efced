#pragma once
// Where a headless host gets the user's answers: first a script given by the caller, then
// the terminal when one is attached, otherwise each question's default.
#include <nlohmann/json.hpp>

#include <deque>
#include <iosfwd>
#include <optional>
#include <string>

class VmUiDriver {
public:
    // Answers consumed in order by prompts, dialogs and named callbacks.
    void SetScript(const nlohmann::json& answers);
    void AddScriptAnswer(const nlohmann::json& answer) { m_script.push_back(answer); }
    std::optional<nlohmann::json> NextScripted();
    std::size_t ScriptLeft() const { return m_script.size(); }

    // A terminal to ask on when the script has run out; null detaches it.
    void SetTerminal(std::istream* in, std::ostream* out) {
        m_in = in;
        m_out = out;
    }
    bool HasTerminal() const { return m_in != nullptr; }
    // Shows the prompt and reads one line; nullopt at end of input or without a terminal.
    std::optional<std::string> ReadTerminalLine(const std::string& prompt);
    void WriteTerminal(const std::string& text);

    // The answer to every string prompt (the page prompt), ahead of the script.
    void SetStringAnswer(std::optional<std::string> answer) { m_stringAnswer = std::move(answer); }
    const std::optional<std::string>& StringAnswer() const { return m_stringAnswer; }

    void Reset();

private:
    std::deque<nlohmann::json> m_script;
    std::istream* m_in = nullptr;
    std::ostream* m_out = nullptr;
    std::optional<std::string> m_stringAnswer;
};

VmUiDriver& VmUi();

// Words that answer any prompt the same way in a script or at the terminal.
bool VmIsCancelAnswer(const std::string& answer);
bool VmIsEnterAnswer(const std::string& answer);
