// Opening a document: the end of the file, the chain of cross-reference sections by /Prev,
// and the trailers. Classic sections keep the newest entry of a number; stream sections
// overwrite, so the oldest stands. Any failure after a /Root was seen is rescued by the scan.
#include "pdf/xref/PDFDocument.h"

#include "filters/FilterPipeline.h"
#include "pdf/parser/PDFParser.h"

#include <cstdlib>
#include <cstring>
#include <set>

namespace {

using PDFDict = PDFParser::PDFDict;
using PDFArray = PDFParser::PDFArray;

constexpr std::size_t kTailSize = 1024;
constexpr std::size_t kClassicEntrySize = 20;

// Digits from `p` as a non-negative 64-bit number, saturating.
std::int64_t ReadOffset(const char* p) {
    std::int64_t value = 0;
    for (; *p >= '0' && *p <= '9'; ++p)
        value = value > (INT64_MAX - 9) / 10 ? INT64_MAX : value * 10 + (*p - '0');
    return value;
}

std::vector<std::int64_t> IntegersOf(const PDFToken* token) {
    std::vector<std::int64_t> values;
    if (token && token->IsType(kPdfKindArray))
        for (const PDFToken* item : static_cast<const PDFArray*>(token)->items)
            values.push_back(item ? item->GetInteger(0) : 0);
    return values;
}

} // namespace

PDFStatus PDFDocument::Open() {
    if (!input)
        return kPdfNoOpenFile;
    input->clear();
    input->seekg(0);
    std::string line;
    (void)ReadLine(line);
    // A PostScript file without the legacy marker has come here.
    if (std::strstr(line.c_str(), "%!PS-Adobe-3"))
        return kPdfOldAiFile;

    input->clear();
    input->seekg(0, std::ios_base::end);
    const std::streamoff size = input->tellg();
    if (size <= 0)
        return kPdfInvalidPdf; // an empty file has no end to find
    const std::size_t tail =
        static_cast<std::size_t>(size < static_cast<std::streamoff>(kTailSize) ? size : kTailSize);
    std::string buffer(tail + 1, '\0');
    input->seekg(size - static_cast<std::streamoff>(tail));
    input->read(buffer.data(), static_cast<std::streamsize>(tail));
    input->clear();

    // From the end down: the last "startxref" counts, with the nearest "%%EOF" behind it.
    const char* b = buffer.c_str();
    std::size_t eof = 0, start = 0;
    bool haveEof = false, haveStart = false;
    for (std::size_t i = tail; i-- > 1;) {
        if (b[i] == '%' && std::strncmp(b + i, "%%EOF", 5) == 0) {
            eof = i;
            haveEof = true;
        } else if (b[i] == 's' && std::strncmp(b + i, "startxref", 9) == 0) {
            start = i;
            haveStart = true;
            break;
        }
    }
    if (!haveEof || !haveStart || eof < start)
        return kPdfInvalidPdf;
    std::size_t digit = start + 9;
    while (digit < eof && !(b[digit] >= '0' && b[digit] <= '9'))
        ++digit;
    if (digit >= eof)
        return kPdfInvalidPdf;
    // 64 bits, so that files beyond 2 GB open too.
    const std::int64_t position = ReadOffset(b + digit);

    const PDFStatus chain = ReadChain(position);
    if (chain == kPdfOk)
        return kPdfOk;
    if (root && Rebuild() == kPdfOk)
        return kPdfOk;
    return chain;
}

PDFStatus PDFDocument::ReadChain(std::int64_t position) {
    // A /Prev that comes back to a section already read would go round for ever.
    std::set<std::int64_t> seen;
    std::string line;
    for (;;) {
        if (!seen.insert(position).second)
            return kPdfInvalidPdf;
        input->clear();
        input->seekg(position);
        (void)ReadLine(line);
        std::int64_t next = 0;
        const PDFStatus status =
            line == "xref" ? ReadClassicSection(&next) : ReadStreamSection(position, &next);
        if (status == kPdfEof)
            return kPdfOk;
        if (status != kPdfOk)
            return status;
        position = next;
    }
}

PDFStatus PDFDocument::ReadClassicSection(std::int64_t* next) {
    std::string line;
    std::streamoff trailerAt = 0;
    for (;;) {
        const std::streamoff at = input->tellg();
        (void)ReadLine(line);
        if (line.compare(0, 7, "trailer") == 0) {
            trailerAt = at;
            break;
        }
        if (line.empty()) {
            if (input->fail())
                return kPdfPrematureEof;
            continue;
        }
        char* end = nullptr;
        const long long first = std::strtoll(line.c_str(), &end, 10);
        const long long count = std::strtoll(end, nullptr, 10);
        if (first < 0 || count < 0)
            return kPdfBadNumber;
        // The table grows to the section's end, within its limit and no further than the
        // rest of the file could hold.
        std::streamoff here = input->tellg();
        input->seekg(0, std::ios_base::end);
        const std::streamoff size = input->tellg();
        input->seekg(here);
        const long long room = (size > here ? (size - here) : 0) / kClassicEntrySize + 1;
        (void)GrowTable(first + (count < room ? count : room));
        for (long long k = 0; k < count; ++k) {
            char entry[kClassicEntrySize + 1] = {};
            input->read(entry, kClassicEntrySize); // exactly 20 bytes, line ends or not
            if (input->gcount() == 0 && input->fail())
                return kPdfPrematureEof;
            long offset = std::strtol(entry, nullptr, 10);
            long generation = std::strtol(entry + 11, nullptr, 10);
            if (generation == 65535)
                generation = -1;
            const long long number = first + k;
            if (static_cast<std::uint64_t>(number) >= entries.size())
                continue;
            XrefEntry& e = entries[static_cast<std::size_t>(number)];
            // Only a higher generation replaces: the newest section, read first, stands.
            if (generation > e.generation) {
                e.generation = static_cast<std::int32_t>(generation);
                e.offset = offset;
                e.type = entry[17] == 'n' ? 1 : 0;
            }
        }
    }

    input->clear();
    input->seekg(trailerAt + 7);
    PDFParser parser(input, this);
    const PDFStatus status = parser.ParseUntil("startxref");
    if (status != kPdfOk)
        return status; // a trailer that runs into the end of the file ends the chain well
    return ReadTrailer(parser.Peek(0), next);
}

