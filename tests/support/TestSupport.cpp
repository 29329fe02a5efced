#include "support/TestSupport.h"

#include "host/base/GK_String.h"
#include "host/base/VmFontList.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <atomic>
#include <fstream>
#include <sstream>
#include <unistd.h>

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

} // namespace tarquil::test
