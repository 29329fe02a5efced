#pragma once
// Reads a font's ToUnicode CMap into one flat map from code to value. The CMap is not
// interpreted as PostScript: the lexical parser piles everything on the operand stack, and
// only the section words below act on it. Codes of every length share one key space, and a
// codespace range just fills identity entries.
#include "fonts/FontRecord.h"
#include "pdf/parser/PDFParser.h"

#include <cstddef>
#include <cstdint>
#include <string>

class ToUnicodeParser : public PDFParser {
public:
    // Reads `bytes`, the decoded stream, which it copies.
    explicit ToUnicodeParser(const std::string& bytes);

    [[nodiscard]] PDFStatus ExecuteWord(const std::string& word, PDFDocument* document) override;
    ~ToUnicodeParser() override;

    // A string's bytes taken big-endian as one number; 0 for any length but 1 to 4.
    static std::uint32_t CodeFromHex(const std::string& bytes);

    // Range sections may write this many entries in all, once per code, plus this many for
    // each byte of the CMap. The floor covers four full two-byte ranges, which a CMap can
    // name in a dozen bytes each (an identity bfrange, a codespace <0000> <FFFF>); the part
    // per byte is above what a conforming CMap can need, whose ranges span at most 256 codes
    // in at least 12 bytes each. A hostile one (<00000000> <FFFFFFFF>, or thousands of full
    // ranges) so costs time and memory in proportion to its size, and its last ranges are
    // cut short.
    static constexpr std::size_t kRangeWriteFloor = std::size_t(1) << 18;
    static constexpr std::size_t kRangeWritesPerByte = 32;

    CodeMap codeMap;
    std::int32_t sectionCount = 0; // the count given to the last begin word

private:
    // The entries of one section lie on the stack; each is popped, last operand first.
    void BfCharSection();
    void CodespaceSection();
    void CidRangeSection();
    void NotdefRangeSection();
    void BfRangeSection();
    // How often a section's loop needs to run: sectionCount, but once the stack is empty
    // every further round reads the same zeros and writes what the first one wrote.
    std::int64_t SectionRounds() const;
    // Codes [first, last] to value, value + 1, ...; with `wrap`, keys and values are taken
    // modulo 65536. Spends the write budget.
    void FillRange(std::uint64_t first, std::uint64_t last, std::uint32_t value, bool step,
                   bool wrap);

    std::size_t rangeBudget;
};
