#pragma once
// A mistake on the command line. It ends the program with status 2, and its text is shown
// to the user as it is, so it must say what was wrong and with what.
#include <stdexcept>
#include <string>

class UsageError : public std::runtime_error {
public:
    explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};
