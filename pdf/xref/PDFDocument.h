#pragma once
// The open PDF file: its cross-reference table and the objects loaded from it.
#include "pdf/token/PDFError.h"
#include "pdf/token/PDFToken.h"

#include <cstdint>
#include <istream>
#include <map>
#include <string>
#include <vector>

struct XrefEntry {
    std::int64_t offset = 0;        // file position, for entries not in an object stream
    std::int32_t generation = -1;   // -1: no section has set this entry
    std::uint16_t type = 0;         // 0 free, 1 in the file, 2 in an object stream
    std::uint32_t streamObject = 0; // type 2: number of the object stream
    std::uint32_t streamIndex = 0;  // type 2: index in that stream
    PDFToken* object = nullptr;     // owned; null until loaded
};

// One optional content group, keyed by its name in the document's table.
struct OptionalContentGroup {
    std::string parentName; // empty for a top-level group
    bool visible = true;    // the layer's starting state
};

class PDFDocument {
public:
    // Reads from `input`, which the document does not own.
    explicit PDFDocument(std::istream* input);
    ~PDFDocument();
    PDFDocument(const PDFDocument&) = delete;
    PDFDocument& operator=(const PDFDocument&) = delete;

    // Reads the cross-reference chain from the end of the file, or rebuilds the table by a
    // scan when the chain fails after a /Root was seen. After 0 the table is usable; `root`
    // may still be null.
    [[nodiscard]] PDFStatus Open();
    // Loads an object by number; `*out` is borrowed and lives as long as the document.
    [[nodiscard]] PDFStatus LoadObject(std::int32_t objectNumber, std::int32_t generation,
                                       PDFToken** out);
    // One line of the input without its end (CR, LF, or either pair); -1 when the input ends
    // inside it, `line` holding what was read.
    int ReadLine(std::string& line);

    // Catalog and page tree. Results are borrowed from the object cache or their containers.
    // A null token gives 10028, anything but a reference is its own value, a reference loads.
    [[nodiscard]] PDFStatus ResolveToken(PDFToken* token, PDFToken** out);
    // The same for `root`.
    [[nodiscard]] PDFStatus ResolveRoot(PDFToken** out);
    // Follows a "/"-separated path of keys (dictionary keys, or array indexes by atoi) from
    // `start`, loading references on the way and at the end.
    [[nodiscard]] PDFStatus LookupPath(PDFToken* start, const char* path, PDFToken** out);
    [[nodiscard]] PDFStatus PageCount(std::int32_t* count);
    // Depth first from `node`; `counter` counts the pages passed and starts at 0.
    [[nodiscard]] PDFStatus FindPage(PDFToken* node, std::int32_t target, std::int32_t* counter,
                                     PDFToken** page);
    // Sets pageProperties to the /Properties of the page's resources.
    [[nodiscard]] PDFStatus LoadPageProperties(std::int32_t pageNumber);

    // Fills optionalContentGroups from the catalog's default configuration; whatever fails
    // leaves the table as far as it got.
    void LoadOptionalContent();

    std::vector<XrefEntry> entries;
    PDFToken* root = nullptr; // owned
    std::istream* input;
    bool ownsInput = false;
    std::map<std::string, OptionalContentGroup> optionalContentGroups;
    PDFToken* pageProperties = nullptr; // a count held

    // The table never grows past this many entries: numbers beyond any real file's are
    // passed over, so that a damaged count cannot ask for gigabytes.
    static constexpr std::size_t kMaxTableSize = 8388608;

private:
    [[nodiscard]] PDFStatus LoadFromOffset(std::size_t index);
    [[nodiscard]] PDFStatus LoadFromObjectStream(std::int32_t objectNumber);
    [[nodiscard]] PDFStatus ReadChain(std::int64_t position);
    [[nodiscard]] PDFStatus ReadClassicSection(std::int64_t* next);
    [[nodiscard]] PDFStatus ReadStreamSection(std::int64_t position, std::int64_t* next);
    [[nodiscard]] PDFStatus ReadTrailer(PDFToken* trailer, std::int64_t* next);
    [[nodiscard]] PDFStatus Rebuild();
    // Grows the table to `size` entries, within kMaxTableSize; false when `size` is beyond.
    bool GrowTable(std::int64_t size);
    // `path` holds the /Order arrays being read, outermost first; `budget` the items that may
    // still be looked at.
    void ReadOrder(const std::string& parentName, PDFToken* array, std::vector<PDFToken*>& path,
                   std::size_t& budget);

    // Objects being loaded right now, innermost last: a stream whose /Length leads back to
    // itself, or a chain of such lengths deeper than any real file has, fails instead of
    // exhausting the stack.
    std::vector<std::int32_t> loading;
    static constexpr std::size_t kMaxLoadDepth = 64;
    // Objects replaced by a reload of their object stream. Borrowed pointers to them may be
    // around, so they live as long as the document.
    std::vector<PDFToken*> retired;
};
