#pragma once
// The dialog framework's application object. A library that uses the framework has exactly
// one, made by its static initialisation when it is loaded; the framework starts it after the
// load (InitInstance) and stops it before the unload (ExitInstance).

class CWinApp {
public:
    // Notes the object with the library being loaded (VmModuleObjects), so the loader can find
    // and start it.
    explicit CWinApp(const wchar_t* appName = nullptr);
    virtual ~CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;

    // True when the application is ready; a false start refuses the library.
    virtual bool InitInstance();
    // The exit code of the application; 0 when all went well.
    virtual int ExitInstance();

    const wchar_t* AppName() const { return m_appName; }

private:
    const wchar_t* m_appName; // borrowed: a literal of the module that made the object
};

// The framework's version, which a library that uses the framework must have been built for.
inline constexpr int kVelmoFrameworkVersion = 0x0E00;
