#pragma once
// Helpers shared by the test programs: temporary files and a clean host per test.
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

} // namespace tarquil::test
