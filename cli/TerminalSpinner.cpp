#include "cli/TerminalSpinner.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace {

void WriteAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n <= 0)
            return; // a terminal that cannot be written to gets no spinner
        done += static_cast<std::size_t>(n);
    }
}

} // namespace

TerminalSpinner::TerminalSpinner(int fd, std::chrono::milliseconds delay,
                                 std::chrono::milliseconds period)
    : m_fd(fd), m_delay(delay), m_period(period) {}

TerminalSpinner::~TerminalSpinner() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_quit = true;
        ClearLocked();
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

bool TerminalSpinner::IsTerminal(int fd) {
    return ::isatty(fd) == 1;
}

void TerminalSpinner::Show() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_shown = true;
        m_since = std::chrono::steady_clock::now();
        if (!m_thread.joinable())
            m_thread = std::thread([this] { Run(); });
    }
    m_wake.notify_all();
}

void TerminalSpinner::Hide() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_shown = false;
        ClearLocked();
    }
    m_wake.notify_all();
}

void TerminalSpinner::Suspend() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_suspended = true;
    ClearLocked();
}

void TerminalSpinner::Resume() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_suspended = false;
    }
    m_wake.notify_all();
}

void TerminalSpinner::Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_quit) {
        if (!m_shown || m_suspended || m_lineOpen) {
            m_wake.wait(lock);
            continue;
        }
        const auto due = m_since + m_delay;
        if (std::chrono::steady_clock::now() < due) {
            m_wake.wait_until(lock, due);
            continue;
        }
        DrawLocked();
        m_wake.wait_for(lock, m_period);
    }
}

bool TerminalSpinner::Write(std::ostream& target, const char* text, std::streamsize count) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ClearLocked();
        target.write(text, count);
        target.flush();
        if (count > 0)
            m_lineOpen = text[count - 1] != '\n';
    }
    m_wake.notify_all();
    return static_cast<bool>(target);
}

void TerminalSpinner::DrawLocked() {
    static const char frames[] = {'|', '/', '-', '\\'};
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_since).count();
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%c importing %.1f s",
                                     frames[m_frame++ % sizeof frames], seconds);
    if (length <= 0)
        return;
    // Padded to what was there, so a shorter line leaves nothing of the longer one.
    std::string line(1, '\r');
    line.append(text, static_cast<std::size_t>(length));
    if (m_width > static_cast<std::size_t>(length))
        line.append(m_width - static_cast<std::size_t>(length), ' ');
    WriteAll(m_fd, line);
    m_width = std::max(m_width, static_cast<std::size_t>(length));
    m_drawn = true;
}

void TerminalSpinner::ClearLocked() {
    if (!m_drawn)
        return;
    std::string blank(m_width + 2, ' ');
    blank.front() = blank.back() = '\r';
    WriteAll(m_fd, blank);
    m_drawn = false;
}

GuardedOutput::GuardedOutput(TerminalSpinner& spinner, std::ostream& target)
    : std::ostream(nullptr), m_buffer(spinner, target) {
    rdbuf(&m_buffer);
}

GuardedOutput::Buffer::int_type GuardedOutput::Buffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    const char ch = traits_type::to_char_type(c);
    return xsputn(&ch, 1) == 1 ? c : traits_type::eof();
}

std::streamsize GuardedOutput::Buffer::xsputn(const char* text, std::streamsize count) {
    return m_spinner.Write(m_target, text, count) ? count : 0;
}

int GuardedOutput::Buffer::sync() {
    m_target.flush();
    return m_target ? 0 : -1;
}

GuardedInput::GuardedInput(TerminalSpinner& spinner, std::istream& source)
    : std::istream(nullptr), m_buffer(spinner, source) {
    rdbuf(&m_buffer);
}

GuardedInput::Buffer::int_type GuardedInput::Buffer::Read(bool take) {
    m_spinner.Suspend();
    std::streambuf* source = m_source.rdbuf();
    const int_type c = source ? (take ? source->sbumpc() : source->sgetc()) : traits_type::eof();
    m_spinner.Resume();
    return c;
}

GuardedInput::Buffer::int_type GuardedInput::Buffer::underflow() {
    return Read(false);
}

GuardedInput::Buffer::int_type GuardedInput::Buffer::uflow() {
    return Read(true);
}
