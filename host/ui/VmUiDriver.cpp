#include "host/ui/VmUiDriver.h"

#include <istream>
#include <ostream>

VmUiDriver& VmUi() {
    static VmUiDriver driver;
    return driver;
}

void VmUiDriver::SetScript(const nlohmann::json& answers) {
    m_script.clear();
    if (answers.is_array())
        for (const auto& a : answers)
            m_script.push_back(a);
}

std::optional<nlohmann::json> VmUiDriver::NextScripted() {
    if (m_script.empty())
        return std::nullopt;
    nlohmann::json a = std::move(m_script.front());
    m_script.pop_front();
    return a;
}

std::optional<std::string> VmUiDriver::ReadTerminalLine(const std::string& prompt) {
    if (!m_in)
        return std::nullopt;
    WriteTerminal(prompt);
    std::string line;
    if (!std::getline(*m_in, line))
        return std::nullopt;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

void VmUiDriver::WriteTerminal(const std::string& text) {
    if (m_out) {
        *m_out << text;
        m_out->flush();
    }
}

void VmUiDriver::Reset() {
    m_script.clear();
    m_in = nullptr;
    m_out = nullptr;
    m_stringAnswer.reset();
}

bool VmIsCancelAnswer(const std::string& answer) {
    return answer == "<cancel>" || answer == "<escape>";
}

bool VmIsEnterAnswer(const std::string& answer) {
    return answer.empty() || answer == "<enter>";
}
