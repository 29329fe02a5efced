#include "cli/InspectCommand.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(InspectTokens, PlainReportListsTheStackBottomFirst) {
    EXPECT_EQ(TokensReport("1 (a) /N#20x [2 3]", false), "status: 10010\n1\n(a)\n/N#20x\n[2 3]\n");
    EXPECT_EQ(TokensReport("<</A 1 /A 2>> <4G>", false), "status: 10008\n<</A 1>>\n");
    EXPECT_EQ(TokensReport("", false), "status: 10010\n");
}

TEST(InspectTokens, JsonKeepsEveryByte) {
    // A dictionary key prints unescaped, and stream data as they stand: raw high bytes
    // and NUL reach the report.
    const std::string text = std::string("<</K#ff 1>> <</Length 2>> stream\n\xE9\0\nendstream", 45);
    const nlohmann::json report = nlohmann::json::parse(TokensReport(text, true));
    EXPECT_EQ(report["status"], 10010);
    ASSERT_EQ(report["stack"].size(), 2u);
    // Back from characters to bytes, one for one.
    auto bytes = [](const std::string& utf8) {
        std::string out;
        for (std::size_t i = 0; i < utf8.size(); ++i) {
            const auto c = static_cast<unsigned char>(utf8[i]);
            if (c < 0x80) {
                out += static_cast<char>(c);
            } else {
                out += static_cast<char>(((c & 0x1F) << 6) |
                                         (static_cast<unsigned char>(utf8[++i]) & 0x3F));
            }
        }
        return out;
    };
    EXPECT_EQ(bytes(report["stack"][0].get<std::string>()), "<</K\xFF 1>>");
    EXPECT_EQ(bytes(report["stack"][1].get<std::string>()),
              std::string("<</Length 2>> stream\n\xE9\0\nendstream", 33));
}

} // namespace
