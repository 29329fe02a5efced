// Entry of the `tarquil` program; nothing thrown may end it without a word.
#include "cli/TarquilApp.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    try {
        return RunTarquil(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "tarquil: error: " << e.what() << "\n";
    } catch (...) {
        std::cerr << "tarquil: error: an unexpected failure\n";
    }
    return kExitFailure;
}
