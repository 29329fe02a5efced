// The PNG writer on a scanned page: 8-bit grey that cannot be reduced, and an RGB photo.
// zlib's compress2 on the same rows shows what the fixed 256-byte buffers cost.
#include "graphics/PDFImage.h"
#include "output/PngWriter.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

namespace {

PDFImage Scan(int width, int height, int components, const char* space) {
    PDFImage image;
    image.width = width;
    image.height = height;
    image.bitsPerComponent = 8;
    image.colorSpace = space;
    std::mt19937 rng(7);
    image.data.resize(static_cast<std::size_t>(width) * height * components);
    // Mostly paper with some ink and noise: what a scanned drawing compresses like.
    for (std::size_t i = 0; i < image.data.size(); ++i)
        image.data[i] = static_cast<char>(rng() % 16 == 0 ? rng() % 256 : 250 + rng() % 4);
    return image;
}

void WritePngPage(benchmark::State& state, int components, const char* space) {
    const PDFImage image = Scan(2480, 3508, components, space);
    const std::wstring path =
        (std::filesystem::temp_directory_path() / "tarquil-bench.png").wstring();
    for (auto _ : state)
        WritePng(path.c_str(), image);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(image.data.size()));
    std::filesystem::remove(std::filesystem::path(path));
}

void WritePngGrey(benchmark::State& state) {
    WritePngPage(state, 1, "DeviceGray");
}
void WritePngRgb(benchmark::State& state) {
    WritePngPage(state, 3, "DeviceRGB");
}

// The rows with their filter bytes, deflated by zlib in one call at the same level.
void ZlibCompressGrey(benchmark::State& state) {
    const PDFImage image = Scan(2480, 3508, 1, "DeviceGray");
    std::string rows;
    for (int y = 0; y < image.height; ++y)
        rows += '\0' + image.data.substr(static_cast<std::size_t>(y) * image.width, image.width);
    std::string out(compressBound(rows.size()), '\0');
    for (auto _ : state) {
        uLongf size = out.size();
        benchmark::DoNotOptimize(compress2(reinterpret_cast<Bytef*>(out.data()), &size,
                                           reinterpret_cast<const Bytef*>(rows.data()), rows.size(),
                                           6));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(rows.size()));
}

} // namespace

BENCHMARK(WritePngGrey)->Unit(benchmark::kMillisecond);
BENCHMARK(WritePngRgb)->Unit(benchmark::kMillisecond);
BENCHMARK(ZlibCompressGrey)->Unit(benchmark::kMillisecond);
