#include "host/ui/CWinApp.h"

#include "host/plugin/VmModuleObjects.h"

CWinApp::CWinApp(const wchar_t* appName) : m_appName(appName ? appName : L"") {
    VmNoteModuleApp(this, true);
}

CWinApp::~CWinApp() {
    VmNoteModuleApp(this, false);
}

bool CWinApp::InitInstance() {
    return true;
}

int CWinApp::ExitInstance() {
    return 0;
}
