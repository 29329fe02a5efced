#include "cli/InspectDocument.h"

#include "cli/InspectSupport.h"
#include "cli/TarquilApp.h"

#include "filters/FilterPipeline.h"
#include "pdf/input/infile_streambuf.h"
#include "pdf/parser/PDFParser.h"
#include "pdf/xref/PDFDocument.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>
#include <memory>

namespace {

using nlohmann::json;

// The file through the reader's own buffered input, and the document over it.
class OpenFile {
public:
    explicit OpenFile(const std::string& path) {
        std::FILE* f = std::fopen(path.c_str(), "rb");
        if (!f)
            return;
        buffer = std::make_unique<infile_streambuf>(f);
        stream = std::make_unique<std::istream>(buffer.get());
        document = std::make_unique<PDFDocument>(stream.get());
        status = document->Open();
    }
    bool Readable() const { return document != nullptr; }

    std::unique_ptr<infile_streambuf> buffer;
    std::unique_ptr<std::istream> stream;
    std::unique_ptr<PDFDocument> document;
    PDFStatus status = kPdfCannotOpenFile;
};

std::string ErrorText(PDFStatus status) {
    const char* text = PDFErrorText(status);
    return text ? text : "";
}

int Unreadable(const std::string& path) {
    std::cerr << "tarquil: cannot read " << path << "\n";
    return kExitFailure;
}

// The object asked for, loaded; `generation` -1 takes the table's.
PDFStatus LoadAsked(PDFDocument& doc, const InspectArguments& args, PDFToken** out) {
    int generation = args.generation;
    if (generation < 0)
        generation = args.object >= 0 && static_cast<std::size_t>(args.object) < doc.entries.size()
                         ? doc.entries[static_cast<std::size_t>(args.object)].generation
                         : 0;
    return doc.LoadObject(args.object, generation, out);
}

} // namespace

InspectCommands AddInspectDocumentCommands(CLI::App& inspect, InspectArguments& args) {
    InspectCommands c;
    c.info = inspect.add_subcommand(
        "info", "Open a PDF: the status of the open, the table, the root, the page count and "
                "the optional content groups");
    c.info->add_option("FILE", args.file, "The PDF file")->required();
    c.info->add_flag("--json", args.json, "Print the report as JSON");

    c.object = inspect.add_subcommand("object", "Load one object of a PDF and print it");
    c.object->add_option("FILE", args.file, "The PDF file")->required();
    c.object->add_option("N", args.object, "The object number")->required();
    c.object->add_option("GEN", args.generation,
                         "The generation; the table's generation of N when not given");
    c.object->add_flag("--json", args.json, "Print {\"open\", \"status\", \"object\"}");

    c.stream = inspect.add_subcommand(
        "stream", "Decode a stream object of a PDF; the status goes to standard error");
    c.stream->add_option("FILE", args.file, "The PDF file")->required();
    c.stream->add_option("N", args.object, "The object number")->required();
    c.stream->add_option("GEN", args.generation,
                         "The generation; the table's generation of N when not given");
    c.stream
        ->add_option("-o,--output", args.output,
                     "Where the decoded bytes go; - for standard output")
        ->capture_default_str();
    return c;
}

int RunInspectInfo(const InspectArguments& args) {
    OpenFile file(args.file);
    if (!file.Readable())
        return Unreadable(args.file);
    json report;
    report["open"] = {{"status", file.status}, {"text", ErrorText(file.status)}};
    if (file.status == kPdfOk) {
        PDFDocument& doc = *file.document;
        report["tableSize"] = doc.entries.size();
        report["root"] = doc.root ? json(BytesAsLatin1Utf8(doc.root->ToString())) : json();
        std::int32_t count = 0;
        const PDFStatus pages = doc.PageCount(&count);
        report["pageCount"] = {{"status", pages}, {"count", count}};
        doc.LoadOptionalContent();
        json groups = json::array();
        for (const auto& [name, group] : doc.optionalContentGroups)
            groups.push_back({{"name", BytesAsLatin1Utf8(name)},
                              {"parent", BytesAsLatin1Utf8(group.parentName)},
                              {"visible", group.visible}});
        report["optionalContent"] = groups;
    }
    if (args.json) {
        std::cout << report.dump() << "\n";
    } else {
        std::cout << "open: " << file.status;
        if (!ErrorText(file.status).empty())
            std::cout << " (" << ErrorText(file.status) << ")";
        std::cout << "\n";
        if (file.status == kPdfOk) {
            std::cout << "table size: " << report["tableSize"] << "\n"
                      << "root: "
                      << (file.document->root ? file.document->root->ToString() : "none") << "\n"
                      << "page count: " << report["pageCount"]["count"] << " (status "
                      << report["pageCount"]["status"] << ")\n"
                      << "optional content groups: " << report["optionalContent"].size() << "\n";
            for (const auto& [name, group] : file.document->optionalContentGroups)
                std::cout << "  " << name << (group.visible ? "" : " (off)")
                          << (group.parentName.empty() ? "" : " in " + group.parentName) << "\n";
        }
    }
    return file.status == kPdfOk ? kExitSuccess : kExitFailure;
}

int RunInspectObject(const InspectArguments& args) {
    OpenFile file(args.file);
    if (!file.Readable())
        return Unreadable(args.file);
    PDFToken* object = nullptr;
    PDFStatus status = file.status;
    if (file.status == kPdfOk)
        status = LoadAsked(*file.document, args, &object);
    if (args.json) {
        std::cout << json{{"open", file.status},
                          {"status", status},
                          {"object", object ? json(BytesAsLatin1Utf8(object->ToString())) : json()}}
                         .dump()
                  << "\n";
    } else {
        std::cout << "open: " << file.status << "\nstatus: " << status << "\n";
        if (object)
            std::cout << object->ToString() << "\n";
    }
    return status == kPdfOk ? kExitSuccess : kExitFailure;
}

int RunInspectStream(const InspectArguments& args) {
    OpenFile file(args.file);
    if (!file.Readable())
        return Unreadable(args.file);
    PDFToken* object = nullptr;
    PDFStatus status = file.status;
    std::string decoded;
    if (status == kPdfOk)
        status = LoadAsked(*file.document, args, &object);
    if (status == kPdfOk) {
        if (object && object->IsType(kPdfKindStream))
            status = DecodeStream(*static_cast<const PDFParser::PDFStream*>(object), decoded);
        else
            status = kPdfExpectedStream;
    }
    const bool written = WriteOutput(args.output, decoded);
    std::cerr << "status: " << status << "\n";
    return status == kPdfOk && written ? kExitSuccess : kExitFailure;
}
