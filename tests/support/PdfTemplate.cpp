#include "support/PdfTemplate.h"

#include "support/TestSupport.h"

#include <cstdio>
#include <map>
#include <regex>
#include <stdexcept>

namespace tarquil::test {

namespace {

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

} // namespace

std::string ExpandPdfTemplate(std::string text) {
    const std::string streamlen = "{{streamlen}}";
    for (std::size_t at = text.find(streamlen); at != std::string::npos;
         at = text.find(streamlen, at)) {
        const std::size_t keyword = text.find("stream", at + streamlen.size());
        if (keyword == std::string::npos)
            throw std::runtime_error("{{streamlen}} without a stream");
        std::size_t data = keyword + 6;
        if (text.compare(data, 2, "\r\n") == 0)
            data += 2;
        else if (text[data] == '\n')
            data += 1;
        std::size_t end = text.find("endstream", data);
        if (end == std::string::npos)
            throw std::runtime_error("stream without endstream");
        // The end-of-line before endstream is not part of the data.
        if (end > data && text[end - 1] == '\n')
            --end;
        if (end > data && text[end - 1] == '\r')
            --end;
        text.replace(at, streamlen.size(), std::to_string(end - data));
    }

    const std::size_t xrefAt = text.find("{{xref}}");
    if (xrefAt != std::string::npos) {
        std::map<int, std::pair<std::size_t, int>> objects;
        const std::regex header(R"((^|\n)(\d+) (\d+) obj\b)");
        const std::string head = text.substr(0, xrefAt);
        for (std::sregex_iterator it(head.begin(), head.end(), header), last; it != last; ++it) {
            const std::size_t offset = static_cast<std::size_t>(it->position(2));
            objects[std::stoi((*it)[2])] = {offset, std::stoi((*it)[3])};
        }
        const int size = objects.empty() ? 1 : objects.rbegin()->first + 1;
        std::string xref = "xref\n0 " + std::to_string(size) + "\n";
        char line[32];
        for (int n = 0; n < size; ++n) {
            const auto found = objects.find(n);
            if (found == objects.end())
                std::snprintf(line, sizeof line, "%010d %05d f \n", 0, n == 0 ? 65535 : 0);
            else
                std::snprintf(line, sizeof line, "%010zu %05d n \n", found->second.first,
                              found->second.second);
            xref += line;
        }
        xref.pop_back(); // the template's own line break follows the placeholder
        text.replace(xrefAt, 8, xref);
        ReplaceAll(text, "{{size}}", std::to_string(size));
        ReplaceAll(text, "{{startxref}}", std::to_string(xrefAt));
    }
    return text;
}

std::string PdfFromTemplate(const std::string& relativePath) {
    return ExpandPdfTemplate(ReadFileBytes(std::string(TARQUIL_TEST_DATA) + "/" + relativePath));
}

} // namespace tarquil::test
