#pragma once
// The application object: its headless state and its command line.

class CVelmoApp {
public:
    bool IsHeadless() const { return m_headless; }
    void SetHeadless(bool headless) { m_headless = headless; }
    // Text on the command line, printf-style with the host's wide conventions.
    void Print(const wchar_t* format, ...);
    // Opens a help topic; a headless host only notes it on the command line.
    void DoHelp(const wchar_t* topic);

private:
    bool m_headless = true;
};

CVelmoApp& VelmoApp();

// Shows the wait cursor for its lifetime.
class CVelmoWaitCursor {
public:
    CVelmoWaitCursor();
    ~CVelmoWaitCursor();
    CVelmoWaitCursor(const CVelmoWaitCursor&) = delete;
    CVelmoWaitCursor& operator=(const CVelmoWaitCursor&) = delete;
    // How many are alive. The count is the host's, one for all modules, so it is kept in
    // the host's core and not in this header.
    static int Depth();
};
