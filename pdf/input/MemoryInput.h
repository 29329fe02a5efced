#pragma once
// Reading bytes held in memory (decoded content streams, members of object streams) as a
// std::istream. A length of 0 measures the bytes up to their first NUL, as the standard
// library's strstream does; readers rely on that for empty members.
#include <istream>
#include <memory>
#include <string>

// A stream over `length` bytes at `data`; the bytes must outlive the stream.
std::unique_ptr<std::istream> MakeMemoryInput(const char* data, std::size_t length);
