// Throughput of the lexical parser on content-stream text: numbers and operators, the
// bulk of what a drawing of a million paths is made of.
#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

// Takes every operator as known and clears its operands, as an interpreter would.
class SwallowingParser : public PDFParser {
public:
    using PDFParser::PDFParser;
    PDFStatus ExecuteWord(const std::string&, PDFDocument*) override {
        while (!operandStack.empty())
            Drop();
        ++words;
        return kPdfOk;
    }
    long words = 0;
};

std::string ContentText(int paths) {
    std::string s;
    for (int i = 0; i < paths; ++i) {
        const std::string x = std::to_string(i % 1000), y = std::to_string((i * 7) % 800);
        s += x + ".25 " + y + ".5 m\n" + y + " " + x + " l\n" + x + ".125 " + y + " 12.5 " + x +
             " " + y + ".75 3 c\n[3 1] 0 d\n0.5 0.25 0.125 rg\nS\n";
    }
    return s;
}

void ParseContent(benchmark::State& state) {
    const std::string text = ContentText(static_cast<int>(state.range(0)));
    long words = 0;
    for (auto _ : state) {
        auto input = MakeMemoryInput(text.data(), text.size());
        SwallowingParser parser(input.get(), nullptr);
        const PDFStatus status = parser.ParseUntil("");
        benchmark::DoNotOptimize(status);
        words = parser.words;
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(text.size()));
    state.counters["operators"] = static_cast<double>(words);
}
BENCHMARK(ParseContent)->Arg(100000)->Unit(benchmark::kMillisecond);

// Closing brackets that open nothing, over a deep stack of operands, read by a caller that
// goes on after each failure: each closer used to search the whole stack for its mark.
void UnmatchedClosers(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "1 ";
    for (int i = 0; i < count; ++i)
        text += i % 2 ? "] " : ">> ";
    for (auto _ : state) {
        auto input = MakeMemoryInput(text.data(), text.size());
        PDFParser parser(input.get(), nullptr);
        int failures = 0;
        for (PDFStatus status = kPdfOk; status != kPdfEof;) {
            status = parser.ReadToken();
            failures += status != kPdfOk && status != kPdfEof;
        }
        benchmark::DoNotOptimize(failures);
    }
    state.SetComplexityN(count);
}
BENCHMARK(UnmatchedClosers)->Range(1 << 10, 1 << 16)->Complexity()->Unit(benchmark::kMillisecond);

} // namespace
