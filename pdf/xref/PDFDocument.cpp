#include "pdf/xref/PDFDocument.h"

#include "pdf/parser/PDFParser.h"

PDFDocument::PDFDocument(std::istream* in) : input(in) {}

PDFDocument::~PDFDocument() {
    if (ownsInput)
        delete input;
    if (root)
        root->Release();
    if (pageProperties)
        pageProperties->Release();
    for (XrefEntry& e : entries)
        if (e.object)
            e.object->Release();
}

PDFStatus PDFDocument::LoadObject(std::int32_t objectNumber, std::int32_t generation,
                                  PDFToken** out) {
    *out = nullptr;
    if (!input)
        return kPdfNoOpenFile;
    if (objectNumber < 0 || static_cast<std::size_t>(objectNumber) >= entries.size())
        return kPdfBadReference;
    const std::size_t index = static_cast<std::size_t>(objectNumber);
    if (entries[index].generation != generation)
        return kPdfBadReference;
    if (!entries[index].object) {
        if (entries[index].type == 2)
            return kPdfErrorLoadingObject; // members of object streams are not read yet
        for (std::int32_t busy : loading)
            if (busy == objectNumber)
                return kPdfErrorLoadingObject;
        if (loading.size() >= kMaxLoadDepth)
            return kPdfErrorLoadingObject;
        loading.push_back(objectNumber);
        const PDFStatus status = LoadFromOffset(index);
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
    // The object at the offset is taken whatever number its header bears.
    // Indexed afresh: loads nested in this one may have grown the table.
    entries[index].object = parser.operandStack.back();
    parser.operandStack.pop_back();
    parser.Drop();
    parser.Drop();
    return kPdfOk;
}
