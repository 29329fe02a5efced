#pragma once
// Objects packed in object streams: the header of number pairs and the stream's bytes.
#include "pdf/token/PDFError.h"

#include <cstdint>
#include <istream>
#include <string>
#include <utility>
#include <vector>

class PDFDocument;

struct ObjectStreamHeader {
    std::int32_t count = 0;                                     // /N, kept and not used
    std::int32_t first = 0;                                     // /First
    std::string data;                                           // the decoded bytes
    std::vector<std::pair<std::int32_t, std::int32_t>> objects; // number and offset
};

// Words of the text up to its first NUL, split at white space; a double quote starts a run
// taken without its quotes and with any white space in it, up to the next double quote.
std::vector<std::string> SplitWords(const std::string& text);

// Reads the object stream at the input's position. Returns 0, -1 (no stream there) or a
// status of the read or of the decoding.
[[nodiscard]] PDFStatus ReadObjectStream(ObjectStreamHeader& header, PDFDocument* document,
                                         std::istream* input);

// The number pairs at the head of decoded object-stream data: the first `first` bytes, as
// whole numbers by atol, a word left alone at the end dropped.
std::vector<std::pair<std::int32_t, std::int32_t>> ObjectStreamPairs(const std::string& data,
                                                                     std::int32_t first);
