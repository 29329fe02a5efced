#include "host/ui/VmMessages.h"

#include "host/base/GK_String.h"

#include <iostream>

VmMessageLog& VmMessages() {
    static VmMessageLog log = [] {
        VmMessageLog l;
        l.SetEcho(&std::cerr);
        return l;
    }();
    return log;
}

void VmMessageLog::Add(const char* kind, const std::wstring& title, const std::wstring& text,
                       unsigned flags) {
    m_messages.push_back({kind, title, text, flags});
    if (!m_echo)
        return;
    const std::string k = kind;
    if (k == "box")
        *m_echo << "[" << VmUtf8FromWide(title) << "] " << VmUtf8FromWide(text) << "\n";
    else if (k == "warning")
        *m_echo << "warning: " << VmUtf8FromWide(text) << "\n";
    else
        *m_echo << VmUtf8FromWide(text); // prints and prompts carry their own line ends
    m_echo->flush();
}
