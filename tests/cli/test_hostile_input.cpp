// Files made to hurt, through the `tarquil` program under a memory bound: each ends with its
// one message and nothing committed, or imports what it holds, and never takes the process
// down. The bound is --max-memory, not the clock.
#include "support/HostileFiles.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <string>

namespace {

using json = nlohmann::json;
using namespace tarquil::test;

struct Outcome {
    int status = -1;
    json document;
    // The last thing the importer said (a page prompt may come before it).
    std::string Message() const {
        return document["messages"].empty()
                   ? ""
                   : document["messages"].back()["text"].get<std::string>();
    }
};

Outcome Import(const std::string& pdf, const std::string& maxMemory = "1G",
               const std::string& name = "hostile.pdf") {
    const TempFile file(name, pdf);
    const std::string out = file.Path().string() + ".json";
    const std::string command = std::string(TARQUIL_BINARY_DIR) + "/cli/tarquil import '" +
                                file.Path().string() + "' --settings none --quiet --no-questions " +
                                "--max-memory " + maxMemory + " --json '" + out + "' 2>/dev/null";
    Outcome outcome;
    outcome.status = std::system(command.c_str());
    outcome.document = json::parse(ReadFileBytes(out), nullptr, false);
    return outcome;
}

void ExpectRefused(const Outcome& outcome, const std::string& reason) {
    EXPECT_EQ(outcome.status, 256);
    ASSERT_FALSE(outcome.document.is_discarded());
    EXPECT_EQ(outcome.document["result"], 0);
    EXPECT_TRUE(outcome.document["objects"].empty());
    EXPECT_NE(outcome.Message().find(reason), std::string::npos) << outcome.Message();
}

void ExpectImported(const Outcome& outcome, std::size_t objects = 1) {
    EXPECT_EQ(outcome.status, 0) << outcome.Message();
    ASSERT_FALSE(outcome.document.is_discarded());
    EXPECT_EQ(outcome.document["objects"].size(), objects);
}

// The shapes that would grow without end are cut off, each with a reason of its own.
TEST(HostileInput, UnboundedShapesEndWithTheirMessage) {
    ExpectRefused(Import(DeepSavesOverClip(2000, 1000000)), "Graphics states nested too deeply");
    ExpectRefused(Import(OperandFlood(50000000)), "Too many operands without an operator");
    ExpectRefused(Import(FlateBomb(std::size_t{3} << 30), "2G"),
                  "A stream decodes to more data than a drawing can hold");
    ExpectRefused(Import(UnmatchedClosers(10000000)), "Unmatched ']'");
    ExpectRefused(Import(HugePageCount(2000000000)), "page not found");
}

// What nothing foresaw meets the memory bound, and the import ends with its message.
TEST(HostileInput, TheMemoryBoundEndsTheRead) {
    ExpectRefused(Import(FlateBomb(std::size_t{3} << 30), "256M"), "Out of Memory");
}

// Shapes that cost in proportion to their bytes are read as they are.
TEST(HostileInput, ProportionalShapesImport) {
    ExpectImported(Import(DeepNesting(200000, false)));
    ExpectImported(Import(DeepNesting(200000, true)));
    // The text arrives in its font, whose width array is more than a font can be.
    ExpectImported(Import(HugeWidths(1200000)), 2);
    ExpectImported(Import(SelfDrawingForm()));

    // Ten thousand layers cost ten thousand steps (with a search through the table
    // for each, this took minutes), a line of megabytes no more than its bytes.
    const Outcome legacy = Import(ManyLegacyLayers(10000, 2 << 20), "1G", "layers.ai");
    EXPECT_EQ(legacy.status, 0);
    EXPECT_EQ(legacy.document["objects"].size(), 10000u);
    EXPECT_EQ(legacy.document["layers"].size(), 10001u);
}

} // namespace
