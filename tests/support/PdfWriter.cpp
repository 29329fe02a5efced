#include "support/PdfWriter.h"

#include "support/TestSupport.h"

#include <algorithm>
#include <cstdio>

namespace tarquil::test {

PdfWriter::PdfWriter(const std::string& header) : m_text(header) {}

std::size_t PdfWriter::Raw(const std::string& text) {
    const std::size_t at = m_text.size();
    m_text += text;
    return at;
}

std::size_t PdfWriter::Object(int number, const std::string& body, int generation) {
    const std::size_t at = Raw(std::to_string(number) + " " + std::to_string(generation) +
                               " obj\n" + body + "\nendobj\n");
    m_entries[number] = Entry{1, at, generation, 0, 0};
    return at;
}

std::size_t PdfWriter::Stream(int number, const std::string& entries, const std::string& data,
                              int generation) {
    return Object(number,
                  "<< " + entries + " /Length " + std::to_string(data.size()) + " >>\nstream\n" +
                      data + "\nendstream",
                  generation);
}

std::size_t PdfWriter::ObjectStream(int number,
                                    const std::vector<std::pair<int, std::string>>& members,
                                    const std::string& extraEntries) {
    std::string head, body;
    for (const auto& [member, text] : members) {
        head += std::to_string(member) + " " + std::to_string(body.size()) + " ";
        body += text + "\n";
    }
    const std::size_t at = Stream(number,
                                  "/Type /ObjStm /N " + std::to_string(members.size()) +
                                      " /First " + std::to_string(head.size()) + " " + extraEntries,
                                  head + body);
    for (std::size_t i = 0; i < members.size(); ++i)
        m_entries[members[i].first] = Entry{2, 0, 0, number, static_cast<int>(i)};
    return at;
}

std::vector<int> PdfWriter::Numbers(std::vector<int> numbers) const {
    if (numbers.empty()) {
        numbers.push_back(0);
        for (const auto& [n, e] : m_entries)
            numbers.push_back(n);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

void PdfWriter::End(std::size_t xrefOffset) {
    Raw("startxref\n" + std::to_string(xrefOffset) + "\n%%EOF\n");
}

std::size_t PdfWriter::ClassicXref(const std::string& trailerEntries, std::vector<int> numbers) {
    numbers = Numbers(std::move(numbers));
    std::string table = "xref\n";
    for (std::size_t i = 0; i < numbers.size();) {
        std::size_t j = i;
        while (j + 1 < numbers.size() && numbers[j + 1] == numbers[j] + 1)
            ++j;
        table += std::to_string(numbers[i]) + " " + std::to_string(j - i + 1) + "\n";
        for (std::size_t k = i; k <= j; ++k) {
            char line[21];
            const auto it = m_entries.find(numbers[k]);
            if (it == m_entries.end() || it->second.type != 1)
                std::snprintf(line, sizeof line, "%010d %05d f\r\n", 0, 65535);
            else
                std::snprintf(line, sizeof line, "%010zu %05d n\r\n", it->second.offset,
                              it->second.generation);
            table += line;
        }
        i = j + 1;
    }
    const int size = m_entries.empty() ? 1 : m_entries.rbegin()->first + 1;
    table += "trailer\n<< /Size " + std::to_string(size) + " " + trailerEntries + " >>\n";
    const std::size_t at = Raw(table);
    End(at);
    return at;
}

std::size_t PdfWriter::XrefStream(int number, const std::string& trailerEntries,
                                  std::vector<int> numbers, bool deflate, bool predictor,
                                  bool colors) {
    const std::size_t at = m_text.size();
    m_entries[number] = Entry{1, at, 0, 0, 0};
    numbers = Numbers(std::move(numbers));
    std::string rows, index;
    std::string previous(7, '\0');
    for (std::size_t i = 0; i < numbers.size();) {
        std::size_t j = i;
        while (j + 1 < numbers.size() && numbers[j + 1] == numbers[j] + 1)
            ++j;
        index += std::to_string(numbers[i]) + " " + std::to_string(j - i + 1) + " ";
        for (std::size_t k = i; k <= j; ++k) {
            const auto it = m_entries.find(numbers[k]);
            std::string row(7, '\0');
            unsigned type = 0, second = 0, third = 0;
            if (it != m_entries.end()) {
                type = static_cast<unsigned>(it->second.type);
                second = type == 1 ? static_cast<unsigned>(it->second.offset)
                                   : static_cast<unsigned>(it->second.streamObject);
                third = type == 1 ? static_cast<unsigned>(it->second.generation)
                                  : static_cast<unsigned>(it->second.streamIndex);
            }
            row[0] = static_cast<char>(type);
            for (int b = 0; b < 4; ++b)
                row[1 + b] = static_cast<char>((second >> (24 - 8 * b)) & 0xFF);
            row[5] = static_cast<char>((third >> 8) & 0xFF);
            row[6] = static_cast<char>(third & 0xFF);
            if (predictor) {
                std::string up(1, '\2');
                for (int b = 0; b < 7; ++b)
                    up += static_cast<char>(row[b] - previous[b]);
                previous = row;
                rows += up;
            } else {
                rows += row;
            }
        }
        i = j + 1;
    }
    std::string data = rows;
    std::string entries = "/Type /XRef /W [1 4 2] /Index [" + index + "] ";
    const int size = m_entries.rbegin()->first + 1;
    entries += "/Size " + std::to_string(size) + " " + trailerEntries;
    if (deflate || predictor) {
        data = ZlibCompress(rows);
        entries += " /Filter /FlateDecode";
        if (predictor)
            entries += std::string(" /DecodeParms << /Predictor 12 /Columns 7") +
                       (colors ? " /Colors 1" : "") + " >>";
    }
    Stream(number, entries, data);
    End(at);
    return at;
}

} // namespace tarquil::test
