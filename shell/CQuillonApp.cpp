#include "shell/CQuillonApp.h"

CQuillonApp::CQuillonApp() : CWinApp(L"Tarquil") {}

bool CQuillonApp::InitInstance() {
    (void)CWinApp::InitInstance();
    return true;
}
