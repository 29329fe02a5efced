#pragma once
// The application object: its headless state and its command line.
#include <functional>
#include <utility>

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

// Shows the wait cursor for its lifetime. Nested cursors are one: the host that draws it
// hears through its listener when it goes up and when it comes down.
class CVelmoWaitCursor {
public:
    using Listener = std::function<void(bool shown)>;

    CVelmoWaitCursor();
    ~CVelmoWaitCursor();
    CVelmoWaitCursor(const CVelmoWaitCursor&) = delete;
    CVelmoWaitCursor& operator=(const CVelmoWaitCursor&) = delete;
    // How many are alive. The count and the listener are the host's, one for all modules, so
    // they are kept in the host's core and not in this header.
    static int Depth();
    // Told when the cursor goes up and when it comes down; an empty listener draws nothing.
    static void SetListener(Listener listener);
};
