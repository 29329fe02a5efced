#include "legacy/LineReader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

std::vector<std::string> ReadAll(const std::string& bytes) {
    std::FILE* f = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb");
    std::vector<std::string> lines;
    char line[kScannerLineBuffer];
    while (f && ReadScannerLine(f, line))
        lines.emplace_back(line);
    if (f)
        std::fclose(f);
    return lines;
}

TEST(LineReader, EndsBlankLinesAndTrimming) {
    // CR, LF and CRLF all end lines; blank and white-space-only lines are passed over.
    EXPECT_EQ(ReadAll("a\rb\nc\r\nd"), (std::vector<std::string>{"a", "b", "c", "d"}));
    EXPECT_EQ(ReadAll("\n\n  \t\r\n  x y  \n\n"), (std::vector<std::string>{"x y"}));
    EXPECT_TRUE(ReadAll("").empty());
    EXPECT_TRUE(ReadAll(" \n\t\r\n").empty());
    // A byte with the high bit set is never trimmed away.
    EXPECT_EQ(ReadAll("\xA0q\xA0\n"), (std::vector<std::string>{"\xA0q\xA0"}));
    // The last line counts without a line end.
    EXPECT_EQ(ReadAll("one\ntwo  "), (std::vector<std::string>{"one", "two"}));
}

TEST(LineReader, LongLineIsCutAt254Bytes) {
    const std::string first(254, 'a');
    const std::string rest(45, 'c');
    const auto lines = ReadAll(first + "B" + rest + "\nnext\n");
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], first); // the 255th byte is dropped
    EXPECT_EQ(lines[1], rest);  // the rest of the line reads as a line of its own
    EXPECT_EQ(lines[2], "next");
    // Exactly 254 bytes fit whole.
    EXPECT_EQ(ReadAll(first + "\n"), (std::vector<std::string>{first}));
}

} // namespace
