#include "shell/CQuillonPlugIn.h"
#include "shell/FormatDispatch.h"

#include "support/TestSupport.h"

#include "host/ui/VmMessages.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

bool HasMarker(std::string bytes) {
    std::FILE* f = fmemopen(bytes.data(), bytes.size(), "rb");
    if (bytes.empty())
        f = std::tmpfile(); // fmemopen refuses an empty buffer
    const bool found = ScanForLegacyMarker(f);
    std::fclose(f);
    return found;
}

TEST(FormatDispatch, MarkerForms) {
    EXPECT_TRUE(HasMarker("%%EndSetup"));
    EXPECT_TRUE(HasMarker("junk\n%%endsetup\n"));
    EXPECT_TRUE(HasMarker("%%eNdSeTuP"));
    EXPECT_TRUE(HasMarker("x%%EndSetup"));
    // The third "%" fails the chain and is not looked at again.
    EXPECT_FALSE(HasMarker("%%%EndSetup"));
    EXPECT_FALSE(HasMarker("%%EndSetu"));
    EXPECT_FALSE(HasMarker("%%End Setup"));
    EXPECT_FALSE(HasMarker(""));
}

TEST(FormatDispatch, CountsPassesNotBytes) {
    const std::string marker = "%%EndSetup";
    // The last allowed pass reads the marker's first byte.
    EXPECT_TRUE(HasMarker(std::string(1999999, 'x') + marker));
    EXPECT_FALSE(HasMarker(std::string(2000000, 'x') + marker));
    // Failed chains ("%a": one pass, two bytes) do not add to the count.
    std::string chains;
    for (int i = 0; i < 1999999; ++i)
        chains += "%a";
    EXPECT_TRUE(HasMarker(chains + marker));
}

TEST(FormatDispatch, ImportFileRoutesByContent) {
    tarquil::test::ResetHost();
    CQuillonPlugIn plugIn;
    CVelmoDoc doc;
    CVelmoFileReadOptions options;

    // No marker: the PDF route, which reports on the command line when headless; the file
    // has no cross-reference end to find.
    tarquil::test::TempFile pdf("drawing.ai", "%PDF-1.4\n1 0 obj\n<<>>\nendobj\n");
    EXPECT_EQ(plugIn.ImportFile(pdf.WidePath().c_str(), 1, doc, options), 0);
    EXPECT_EQ(plugIn.currentFormatIndex, 1);
    ASSERT_EQ(VmMessages().Messages().size(), 1u);
    EXPECT_EQ(VmMessages().Messages()[0].kind, "print");
    EXPECT_EQ(VmMessages().Messages()[0].text,
              L"Error reading file " + pdf.WidePath() + L" -- Invalid PDF.\n");

    // An empty file holds no marker either.
    VmMessages().Clear();
    tarquil::test::TempFile empty("empty.eps", "");
    EXPECT_EQ(plugIn.ImportFile(empty.WidePath().c_str(), 2, doc, options), 0);
    EXPECT_EQ(VmMessages().Messages().size(), 1u);
    EXPECT_EQ(plugIn.currentFormatIndex, 2);

    // A file that cannot be opened: a box titled and worded alike, headless or not.
    VmMessages().Clear();
    EXPECT_EQ(plugIn.ImportFile(L"/nonexistent/dir/x.pdf", 0, doc, options), 0);
    ASSERT_EQ(VmMessages().Messages().size(), 1u);
    const VmMessage& box = VmMessages().Messages()[0];
    EXPECT_EQ(box.kind, "box");
    EXPECT_EQ(box.title, L"PDF File Read Error");
    EXPECT_EQ(box.text, L"PDF File Read Error");
    EXPECT_EQ(box.flags, 48u);
    EXPECT_EQ(doc.ObjectCount(), 0);
}

} // namespace
