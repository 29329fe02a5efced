#include "host/ui/CVelmoApp.h"

#include "host/base/GK_String.h"
#include "host/ui/VmMessages.h"

#include <cstdarg>

CVelmoApp& VelmoApp() {
    static CVelmoApp app;
    return app;
}

namespace {
int waitCursorDepth = 0;
CVelmoWaitCursor::Listener& WaitCursorListener() {
    static CVelmoWaitCursor::Listener listener;
    return listener;
}
} // namespace

CVelmoWaitCursor::CVelmoWaitCursor() {
    if (waitCursorDepth++ == 0 && WaitCursorListener())
        WaitCursorListener()(true);
}

CVelmoWaitCursor::~CVelmoWaitCursor() {
    if (--waitCursorDepth == 0 && WaitCursorListener())
        WaitCursorListener()(false);
}

void CVelmoWaitCursor::SetListener(Listener listener) {
    WaitCursorListener() = std::move(listener);
}

int CVelmoWaitCursor::Depth() {
    return waitCursorDepth;
}

void CVelmoApp::Print(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const std::wstring text = VmFormatV(format, args);
    va_end(args);
    VmMessages().Add("print", L"", text);
}

void CVelmoApp::DoHelp(const wchar_t* topic) {
    VmMessages().Add("print", L"", std::wstring(L"Help: ") + (topic ? topic : L"") + L"\n");
}
