#pragma once
// What the inspect commands share: reading input, writing bytes, bytes in JSON.
#include <string>

// Each byte becomes the character of the same number, so any byte survives in JSON.
std::string BytesAsLatin1Utf8(const std::string& bytes);
// A file's bytes, or standard input's for "-"; false (with a message) when unreadable.
bool ReadInput(const std::string& file, std::string& bytes);
// Bytes to a file, or standard output for "-"; false (with a message) when not written.
bool WriteOutput(const std::string& file, const std::string& bytes);
