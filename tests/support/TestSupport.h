#pragma once
// Helpers shared by the test programs: temporary files, a clean host per test, and the
// few system calls several suites make.
#include <filesystem>
#include <string>

namespace tarquil::test {

// A file under the system's temporary folder, removed again on destruction.
class TempFile {
public:
    // `name` is the file name (its extension matters to the reader); `bytes` its content.
    TempFile(const std::string& name, const std::string& bytes);
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    std::wstring WidePath() const;

private:
    std::filesystem::path m_dir;
    std::filesystem::path m_path;
};

// Puts the process-wide host state back: no messages, no scripted answers, no terminal,
// a headless application, messages not echoed, and an empty list of installed fonts.
void ResetHost();

std::string ReadFileBytes(const std::filesystem::path& path);

// zlib's own deflate at level 6: the reference stream that the importer's decoder must read.
std::string ZlibCompress(const std::string& data);
// `s` in single quotes for the shell.
std::string ShellQuote(const std::string& s);
// What `command` writes on standard output; its wait status in `status` when asked for.
std::string CommandOutput(const std::string& command, int* status = nullptr);
// Whether the shared library at `path` is mapped into this process.
bool IsLibraryMapped(const std::string& path);

} // namespace tarquil::test
