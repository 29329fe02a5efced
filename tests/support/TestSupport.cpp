#include "support/TestSupport.h"

#include "host/base/GK_String.h"
#include "host/base/VmFontList.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <atomic>
#include <cstdio>
#include <dlfcn.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <unistd.h>
#include <zlib.h>

namespace tarquil::test {

TempFile::TempFile(const std::string& name, const std::string& bytes) {
    static std::atomic<int> counter{0};
    m_dir = std::filesystem::temp_directory_path() /
            ("tarquil-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    std::filesystem::create_directories(m_dir);
    m_path = m_dir / name;
    std::ofstream out(m_path, std::ios::binary);
    out << bytes;
}

TempFile::~TempFile() {
    std::error_code ec;
    std::filesystem::remove_all(m_dir, ec);
}

std::wstring TempFile::WidePath() const {
    return VmWideFromUtf8(m_path.string());
}

void ResetHost() {
    VmMessages().Clear();
    VmMessages().SetEcho(nullptr);
    VmUi().Reset();
    VelmoApp().SetHeadless(true);
    // No machine's fonts: a test that matches fonts names its own.
    VmSetFontFamilies(std::vector<std::wstring>{});
}

std::string ReadFileBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::string ZlibCompress(const std::string& data) {
    uLongf size = compressBound(data.size());
    std::string out(size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(out.data()), &size,
                  reinterpret_cast<const Bytef*>(data.data()), data.size(), 6) != Z_OK)
        throw std::runtime_error("deflate failed");
    out.resize(size);
    return out;
}

std::string ShellQuote(const std::string& s) {
    std::string q = "'";
    for (char c : s)
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

std::string CommandOutput(const std::string& command, int* status) {
    std::string text;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        text.append(buffer, n);
    const int result = pclose(pipe);
    if (status)
        *status = result;
    return text;
}

bool IsLibraryMapped(const std::string& path) {
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

} // namespace tarquil::test
