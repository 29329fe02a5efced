#pragma once
// Whole imports from disk, timed as a user would meet them.
#include "host/base/GK_String.h"
#include "host/doc/CVelmoDoc.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"
#include "shell/CQuillonPlugIn.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <fstream>
#include <memory>
#include <string>

namespace tarquil::bench {

// A host without messages, scripted answers or a window, so nothing can stop to ask.
inline void QuietHost() {
    VmMessages().Clear();
    VmMessages().SetEcho(nullptr);
    VmUi().Reset();
    VelmoApp().SetHeadless(true);
}

// Imports the PDF at `path` once an iteration into a new headless document, with the default
// options (fills as hatches, fitted to the screen), timing the import alone; `look` sees each
// document before it is freed. Sets the counter peak_MB: Linux lets a process reset its
// resident high-water mark, which ru_maxrss reads, so the peak leaves out the generator and
// earlier benchmarks (where that fails it is the peak of the whole process so far); it counts
// everything resident, not the import's own allocations alone.
template <class Look>
void TimeImports(benchmark::State& state, const std::wstring& path, Look look) {
    static CQuillonPlugIn plugIn; // the library's own object is not linked here
    plugIn.pdfOptions = ImportFormatOptions{};
    CVelmoFileReadOptions options;
    options.SetNoUserInterfaceQuestions(true);
    std::ofstream("/proc/self/clear_refs") << "5";
    for (auto _ : state) {
        state.PauseTiming();
        auto doc = std::make_unique<CVelmoDoc>();
        doc->SetHeadless(true);
        VmMessages().Clear();
        state.ResumeTiming();

        const int ok = plugIn.ImportFile(path.c_str(), ImportFormatPdf, *doc, options);

        state.PauseTiming();
        if (ok != 1) {
            const auto& log = VmMessages().Messages();
            state.SkipWithError(log.empty() ? "import failed"
                                            : VmUtf8FromWide(log.back().text).c_str());
            return;
        }
        look(*doc);
        doc.reset(); // freeing the document is not part of the import
        state.ResumeTiming();
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_MB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
}

} // namespace tarquil::bench
