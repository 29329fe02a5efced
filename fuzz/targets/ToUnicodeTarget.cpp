// The ToUnicode CMap reader over arbitrary bytes, as the font loader runs it on a decoded
// stream.
#include "fonts/ToUnicodeParser.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ToUnicodeParser parser(std::string(reinterpret_cast<const char*>(data), size));
    (void)parser.ParseUntil(nullptr);
    return 0;
}
