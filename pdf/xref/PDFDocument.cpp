#include "pdf/xref/PDFDocument.h"

#include "filters/FilterPipeline.h"
#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"

#include "pdf/xref/ObjectStream.h"
#include <climits>

PDFDocument::PDFDocument(std::istream* in) : input(in) {}

PDFDocument::~PDFDocument() {
    if (ownsInput)
        delete input;
    if (root)
        root->Release();
    if (pageProperties)
        pageProperties->Release();
    optionalContentGroups.clear();
    for (XrefEntry& e : entries)
        if (e.object)
            e.object->Release();
    for (PDFToken* t : retired)
        t->Release();
}

bool PDFDocument::GrowTable(std::int64_t size) {
    if (size < 0 || static_cast<std::uint64_t>(size) > kMaxTableSize)
        return false;
    if (static_cast<std::size_t>(size) > entries.size())
        entries.resize(static_cast<std::size_t>(size));
    return true;
}

int PDFDocument::ReadLine(std::string& line) {
    line.clear();
    std::streambuf* buffer = input->rdbuf();
    if (!input->good()) {
        input->setstate(std::ios_base::failbit);
        return -1;
    }
    for (;;) {
        const int c = buffer->sbumpc();
        if (c == std::char_traits<char>::eof()) {
            input->setstate(std::ios_base::eofbit | std::ios_base::failbit);
            return -1;
        }
        if (c == '\r' || c == '\n') {
            const int other = c == '\r' ? '\n' : '\r';
            if (buffer->sgetc() == other)
                buffer->sbumpc();
            return 0;
        }
        line += static_cast<char>(c);
    }
}

PDFStatus PDFDocument::LoadObject(std::int32_t objectNumber, std::int32_t generation,
                                  PDFToken** out) {
    *out = nullptr;
    if (!input)
        return kPdfNoOpenFile;
    if (objectNumber < 0 || static_cast<std::size_t>(objectNumber) >= entries.size())
        return kPdfBadReference;
    const std::size_t index = static_cast<std::size_t>(objectNumber);
    // An entry no section has set carries -1, which no reference may match: "0 -1 R" would
    // otherwise read whatever lies at offset 0.
    if (entries[index].generation < 0 || entries[index].generation != generation)
        return kPdfBadReference;
    if (!entries[index].object) {
        for (std::int32_t busy : loading)
            if (busy == objectNumber)
                return kPdfErrorLoadingObject; // its load needs itself
        if (loading.size() >= kMaxLoadDepth)
            return kPdfErrorLoadingObject;
        loading.push_back(objectNumber);
        const PDFStatus status =
            entries[index].type == 2 ? LoadFromObjectStream(objectNumber) : LoadFromOffset(index);
        loading.pop_back();
        if (status != kPdfOk)
            return status;
    }
    *out = entries[index].object;
    return kPdfOk;
}

PDFStatus PDFDocument::LoadFromOffset(std::size_t index) {
    // The stream is shared with whoever asked (a stream's indirect /Length is loaded in the
    // middle of reading that stream), so its position is put back afterwards.
    input->clear();
    const std::streampos before = input->tellg();
    input->seekg(entries[index].offset);
    PDFParser parser(input, this);
    const PDFStatus status = parser.ParseUntil("endobj");
    input->clear();
    input->seekg(before);
    if (status != kPdfOk)
        return status;
    if (parser.operandStack.empty())
        return kPdfErrorLoadingObject;
    // The object at the offset is taken whatever number its header bears. Indexed afresh:
    // loads nested in this one may have grown the table.
    entries[index].object = parser.operandStack.back();
    parser.operandStack.pop_back();
    parser.Drop();
    parser.Drop();
    return kPdfOk;
}

PDFStatus PDFDocument::LoadFromObjectStream(std::int32_t objectNumber) {
    const std::uint32_t container = entries[static_cast<std::size_t>(objectNumber)].streamObject;
    if (container == static_cast<std::uint32_t>(objectNumber) || container > INT32_MAX)
        return kPdfErrorLoadingObject;
    PDFToken* token = nullptr;
    PDFStatus status = LoadObject(static_cast<std::int32_t>(container), 0, &token);
    if (status != kPdfOk)
        return status;
    if (!token || !token->IsType(kPdfKindStream))
        return kPdfInvalidPdf;
    const auto& stream = *static_cast<PDFParser::PDFStream*>(token);
    const auto* dict = static_cast<const PDFParser::PDFDict*>(stream.dict);
    const PDFToken* firstToken = dict->Find("First");
    const std::int32_t first = firstToken ? firstToken->GetInteger(0) : 0;
    std::string data;
    status = DecodeStream(stream, data);
    if (status != kPdfOk)
        return status;

    // Every member the table gives to this stream is loaded now, so the stream is decoded
    // once and not once per member.
    const auto pairs = ObjectStreamPairs(data, first);
    const std::int64_t base = first;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const std::int32_t number = pairs[i].first;
        if (number < 0 || static_cast<std::size_t>(number) >= entries.size())
            continue;
        const XrefEntry& e = entries[static_cast<std::size_t>(number)];
        if (e.type != 2 || e.streamObject != container || e.streamIndex != i)
            continue;
        const std::int64_t start = pairs[i].second + base;
        const std::int64_t end = i + 1 < pairs.size() ? pairs[i + 1].second + base
                                                      : static_cast<std::int64_t>(data.size());
        if (end < start || end > static_cast<std::int64_t>(data.size()) || start < 0)
            return -1;
        const std::string bytes =
            data.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
        // Each member gets a parser over just its bytes, whose end is its normal end.
        auto memberInput = MakeMemoryInput(bytes.data(), bytes.size());
        PDFParser parser(memberInput.get(), this);
        const PDFStatus read = parser.ParseUntil("");
        if (read != kPdfEof)
            return read;
        if (parser.operandStack.empty())
            return kPdfErrorLoadingObject;
        XrefEntry& target = entries[static_cast<std::size_t>(number)];
        if (target.object)
            retired.push_back(target.object);
        target.object = parser.operandStack.back();
        parser.operandStack.pop_back();
    }
    return entries[static_cast<std::size_t>(objectNumber)].object ? kPdfOk : kPdfErrorLoadingObject;
}
