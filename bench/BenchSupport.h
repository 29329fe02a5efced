#pragma once
// Small helpers the benchmarks share.
#include <zlib.h>

#include <cstdio>
#include <string>
#include <vector>

namespace tarquil::bench {

// zlib's deflate at level 6, as producers' Flate streams are usually made.
inline std::string Deflate(const std::string& data) {
    uLongf size = compressBound(data.size());
    std::string out(size, '\0');
    compress2(reinterpret_cast<Bytef*>(out.data()), &size,
              reinterpret_cast<const Bytef*>(data.data()), data.size(), 6);
    out.resize(size);
    return out;
}

// A PDF file of the given object bodies, numbered from 1 (the first is the catalog), with a
// classic cross-reference table.
inline std::string AssemblePdf(const std::vector<std::string>& bodies) {
    std::string out = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n";
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        offsets.push_back(out.size());
        out += std::to_string(i + 1) + " 0 obj\n" + bodies[i] + "\nendobj\n";
    }
    const std::size_t xref = out.size();
    const std::string size = std::to_string(bodies.size() + 1);
    out += "xref\n0 " + size + "\n0000000000 65535 f\r\n";
    for (std::size_t offset : offsets) {
        char line[21];
        std::snprintf(line, sizeof line, "%010zu 00000 n\r\n", offset);
        out += line;
    }
    return out + "trailer\n<< /Size " + size + " /Root 1 0 R >>\nstartxref\n" +
           std::to_string(xref) + "\n%%EOF\n";
}

} // namespace tarquil::bench
