#pragma once
// Small helpers the benchmarks share.
#include "host/base/GK_String.h"

#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
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

// A file written to a temporary folder of its own, which goes with it.
class FileOnDisk {
public:
    FileOnDisk(const std::string& folder, const std::string& name, const std::string& bytes)
        : m_dir(std::filesystem::temp_directory_path() /
                (folder + "-" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(m_dir);
        const std::filesystem::path file = m_dir / name;
        std::ofstream(file, std::ios::binary) << bytes;
        path = VmWideFromUtf8(file.string());
        megabytes = static_cast<double>(bytes.size()) / 1e6;
    }
    ~FileOnDisk() {
        std::error_code ec;
        std::filesystem::remove_all(m_dir, ec);
    }
    FileOnDisk(const FileOnDisk&) = delete;
    FileOnDisk& operator=(const FileOnDisk&) = delete;

    std::wstring path;
    double megabytes = 0.0;

private:
    std::filesystem::path m_dir;
};

} // namespace tarquil::bench
