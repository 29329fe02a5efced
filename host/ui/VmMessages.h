#pragma once
// Everything the host shows the user in message boxes and on its command line, kept in
// order so that a headless run can report it, and echoed to a stream as it happens.
#include <iosfwd>
#include <string>
#include <vector>

struct VmMessage {
    std::string kind; // "box", "print", "warning", "prompt"
    std::wstring title;
    std::wstring text;
    unsigned flags = 0;
};

class VmMessageLog {
public:
    void Add(const char* kind, const std::wstring& title, const std::wstring& text,
             unsigned flags = 0);
    const std::vector<VmMessage>& Messages() const { return m_messages; }
    void Clear() { m_messages.clear(); }
    // Where messages are echoed; null for silence. Standard error by default.
    void SetEcho(std::ostream* echo) { m_echo = echo; }
    std::ostream* Echo() const { return m_echo; }

private:
    std::vector<VmMessage> m_messages;
    std::ostream* m_echo = nullptr;
};

VmMessageLog& VmMessages();
