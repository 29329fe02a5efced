// "FlateDecode" on a large stream next to zlib's own one-call uncompress of the same data.
#include "filters/Filters.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <random>
#include <string>

namespace {

// 50 MB of drawing-like content text, deflated once.
struct FlateFixture {
    std::string plain, deflated;
    FlateFixture() {
        std::mt19937 rng(5);
        while (plain.size() < 50u * 1024 * 1024) {
            plain += std::to_string(rng() % 5000) + "." + std::to_string(rng() % 100) + " " +
                     std::to_string(rng() % 5000) + " " + (rng() % 3 ? "l\n" : "m\n");
        }
        uLongf size = compressBound(plain.size());
        deflated.resize(size);
        compress2(reinterpret_cast<Bytef*>(deflated.data()), &size,
                  reinterpret_cast<const Bytef*>(plain.data()), plain.size(), 6);
        deflated.resize(size);
    }
};

const FlateFixture& Fixture() {
    static const FlateFixture fixture;
    return fixture;
}

void FlateDecodeFilter(benchmark::State& state) {
    const FlateFixture& f = Fixture();
    for (auto _ : state) {
        std::string out;
        benchmark::DoNotOptimize(FlateDecode(f.deflated, out, nullptr));
        if (out.size() != f.plain.size())
            state.SkipWithError("wrong size");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * Fixture().plain.size()));
}
BENCHMARK(FlateDecodeFilter)->Unit(benchmark::kMillisecond);

void ZlibUncompress(benchmark::State& state) {
    const FlateFixture& f = Fixture();
    for (auto _ : state) {
        std::string out(f.plain.size(), '\0');
        uLongf size = out.size();
        benchmark::DoNotOptimize(uncompress(reinterpret_cast<Bytef*>(out.data()), &size,
                                            reinterpret_cast<const Bytef*>(f.deflated.data()),
                                            f.deflated.size()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * Fixture().plain.size()));
}
BENCHMARK(ZlibUncompress)->Unit(benchmark::kMillisecond);

} // namespace
