#pragma once
// What a headless host shows for the wait cursor: on a terminal, a turning bar with the time
// since the cursor went up, on one line that is cleared when it comes down. A long import
// thus does not look hung. It turns on a thread of its own, as the import holds the main one.
//
// Everything else the program writes to the terminal while the bar is up goes through
// GuardedOutput, which clears the bar's line first, and reading the terminal (a prompt
// waiting for its answer) through GuardedInput, which stops the bar until the answer is in.
#include <chrono>
#include <condition_variable>
#include <istream>
#include <mutex>
#include <ostream>
#include <streambuf>
#include <thread>

class TerminalSpinner {
public:
    // Draws on the file descriptor `fd` (not owned) after `delay`, then every `period`.
    explicit TerminalSpinner(int fd,
                             std::chrono::milliseconds delay = std::chrono::milliseconds(300),
                             std::chrono::milliseconds period = std::chrono::milliseconds(100));
    TerminalSpinner(const TerminalSpinner&) = delete;
    TerminalSpinner& operator=(const TerminalSpinner&) = delete;
    ~TerminalSpinner();

    // Whether the spinner belongs on `fd` at all: only a terminal, never a pipe or a file.
    static bool IsTerminal(int fd);

    void Show();
    void Hide(); // the line is cleared
    // While the terminal is being read, the bar is off its line.
    void Suspend();
    void Resume();

    // Writes text to the same terminal through `target`, with the bar's line cleared first.
    // Text that leaves a line unfinished (a prompt) keeps the bar off until a line end.
    bool Write(std::ostream& target, const char* text, std::streamsize count);

private:
    void Run();
    void DrawLocked();
    void ClearLocked();

    const int m_fd;
    const std::chrono::milliseconds m_delay, m_period;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::thread m_thread;
    bool m_shown = false; // the wait cursor is up
    bool m_suspended = false;
    bool m_quit = false;
    bool m_drawn = false;    // the line holds the bar
    bool m_lineOpen = false; // others wrote part of a line, which the bar must not overwrite
    std::size_t m_width = 0; // of what was drawn
    unsigned m_frame = 0;
    std::chrono::steady_clock::time_point m_since;
};

// A stream that writes through to another one with the spinner's line cleared first.
class GuardedOutput : public std::ostream {
public:
    GuardedOutput(TerminalSpinner& spinner, std::ostream& target);

private:
    class Buffer : public std::streambuf {
    public:
        Buffer(TerminalSpinner& spinner, std::ostream& target)
            : m_spinner(spinner), m_target(target) {}

    protected:
        int_type overflow(int_type c) override;
        std::streamsize xsputn(const char* text, std::streamsize count) override;
        int sync() override;

    private:
        TerminalSpinner& m_spinner; // borrowed
        std::ostream& m_target;     // borrowed
    };
    Buffer m_buffer;
};

// A stream that reads from another one with the spinner suspended while it waits.
class GuardedInput : public std::istream {
public:
    GuardedInput(TerminalSpinner& spinner, std::istream& source);

private:
    class Buffer : public std::streambuf {
    public:
        Buffer(TerminalSpinner& spinner, std::istream& source)
            : m_spinner(spinner), m_source(source) {}

    protected:
        int_type underflow() override;
        int_type uflow() override;

    private:
        int_type Read(bool take);
        TerminalSpinner& m_spinner; // borrowed
        std::istream& m_source;     // borrowed
    };
    Buffer m_buffer;
};
