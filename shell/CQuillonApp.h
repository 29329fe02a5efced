#pragma once
// The library's application object for the dialog framework. It has no logic of its own.
#include "host/ui/CWinApp.h"

class CQuillonApp : public CWinApp {
public:
    CQuillonApp();
    bool InitInstance() override;
};
