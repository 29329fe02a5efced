#pragma once
// Writes PDF files for tests, piece by piece, keeping the offsets it needs for the
// cross-reference sections. Damage is done afterwards on the text, where a test wants it.
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace tarquil::test {

class PdfWriter {
public:
    explicit PdfWriter(const std::string& header = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n");

    // "N G obj\nBODY\nendobj\n"; returns the object's offset.
    std::size_t Object(int number, const std::string& body, int generation = 0);
    // A stream object: "<< ENTRIES /Length n >>" and the data.
    std::size_t Stream(int number, const std::string& entries, const std::string& data,
                       int generation = 0);
    // An object stream holding the members in order; they become type-2 entries.
    std::size_t ObjectStream(int number, const std::vector<std::pair<int, std::string>>& members,
                             const std::string& extraEntries = "");
    // Any text; returns its offset.
    std::size_t Raw(const std::string& text);

    // A classic section for the given objects (all written ones, and the free head of the
    // list, when `numbers` is empty), its trailer with /Size and `trailerEntries`, then
    // "startxref", the section's offset and "%%EOF". Returns the section's offset.
    std::size_t ClassicXref(const std::string& trailerEntries, std::vector<int> numbers = {});
    // A cross-reference stream object `number` over the same objects (type 1 and 2 entries),
    // with /W [1 4 2]; `extraEntries` go into its dictionary, and with `predictor` the rows
    // are PNG Up rows deflated with /Predictor 12 (and /Colors 1 when `colors` is true).
    std::size_t XrefStream(int number, const std::string& trailerEntries,
                           std::vector<int> numbers = {}, bool deflate = false,
                           bool predictor = false, bool colors = false);

    std::size_t OffsetOf(int number) const { return m_entries.at(number).offset; }
    const std::string& Text() const { return m_text; }

private:
    struct Entry {
        int type = 1;
        std::size_t offset = 0;
        int generation = 0;
        int streamObject = 0, streamIndex = 0;
    };
    std::vector<int> Numbers(std::vector<int> numbers) const;
    void End(std::size_t xrefOffset);

    std::string m_text;
    std::map<int, Entry> m_entries;
};

} // namespace tarquil::test
