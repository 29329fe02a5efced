// Runs a fuzz target over saved inputs without a fuzzing engine: every file under the
// folders (or files) named on the command line. A crash fails the run.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {
void RunOne(const std::filesystem::path& path, int& count) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++count;
}
} // namespace

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path root(argv[i]);
        std::error_code ec;
        if (std::filesystem::is_regular_file(root, ec)) {
            RunOne(root, count);
            continue;
        }
        if (!std::filesystem::is_directory(root, ec))
            continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root, ec))
            if (entry.is_regular_file() && entry.path().filename().string()[0] != '.')
                RunOne(entry.path(), count);
    }
    std::printf("replayed %d inputs\n", count);
    return count > 0 ? 0 : 1;
}
