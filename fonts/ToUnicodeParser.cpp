#include "fonts/ToUnicodeParser.h"

#include <algorithm>
#include <sstream>

ToUnicodeParser::ToUnicodeParser(const std::string& bytes)
    : PDFParser(nullptr, nullptr),
      rangeBudget(kRangeWriteFloor + kRangeWritesPerByte * bytes.size()) {
    SetStream(new std::istringstream(bytes), true);
}

ToUnicodeParser::~ToUnicodeParser() = default;

std::uint32_t ToUnicodeParser::CodeFromHex(const std::string& bytes) {
    if (bytes.empty() || bytes.size() > 4)
        return 0;
    std::uint32_t code = 0;
    for (const char byte : bytes)
        code = (code << 8) | static_cast<unsigned char>(byte);
    return code;
}

PDFStatus ToUnicodeParser::ExecuteWord(const std::string& word, PDFDocument* doc) {
    // The PostScript around the sections does nothing here, and its operands stay.
    if (word == "begincmap" || word == "endcmap" || word == "end" || word == "findresource")
        return kPdfOk;
    if (word == "beginbfchar" || word == "begincodespacerange" || word == "begincidrange" ||
        word == "beginnotdefrange" || word == "beginbfrange") {
        sectionCount = PopInteger();
        return kPdfOk;
    }
    if (word == "endbfchar")
        BfCharSection();
    else if (word == "endcodespacerange")
        CodespaceSection();
    else if (word == "endcidrange")
        CidRangeSection();
    else if (word == "endnotdefrange")
        NotdefRangeSection();
    else if (word == "endbfrange")
        BfRangeSection();
    else
        return PDFParser::ExecuteWord(word, doc);
    return kPdfOk;
}

std::int64_t ToUnicodeParser::SectionRounds() const {
    if (sectionCount < 1)
        return 0;
    return std::min<std::int64_t>(sectionCount, static_cast<std::int64_t>(operandStack.size()) + 1);
}

void ToUnicodeParser::FillRange(std::uint64_t first, std::uint64_t last, std::uint32_t value,
                                bool step, bool wrap) {
    if (first > last)
        return;
    // Keys taken modulo 65536 repeat every 65536 codes, and later codes overwrite earlier
    // ones: the last 65536 codes of a longer range write exactly what the whole would.
    std::uint64_t from = first;
    if (wrap && last - first >= 65536)
        from = last - 65535;
    for (std::uint64_t code = from; code <= last && rangeBudget > 0; ++code, --rangeBudget) {
        std::uint32_t v = step ? value + static_cast<std::uint32_t>(code - first) : value;
        std::uint32_t key = static_cast<std::uint32_t>(code);
        if (wrap) {
            key &= 0xFFFF;
            v &= 0xFFFF;
        }
        codeMap[key] = v;
    }
}

void ToUnicodeParser::BfCharSection() {
    // Popped from the top, so of a doubled source the entry nearest the begin word wins.
    for (std::int64_t i = SectionRounds(); i > 0; --i) {
        const std::uint32_t destination = CodeFromHex(PopString());
        const std::uint32_t source = CodeFromHex(PopString());
        codeMap[source] = destination;
    }
}

void ToUnicodeParser::CodespaceSection() {
    // The high code is left out, unlike notdefrange and bfrange.
    for (std::int64_t i = SectionRounds(); i > 0; --i) {
        const std::uint64_t high = CodeFromHex(PopString());
        const std::uint64_t low = CodeFromHex(PopString());
        if (high > low)
            FillRange(low, high - 1, static_cast<std::uint32_t>(low), true, false);
    }
}

void ToUnicodeParser::CidRangeSection() {
    // The high code is left out here too.
    for (std::int64_t i = SectionRounds(); i > 0; --i) {
        const auto cid = static_cast<std::uint32_t>(PopInteger());
        const std::uint64_t high = CodeFromHex(PopString());
        const std::uint64_t low = CodeFromHex(PopString());
        if (high > low)
            FillRange(low, high - 1, cid, true, false);
    }
}

void ToUnicodeParser::NotdefRangeSection() {
    for (std::int64_t i = SectionRounds(); i > 0; --i) {
        const auto value = static_cast<std::uint32_t>(PopInteger());
        const std::uint64_t high = CodeFromHex(PopString());
        const std::uint64_t low = CodeFromHex(PopString());
        FillRange(low, high, value, false, true);
    }
}

void ToUnicodeParser::BfRangeSection() {
    // The array form of the destination is not understood: the array yields no string, so
    // the range maps to 0, 1, 2 and so on.
    for (std::int64_t i = SectionRounds(); i > 0; --i) {
        const std::uint32_t destination = CodeFromHex(PopString());
        const std::uint64_t high = CodeFromHex(PopString());
        const std::uint64_t low = CodeFromHex(PopString());
        FillRange(low, high, destination, true, true);
    }
}
