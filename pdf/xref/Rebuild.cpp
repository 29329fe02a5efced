// The scan that rebuilds the table from the object headers in the file, when the chain of
// cross-reference sections fails. It reads stream data as if it were text.
#include "pdf/xref/ObjectStream.h"
#include "pdf/xref/PDFDocument.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr unsigned long kMaxScannedNumber = 1000000;

// "N G obj" at the start of the line, as strtoul reads numbers; false otherwise.
bool ObjectHeader(const std::string& line, unsigned long& number, unsigned long& generation) {
    const char* p = line.c_str();
    char* end = nullptr;
    number = std::strtoul(p, &end, 10);
    if (end == p || *end != ' ')
        return false;
    const char* g = end + 1;
    generation = std::strtoul(g, &end, 10);
    if (end == g || std::strncmp(end, " obj", 4) != 0)
        return false;
    return number <= kMaxScannedNumber;
}

bool NamesObjectStream(const std::string& text) {
    return text.find("/Type/ObjStm") != std::string::npos ||
           text.find("/Type /ObjStm") != std::string::npos;
}

} // namespace

PDFStatus PDFDocument::Rebuild() {
    input->clear();
    input->seekg(0);
    std::streambuf* buffer = input->rdbuf();
    const int kEnd = std::char_traits<char>::eof();
    std::vector<std::pair<std::int32_t, std::streamoff>> objectStreams;
    std::string line, logical;

    // A line ends at CR or LF, a CR LF or LF CR pair counting as one end; false at the end
    // of the file.
    auto readLine = [&](std::string& out) {
        out.clear();
        for (;;) {
            const int c = buffer->sbumpc();
            if (c == kEnd)
                return false;
            if (c == '\r' || c == '\n') {
                const int other = c == '\r' ? '\n' : '\r';
                if (buffer->sgetc() == other)
                    buffer->sbumpc();
                return true;
            }
            out += static_cast<char>(c);
        }
    };
    // The same, but line ends inside a dictionary are kept and do not end it. "<<" and ">>"
    // count once a pair; any depth but 0, a negative one too, is inside.
    auto readLogicalLine = [&](std::string& out) {
        out.clear();
        int depth = 0;
        int previous = -1;
        for (;;) {
            const int c = buffer->sbumpc();
            if (c == kEnd)
                return false;
            if ((c == '\r' || c == '\n') && depth == 0) {
                const int other = c == '\r' ? '\n' : '\r';
                if (buffer->sgetc() == other)
                    buffer->sbumpc();
                return true;
            }
            out += static_cast<char>(c);
            if (c == '<' && previous == '<') {
                ++depth;
                previous = -1; // the pair is used up
            } else if (c == '>' && previous == '>') {
                --depth;
                previous = -1;
            } else {
                previous = c;
            }
        }
    };

    std::streamoff position = 0;
    for (;;) {
        if (!readLine(line))
            break;
        const std::streamoff lineStart = position;
        unsigned long number = 0, generation = 0;
        if (ObjectHeader(line, number, generation)) {
            if (number + 100 > entries.size())
                (void)GrowTable(static_cast<std::int64_t>(number) + 100);
            XrefEntry& e = entries[number]; // the last header of a number in the file wins
            e.type = 1;
            e.offset = lineStart;
            e.generation = static_cast<std::int32_t>(generation);
            e.streamObject = e.streamIndex = 0;
            if (NamesObjectStream(line))
                objectStreams.emplace_back(static_cast<std::int32_t>(number), lineStart);
            // The end of the file inside the logical line ends the scan without a look at it.
            if (readLogicalLine(logical) && NamesObjectStream(logical))
                objectStreams.emplace_back(static_cast<std::int32_t>(number), lineStart);
        }
        position = buffer->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    }

    input->clear();
    PDFStatus last = kPdfOk;
    for (const auto& [streamNumber, at] : objectStreams) {
        input->clear();
        input->seekg(at);
        ObjectStreamHeader header;
        const PDFStatus status = ReadObjectStream(header, this, input);
        if (status != kPdfOk) {
            last = status;
            continue;
        }
        // A member of an object stream overrides what the file showed of its number.
        for (std::size_t i = 0; i < header.objects.size(); ++i) {
            const std::int32_t member = header.objects[i].first;
            if (member < 0 || !GrowTable(static_cast<std::int64_t>(member) + 100))
                continue;
            XrefEntry& e = entries[static_cast<std::size_t>(member)];
            e.type = 2;
            e.generation = 0;
            e.streamObject = static_cast<std::uint32_t>(streamNumber);
            e.streamIndex = static_cast<std::uint32_t>(i);
        }
    }
    input->clear();
    input->seekg(0);
    return last;
}
