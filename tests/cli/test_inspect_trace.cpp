#include "cli/InspectTrace.h"
#include "cli/TraceState.h"

#include "graphics/PDFImage.h"
#include "graphics/PageDriver.h"
#include "support/PdfWriter.h"
#include "support/TestSupport.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using tarquil::test::PdfWriter;
using tarquil::test::TempFile;

// Pages of [0 0 200 100] with font F1, one for each content stream.
std::string Pages(const std::vector<std::string>& contents) {
    PdfWriter writer;
    writer.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    writer.Object(3, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>");
    std::string kids;
    for (std::size_t i = 0; i < contents.size(); ++i) {
        const std::string page = std::to_string(4 + 2 * i), content = std::to_string(5 + 2 * i);
        kids += page + " 0 R ";
        writer.Object(4 + 2 * i, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 100] "
                                 "/Resources << /Font << /F1 3 0 R >> >> /Contents " +
                                     content + " 0 R >>");
        writer.Stream(5 + 2 * i, "", contents[i]);
    }
    writer.Object(2, "<< /Type /Pages /Kids [" + kids + "] /Count " +
                         std::to_string(contents.size()) + " >>");
    writer.ClassicXref("/Root 1 0 R");
    return writer.Text();
}

PDFStatus Trace(const std::string& content, TraceState& trace) {
    TempFile file("trace.pdf", Pages({content}));
    return ReadDocument(std::fopen(file.Path().c_str(), "rb"), trace, true,
                        [](int, bool) { return std::set<int>{0}; });
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// The first line that starts with `op` and a space, or is exactly `op`.
std::string LineOf(const std::vector<std::string>& lines, const std::string& op) {
    for (const std::string& line : lines)
        if (line == op || line.rfind(op + " ", 0) == 0)
            return line;
    return "(missing " + op + ")";
}

const char* const kContent = "1 0 0 1 10 20 cm 0 0 m 5 5 l S BT /F1 12 Tf (Hi) Tj ET";

TEST(InspectTrace, TextShowsCallsPathAndTextRun) {
    TraceState trace;
    ASSERT_EQ(Trace(kContent, trace), kPdfOk);
    const std::vector<std::string> lines = Lines(trace.TextReport());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "ConcatMatrix 1 0 0 1 10 20"), lines.end());
    // The path is in device space at the time of the Stroke, with the page's clip box.
    EXPECT_EQ(LineOf(lines, "Stroke"), "Stroke path=[[m 10 20] [l 15 25]] clipBox=[0 0 200 100]");
    EXPECT_EQ(LineOf(lines, "SetFont"), "SetFont (F1) 12 0 0");
    EXPECT_EQ(LineOf(lines, "FlushTextRun"),
              "FlushTextRun 0 pendingText=\"Hi\" textMatrix=[1 0 0 1 0 0] "
              "currentMatrix=[1 0 0 1 10 20] fontSize=12 fontHeightScale=0.718 "
              "fontFamily=(Helvetica)");
    // The base still ran: Stroke emptied the path.
    EXPECT_TRUE(trace.pathElements.empty());
}

TEST(InspectTrace, JsonHasTheSameCallsWithNumbersAndBytes) {
    TraceState trace;
    ASSERT_EQ(Trace("0.5 w 1 2 m 3.25 4 l f /Tag <</K#ff 1>> BDC BT (abcdefghijkl\\351) Tj ET EMC",
                    trace),
              kPdfOk);
    const nlohmann::json calls = nlohmann::json::parse(trace.JsonReport());
    ASSERT_TRUE(calls.is_array());
    ASSERT_EQ(calls.size(), Lines(trace.TextReport()).size());
    auto find = [&](const std::string& op) {
        for (const nlohmann::json& call : calls)
            if (call["op"] == op)
                return call;
        return nlohmann::json();
    };
    EXPECT_EQ(find("SetLineWidth")["args"], nlohmann::json::parse("[0.5]"));
    EXPECT_EQ(find("Fill")["path"], nlohmann::json::parse("[[\"m\",1,2],[\"l\",3.25,4]]"));
    // A byte string in its PDF literal form; a token in its own form, whose raw byte 0xFF
    // arrives as U+00FF.
    EXPECT_EQ(find("AppendText")["args"][0], "(abcdefghijkl\\351)");
    EXPECT_EQ(find("BeginMarkedContent")["args"],
              nlohmann::json::parse("[\"(Tag)\", \"<</K\\u00ff 1>>\"]"));
}

TEST(InspectTrace, ImageRecordAndUtf8) {
    TraceState trace;
    auto* image = new PDFImage;
    image->width = 2;
    image->height = 3;
    image->bitsPerComponent = 8;
    image->colorSpace = "DeviceRGB";
    image->data = std::string(18, 'x');
    image->corners = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
    trace.DrawImage(image);
    EXPECT_EQ(trace.TextReport(),
              "DrawImage true width=2 height=3 bitsPerComponent=8 colorSpace=(DeviceRGB) "
              "dataLength=18 corners=[[0 0] [1 0] [1 1] [0 1]]\n");

    EXPECT_EQ(TraceUtf8(u"a\u00E9\u20AC"), "a\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(TraceUtf8(std::u16string{0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
    EXPECT_EQ(TraceUtf8(std::u16string{0xD83D, u'x'}), "\xEF\xBF\xBDx");
}

// The command answers the page prompt with --pages and keeps standard output to the JSON;
// each colour set shows its space and the bytes it gave.
TEST(InspectTrace, CommandReadsTheAskedPages) {
    tarquil::test::ResetHost();
    TempFile file("pages.pdf", Pages({"1 1 m 2 2 l S", "0 0 1 0 K 7 7 m 8 8 l S"}));
    InspectArguments args;
    args.file = file.Path().string();
    args.json = true;
    args.pages = "2";
    std::ostringstream out;
    std::streambuf* saved = std::cout.rdbuf(out.rdbuf());
    const int status = RunInspectTrace(args);
    std::cout.rdbuf(saved);
    tarquil::test::ResetHost();
    EXPECT_EQ(status, 0);

    const nlohmann::json calls = nlohmann::json::parse(out.str(), nullptr, false);
    ASSERT_TRUE(calls.is_array()) << out.str();
    std::vector<nlohmann::json> strokes;
    for (const nlohmann::json& call : calls) {
        if (call["op"] == "Stroke")
            strokes.push_back(call["path"]);
        if (call["op"] == "SetColour") {
            EXPECT_EQ(call["space"], "(DeviceCMYK)");
            EXPECT_EQ(call["rgb"], nlohmann::json::parse("[255, 255, 0]"));
        }
    }
    ASSERT_EQ(strokes.size(), 1u);
    EXPECT_EQ(strokes[0][0], nlohmann::json::parse("[\"m\", 7, 7]"));
}

} // namespace
