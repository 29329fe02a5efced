#pragma once
// The open PDF file: its cross-reference table and the objects loaded from it.
#include "pdf/token/PDFError.h"
#include "pdf/token/PDFToken.h"

#include <cstdint>
#include <istream>
#include <vector>

struct XrefEntry {
    std::int64_t offset = 0;        // file position, for entries not in an object stream
    std::int32_t generation = -1;   // -1: no section has set this entry
    std::uint16_t type = 0;         // 0 free, 1 in the file, 2 in an object stream
    std::uint32_t streamObject = 0; // type 2: number of the object stream
    std::uint32_t streamIndex = 0;  // type 2: index in that stream
    PDFToken* object = nullptr;     // owned; null until loaded
};

class PDFDocument {
public:
    // Reads from `input`, which the document does not own.
    explicit PDFDocument(std::istream* input);
    ~PDFDocument();
    PDFDocument(const PDFDocument&) = delete;
    PDFDocument& operator=(const PDFDocument&) = delete;

    // Loads an object by number; `*out` is borrowed and lives as long as the document.
    [[nodiscard]] PDFStatus LoadObject(std::int32_t objectNumber, std::int32_t generation,
                                       PDFToken** out);

    std::vector<XrefEntry> entries;
    PDFToken* root = nullptr; // owned
    std::istream* input;
    bool ownsInput = false;
    PDFToken* pageProperties = nullptr;

private:
    [[nodiscard]] PDFStatus LoadFromOffset(std::size_t index);

    // Objects being loaded right now, innermost last: a stream whose /Length leads back to
    // itself, or a chain of such lengths deeper than any real file has, fails instead of
    // exhausting the stack.
    std::vector<std::int32_t> loading;
    static constexpr std::size_t kMaxLoadDepth = 64;
};
