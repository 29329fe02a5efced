// Group 4 decoding of a whole A4 page at 300 dpi: a typed document, where vertical codes
// dominate, and noise, where nearly every code is horizontal with short runs.
#include "filters/CcittFax.h"

#include <benchmark/benchmark.h>
#include <tiffio.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

namespace {

constexpr int kWidth = 2480, kHeight = 3508;
constexpr std::size_t kLineBytes = (kWidth + 7) / 8;

void SetPixel(std::string& page, int x, int y) {
    page[static_cast<std::size_t>(y) * kLineBytes + static_cast<std::size_t>(x / 8)] |=
        static_cast<char>(0x80 >> (x % 8));
}

// Lines of words set in 64 made-up glyphs of 20 by 28 pixels, strokes two pixels thick.
std::string DocumentPage() {
    std::mt19937 rng(42);
    std::uint32_t glyphs[64][2];
    for (auto& g : glyphs)
        g[0] = rng(), g[1] = rng();
    std::string page(kLineBytes * kHeight, '\0');
    for (int top = 250; top + 28 < kHeight - 250; top += 48) {
        for (int left = 200; left + 20 < kWidth - 200; left += 22) {
            if (rng() % 7 == 0) {
                left += 11; // a space between words
                continue;
            }
            const std::uint32_t* g = glyphs[rng() % 64];
            // Bits of the glyph pick vertical strokes (4 columns) and horizontal ones (7 rows).
            for (int s = 0; s < 4; ++s)
                if (g[0] >> s & 1)
                    for (int y = 0; y < 28; ++y)
                        for (int t = 0; t < 2; ++t)
                            SetPixel(page, left + 2 + s * 5 + t, top + y);
            for (int s = 0; s < 7; ++s)
                if (g[1] >> s & 1)
                    for (int x = 2; x < 19; ++x)
                        for (int t = 0; t < 2; ++t)
                            SetPixel(page, left + x, top + s * 4 + t);
        }
    }
    return page;
}

// Random pixels inside white margins of a byte: each line starts and ends white, so that
// no horizontal code at a line's end leaves the next line out of step.
std::string NoisePage() {
    std::mt19937 rng(7);
    std::string page(kLineBytes * kHeight, '\0');
    for (std::size_t y = 0; y < kHeight; ++y)
        for (std::size_t x = 1; x + 1 < kLineBytes; ++x)
            page[y * kLineBytes + x] = static_cast<char>(rng() & 0xFF);
    return page;
}

// The Group 4 strip libtiff writes for the page; empty if libtiff fails.
std::string EncodeGroup4(const std::string& page) {
    char path[] = "/tmp/tarquil_bench_fax_XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0)
        return {};
    close(fd);
    std::string raw;
    if (TIFF* tif = TIFFOpen(path, "w")) {
        TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, kWidth);
        TIFFSetField(tif, TIFFTAG_IMAGELENGTH, kHeight);
        TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, kHeight);
        TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        std::string line(kLineBytes, '\0');
        for (int y = 0; y < kHeight; ++y) {
            line.assign(page, static_cast<std::size_t>(y) * kLineBytes, kLineBytes);
            TIFFWriteScanline(tif, line.data(), static_cast<std::uint32_t>(y), 0);
        }
        TIFFClose(tif);
    }
    if (TIFF* tif = TIFFOpen(path, "r")) {
        raw.resize(static_cast<std::size_t>(TIFFRawStripSize(tif, 0)));
        TIFFReadRawStrip(tif, 0, raw.data(), static_cast<tmsize_t>(raw.size()));
        TIFFClose(tif);
    }
    unlink(path);
    return raw;
}

void Decode(benchmark::State& state, const std::string& page) {
    const std::string raw = EncodeGroup4(page);
    if (raw.empty()) {
        state.SkipWithError("libtiff could not encode the page");
        return;
    }
    std::string out;
    int status = 0;
    for (auto _ : state) {
        status = DecodeFax2D(raw, out, kWidth);
        benchmark::DoNotOptimize(out.data());
    }
    if (status != 0 && status != -1)
        state.SkipWithError("the page did not decode");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(raw.size()));
    state.counters["coded_bytes"] = static_cast<double>(raw.size());
    state.counters["lines"] = static_cast<double>(out.size() / kLineBytes);
}

void Group4DocumentPage(benchmark::State& state) {
    Decode(state, DocumentPage());
}
BENCHMARK(Group4DocumentPage)->Unit(benchmark::kMillisecond);

void Group4NoisePage(benchmark::State& state) {
    Decode(state, NoisePage());
}
BENCHMARK(Group4NoisePage)->Unit(benchmark::kMillisecond);

} // namespace
