#include "pdf/input/MemoryInput.h"

// strstream is deprecated but is the standard's only stream over borrowed bytes before
// C++23's spanstream; its length-0 rule is wanted here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <strstream>

std::unique_ptr<std::istream> MakeMemoryInput(const char* data, std::size_t length) {
    return std::make_unique<std::istrstream>(data ? data : "",
                                             static_cast<std::streamsize>(length));
}
#pragma GCC diagnostic pop