PDFStatus PDFDocument::ReadTrailer(PDFToken* trailer, std::int64_t* next) {
    if (!trailer || !trailer->IsType(kPdfKindDict))
        return kPdfExpectedDictionary;
    const auto* dict = static_cast<const PDFDict*>(trailer);
    if (!root) {
        PDFToken* r = dict->Find("Root");
        if (r && r->IsType(kPdfKindRef))
            root = r->Clone();
    }
    // Taken after /Root: an encrypted file with a /Root reference goes on to the scan.
    if (dict->Find("Encrypt"))
        return kPdfEncrypted;
    PDFToken* prev = dict->Find("Prev");
    if (!prev)
        return kPdfEof;
    const std::int32_t value = prev->GetInteger(-1);
    if (value < 0)
        return kPdfBadPrev;
    *next = value;
    return kPdfOk;
}

PDFStatus PDFDocument::ReadStreamSection(std::int64_t position, std::int64_t* next) {
    input->clear();
    input->seekg(position);
    PDFParser parser(input, this);
    (void)parser.ParseUntil("endobj"); // only what it left counts
    PDFToken* top = parser.Peek(0);
    if (!top || !top->IsType(kPdfKindStream))
        return kPdfInvalidPdf;
    const auto& stream = *static_cast<PDFParser::PDFStream*>(top);
    const auto* dict = static_cast<const PDFDict*>(stream.dict);

    const PDFStatus trailerStatus = ReadTrailer(stream.dict, next);
    if (trailerStatus != kPdfOk && trailerStatus != kPdfEof)
        return trailerStatus; // nothing of an encrypted section is stored

    const PDFToken* sizeToken = dict->Find("Size");
    const std::int64_t size = sizeToken ? sizeToken->GetInteger(0) : 0;
    const PDFToken* indexToken = dict->Find("Index");
    std::vector<std::int64_t> index = IntegersOf(indexToken);
    if (!indexToken || !indexToken->IsType(kPdfKindArray))
        index = {0, size};
    // /W must be a direct array of widths; a missing or broken one, or widths that add up
    // to nothing, describe no table.
    const PDFToken* wToken = dict->Find("W");
    if (!wToken || !wToken->IsType(kPdfKindArray))
        return kPdfInvalidPdf;
    std::vector<std::int64_t> w = IntegersOf(wToken);
    w.resize(3, 0);
    for (std::int64_t v : w)
        if (v < 0 || v > 8)
            return kPdfInvalidPdf;

    std::string data;
    const PDFStatus decoded = DecodeStream(stream, data);
    if (decoded != kPdfOk)
        return decoded;

    std::int64_t total = 0;
    for (std::size_t i = 0; i + 1 < index.size(); i += 2) {
        if (index[i] < 0 || index[i + 1] < 0)
            return kPdfInvalidPdf;
        total += index[i + 1];
    }
    const std::int64_t width = w[0] + w[1] + w[2];
    if (total == 0 || width == 0)
        return kPdfInvalidPdf;
    // Spare bytes at the end, fewer than a row, are accepted.
    if (static_cast<std::int64_t>(data.size()) / total != width)
        return kPdfInvalidPdf;

    const auto* row = reinterpret_cast<const unsigned char*>(data.data());
    auto field = [&row](std::int64_t bytes) {
        std::uint64_t v = 0;
        for (std::int64_t i = 0; i < bytes; ++i)
            v = (v << 8) | *row++;
        return v;
    };
    for (std::size_t i = 0; i + 1 < index.size(); i += 2) {
        const std::int64_t first = index[i], count = index[i + 1];
        (void)GrowTable(first + count);
        for (std::int64_t k = 0; k < count; ++k) {
            // A first field of width 0 reads as 0, the free type.
            const std::uint64_t type = field(w[0]);
            const std::uint64_t second = field(w[1]);
            const std::uint64_t third = field(w[2]);
            const std::int64_t number = first + k;
            if (static_cast<std::uint64_t>(number) >= entries.size()) {
                if (type > 2)
                    return -1;
                continue;
            }
            XrefEntry& e = entries[static_cast<std::size_t>(number)];
            switch (type) {
            case 0:
                e.type = 0;
                e.offset = 0;
                e.streamObject = e.streamIndex = 0;
                break;
            case 1:
                e.type = 1;
                e.offset = static_cast<std::int32_t>(static_cast<std::uint32_t>(second));
                e.generation = static_cast<std::int32_t>(third);
                e.streamObject = e.streamIndex = 0;
                break;
            case 2:
                e.type = 2;
                e.offset = 0;
                e.generation = 0;
                e.streamObject = static_cast<std::uint32_t>(second);
                e.streamIndex = static_cast<std::uint32_t>(third);
                break;
            default:
                return -1;
            }
        }
    }
    return trailerStatus;
}
