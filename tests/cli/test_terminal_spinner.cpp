// The wait cursor's spinner, on a pseudo-terminal: it turns while shown, keeps clear of other
// output and of an unfinished prompt line, and leaves the terminal as it found it.
#include "cli/TerminalSpinner.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::chrono_literals;

// A pseudo-terminal: what is written to `terminal` can be read from the other side.
class PseudoTerminal {
public:
    PseudoTerminal() {
        m_controller = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (m_controller < 0 || ::grantpt(m_controller) != 0 || ::unlockpt(m_controller) != 0)
            return;
        m_name = ::ptsname(m_controller);
        m_terminal = ::open(m_name.c_str(), O_RDWR | O_NOCTTY);
    }
    ~PseudoTerminal() {
        if (m_terminal >= 0)
            ::close(m_terminal);
        if (m_controller >= 0)
            ::close(m_controller);
    }
    bool Ok() const { return m_terminal >= 0; }
    int Terminal() const { return m_terminal; }
    const std::string& Name() const { return m_name; }

    // Everything written so far, once `expected` has turned up (waiting a few seconds at
    // most) and nothing more came for a moment or a second has passed.
    const std::string& Read(const std::string& expected = "") {
        const auto start = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() < start + 5s) {
            pollfd p{m_controller, POLLIN, 0};
            const bool more = ::poll(&p, 1, 10) > 0;
            if (more) {
                char buffer[4096];
                const ssize_t n = ::read(m_controller, buffer, sizeof buffer);
                if (n > 0)
                    m_seen.append(buffer, static_cast<std::size_t>(n));
            }
            if (m_seen.find(expected) != std::string::npos &&
                (!more || std::chrono::steady_clock::now() > start + 1s))
                break;
        }
        return m_seen;
    }

private:
    int m_controller = -1;
    int m_terminal = -1;
    std::string m_name;
    std::string m_seen;
};

// The lines a terminal shows for this output: a carriage return goes back to the start of
// the line and later text overwrites earlier text. Trailing blanks are dropped.
std::vector<std::string> Screen(const std::string& output) {
    std::vector<std::string> lines(1);
    std::size_t column = 0;
    for (const char c : output) {
        if (c == '\n') {
            lines.emplace_back();
            column = 0;
        } else if (c == '\r') {
            column = 0;
        } else {
            std::string& line = lines.back();
            if (column < line.size())
                line[column] = c;
            else
                line += c;
            ++column;
        }
    }
    for (std::string& line : lines)
        line.erase(line.find_last_not_of(' ') + 1);
    return lines;
}

TEST(TerminalSpinner, TurnsOnATerminalKeepsClearAndLeavesNothing) {
    PseudoTerminal pty;
    ASSERT_TRUE(pty.Ok());
    EXPECT_TRUE(TerminalSpinner::IsTerminal(pty.Terminal()));
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    EXPECT_FALSE(TerminalSpinner::IsTerminal(pipeEnds[1])); // a pipe gets no spinner
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);

    std::ofstream terminal(pty.Name());
    {
        TerminalSpinner spinner(pty.Terminal(), 0ms, 40ms);
        GuardedOutput out(spinner, terminal);
        spinner.Show();
        EXPECT_NE(pty.Read(" s").find("importing"), std::string::npos);
        out << "a message\n";
        // A prompt waits on an unfinished line, which the spinner leaves alone; reading the
        // answer suspends it.
        out << "Pages: " << std::flush;
        std::this_thread::sleep_for(50ms);
        std::istringstream typed("1-3\n");
        GuardedInput in(spinner, typed);
        std::string answer;
        std::getline(in, answer);
        EXPECT_EQ(answer, "1-3");
        EXPECT_EQ(Screen(pty.Read("Pages: ")).back(), "Pages:");
        out << "\n";
        pty.Read("\n");
        spinner.Hide();
    }
    const std::vector<std::string> screen = Screen(pty.Read());
    EXPECT_EQ(screen, (std::vector<std::string>{"a message", "Pages:", ""}));
}

} // namespace
