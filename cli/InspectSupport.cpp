#include "cli/InspectSupport.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

std::string BytesAsLatin1Utf8(const std::string& bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (unsigned char b : bytes) {
        if (b < 0x80) {
            out += static_cast<char>(b);
        } else {
            out += static_cast<char>(0xC0 | (b >> 6));
            out += static_cast<char>(0x80 | (b & 0x3F));
        }
    }
    return out;
}

bool ReadInput(const std::string& file, std::string& bytes) {
    if (file == "-") {
        std::ostringstream s;
        s << std::cin.rdbuf();
        bytes = s.str();
        return true;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        std::cerr << "tarquil: cannot read " << file << "\n";
        return false;
    }
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
}

bool WriteOutput(const std::string& file, const std::string& bytes) {
    if (file == "-") {
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        std::cout.flush();
        return static_cast<bool>(std::cout);
    }
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        std::cerr << "tarquil: cannot write " << file << "\n";
    return static_cast<bool>(out);
}
