// Sweeps the real PDF files of the shared corpus, when it is there, through Open, PageCount
// and the load of every table entry: under the sanitizers this finds crashes, hangs and
// leaks on files nobody here wrote. The suite never depends on it: without the folder the
// test is skipped.
#include "pdf/input/infile_streambuf.h"
#include "pdf/xref/PDFDocument.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>

namespace {

namespace fs = std::filesystem;

TEST(CorpusSweep, EveryFileOpensOrFailsWithACode) {
    const fs::path corpus = TARQUIL_CORPUS;
    std::error_code ec;
    if (!fs::is_directory(corpus, ec))
        GTEST_SKIP() << "no corpus at " << corpus;
    std::map<int, int> openCodes;
    int files = 0, opened = 0, wellFormed = 0, wellFormedOpened = 0;
    long objects = 0, loaded = 0;
    for (const auto& entry : fs::recursive_directory_iterator(corpus, ec)) {
        if (!entry.is_regular_file() || entry.path().extension() != ".pdf")
            continue;
        std::FILE* f = std::fopen(entry.path().c_str(), "rb");
        ASSERT_NE(f, nullptr) << entry.path();
        infile_streambuf buffer(f);
        std::istream input(&buffer);
        PDFDocument doc(&input);
        const PDFStatus status = doc.Open();
        ++files;
        ++openCodes[status];
        // Files outside "damaged" were valid where they came from.
        const bool damaged = entry.path().parent_path().filename() == "damaged";
        wellFormed += !damaged;
        if (status != kPdfOk)
            continue;
        ++opened;
        wellFormedOpened += !damaged;
        std::int32_t pages = 0;
        (void)doc.PageCount(&pages);
        doc.LoadOptionalContent();
        for (std::size_t i = 0; i < doc.entries.size(); ++i) {
            if (doc.entries[i].generation < 0)
                continue;
            ++objects;
            PDFToken* object = nullptr;
            loaded += doc.LoadObject(static_cast<std::int32_t>(i), doc.entries[i].generation,
                                     &object) == kPdfOk;
        }
    }
    std::cout << "corpus: " << files << " files, " << opened << " opened; " << loaded << " of "
              << objects << " table entries loaded; open codes:";
    for (const auto& [code, count] : openCodes)
        std::cout << " " << code << "x" << count;
    std::cout << "\n";
    ASSERT_GT(files, 0);
    // Files outside "damaged" open, save those whose first offset is wrong.
    EXPECT_GE(wellFormedOpened * 10, wellFormed * 9);
}

} // namespace
