#include "pdf/parser/PDFParser.h"
#include "pdf/xref/PDFDocument.h"
#include "support/PdfWriter.h"

#include "OpenedPdf.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using tarquil::test::PdfWriter;

using tarquil::test::Opened;

// The file's objects are all in its table; `written` names them for the reader's sake.
std::unique_ptr<Opened> OpenByHand(PdfWriter& writer, const std::vector<int>& /*written*/,
                                   int rootNumber) {
    return tarquil::test::OpenWritten(writer, rootNumber);
}

// Object k+1 is bodies[k]; an empty body leaves the number out of the file and the table.
std::unique_ptr<Opened> Build(const std::vector<std::string>& bodies) {
    PdfWriter writer;
    std::vector<int> written;
    for (std::size_t k = 0; k < bodies.size(); ++k)
        if (!bodies[k].empty()) {
            writer.Object(static_cast<int>(k) + 1, bodies[k]);
            written.push_back(static_cast<int>(k) + 1);
        }
    return OpenByHand(writer, written, 1);
}

const std::string kCatalog = "<< /Type /Catalog /Pages 2 0 R >>";

PDFToken* Obj(Opened& o, int number) {
    PDFToken* token = nullptr;
    EXPECT_EQ(o.doc.LoadObject(number, 0, &token), kPdfOk);
    return token;
}

std::pair<PDFStatus, std::string> Path(Opened& o, const char* path) {
    PDFToken* out = o.doc.root; // any non-null value: a failure must reset it
    const PDFStatus status = o.doc.LookupPath(o.doc.root, path, &out);
    if (status != kPdfOk) {
        EXPECT_EQ(out, nullptr) << path;
    }
    return {status, out ? out->ToString() : "<null>"};
}

std::pair<PDFStatus, std::int32_t> Count(const std::vector<std::string>& bodies) {
    auto o = Build(bodies);
    std::int32_t count = -7;
    const PDFStatus status = o->doc.PageCount(&count);
    return {status, count};
}

// The status of a search from /Pages for `target` and the page's object number (0: none).
std::pair<PDFStatus, int> Find(Opened& o, std::int32_t target, std::int32_t counter = 0) {
    PDFToken* pages = nullptr;
    EXPECT_EQ(o.doc.LookupPath(o.doc.root, "Pages", &pages), kPdfOk);
    PDFToken* page = nullptr;
    const PDFStatus status = o.doc.FindPage(pages, target, &counter, &page);
    for (std::size_t k = 1; k < o.doc.entries.size(); ++k)
        if (page && page == o.doc.entries[k].object)
            return {status, static_cast<int>(k)};
    EXPECT_EQ(page, nullptr);
    return {status, 0};
}

using Found = std::pair<PDFStatus, int>;

// Pages 3, 5, 6, 7 in that order, 5 and 6 under a middle node.
const std::vector<std::string> kTree = {
    "<< /Type /Catalog /Pages 2 0 R /Title (t) /Bad 99 0 R >>",
    "<< /Type /Pages /Count 4 /Kids [3 0 R 4 0 R 7 0 R] >>",
    "<< /Type /Page >>",
    "<< /Type /Pages /Count 2 /Kids [5 0 R 6 0 R] >>",
    "<< /Type /Page /Rotate null >>",
    "<< /Type /Page >>",
    "<< /Type /Page >>",
};

TEST(PageTree, ResolveAndLookupPath) {
    auto o = Build(kTree);
    PDFDocument& doc = o->doc;
    PDFToken* out = doc.root;
    EXPECT_EQ(doc.ResolveToken(nullptr, &out), kPdfNullReference);
    EXPECT_EQ(out, nullptr);
    PDFParser::PDFInteger direct(5);
    EXPECT_EQ(doc.ResolveToken(&direct, &out), kPdfOk);
    EXPECT_EQ(out, &direct);
    PDFParser::PDFRef missing(99, 0), badGeneration(2, 1);
    EXPECT_EQ(doc.ResolveToken(&missing, &out), kPdfBadReference);
    EXPECT_EQ(doc.ResolveToken(&badGeneration, &out), kPdfBadReference);
    EXPECT_EQ(doc.ResolveRoot(&out), kPdfOk);
    EXPECT_EQ(out, Obj(*o, 1));

    // Arrays are walked by index, and only the final reference is loaded.
    EXPECT_EQ(Path(*o, "Pages/Kids/0"), Path(*o, "Pages/Kids/x")); // atoi reads "x" as 0
    EXPECT_EQ(Path(*o, "Pages/Kids/0").second, "<</Type /Page>>");
    EXPECT_EQ(Path(*o, "Pages/Kids/1/Kids/1/Type").second, "/Page");
    EXPECT_EQ(Path(*o, "Pages/Kids/1/Count").second, "2");
    EXPECT_EQ(Path(*o, "Pages/Kids/2"), (std::pair<PDFStatus, std::string>{0, "<</Type /Page>>"}));
    // Outside the array: like a missing key.
    for (const char* outside : {"Pages/Kids/3", "Pages/Kids/-1", "Pages/Kids/99999999999"})
        EXPECT_EQ(Path(*o, outside).first, kPdfNullReference) << outside;
    // Through a string or a number there is no way on.
    EXPECT_EQ(Path(*o, "Title/x").first, -1);
    EXPECT_EQ(Path(*o, "Pages/Count/0").first, -1);
    // Missing keys, null values and keys of another case are all 10028.
    EXPECT_EQ(Path(*o, "Pages/Nothing").first, kPdfNullReference);
    EXPECT_EQ(Path(*o, "Pages/Kids/1/Kids/0/Rotate").first, kPdfNullReference);
    EXPECT_EQ(Path(*o, "pages").first, kPdfNullReference);
    EXPECT_EQ(Path(*o, "Nothing/Type").first, kPdfNullReference);
    EXPECT_EQ(doc.LookupPath(nullptr, "Pages", &out), kPdfNullReference);
    // A bad reference fails on the way and at the end.
    EXPECT_EQ(Path(*o, "Bad/Type").first, kPdfBadReference);
    EXPECT_EQ(Path(*o, "Bad").first, kPdfBadReference);
}

TEST(PageTree, PageCount) {
    const std::string page = "<< /Type /Page >>";
    // /Count is trusted over the kids.
    EXPECT_EQ(Count({kCatalog, "<< /Type /Pages /Count 7 /Kids [3 0 R] >>", page}),
              (Found{kPdfOk, 7}));
    EXPECT_EQ(Count({kCatalog, "<< /Type /Pages /Count 3 0 R /Kids [] >>", "12"}),
              (Found{kPdfOk, 12}));
    EXPECT_EQ(Count({kCatalog, "<< /Type /Pages /Count 9 0 R >>"}).first, kPdfNoCountItem);
    EXPECT_EQ(Count({kCatalog, "<< /Type /Pages /Kids [3 0 R] >>", page}).first, kPdfNoCountItem);
    // A root that is no Pages node is one page.
    EXPECT_EQ(Count({kCatalog, "<< /Type /Page /Count 5 >>"}), (Found{kPdfOk, 1}));
    EXPECT_EQ(Count({kCatalog, "<< /Type /Template >>"}), (Found{kPdfOk, 1}));
    EXPECT_EQ(Count({kCatalog, "<< /Count 5 >>"}).first, kPdfNoTypeItem);
    EXPECT_EQ(Count({kCatalog, "[ ]"}).first, kPdfExpectedDictionary);
    // A bad /Pages reference counts one page; a missing /Pages does not.
    EXPECT_EQ(Count({kCatalog}), (Found{kPdfOk, 1}));
    EXPECT_EQ(Count({"<< /Pages 2 3 R >>", "<< /Type /Pages /Count 4 >>"}), (Found{kPdfOk, 1}));
    EXPECT_EQ(Count({"<< /Type /Catalog >>"}).first, kPdfNullReference);
}

TEST(PageTree, FindPageWalksByCount) {
    auto o = Build(kTree);
    EXPECT_EQ(Find(*o, 0), (Found{kPdfOk, 3}));
    EXPECT_EQ(Find(*o, 1), (Found{kPdfOk, 5}));
    EXPECT_EQ(Find(*o, 2), (Found{kPdfOk, 6}));
    EXPECT_EQ(Find(*o, 3), (Found{kPdfOk, 7}));
    EXPECT_EQ(Find(*o, 4), (Found{kPdfContinue, 0})); // passed by the root's /Count
    EXPECT_EQ(Find(*o, 1, 3), (Found{kPdfPageNotFound, 0}));

    const auto tree = [](const std::string& root, const std::string& kid) {
        return Build({kCatalog, root, "<< /Type /Page >>", kid, "<< /Type /Page >>"});
    };
    const std::string three = "<< /Type /Pages /Count 3 /Kids [3 0 R 4 0 R 5 0 R] >>";
    // A middle node counting 0 is passed; its page is never reached.
    auto zero = tree(three, "<< /Type /Pages /Count 0 /Kids [3 0 R] >>");
    EXPECT_EQ(Find(*zero, 1), (Found{kPdfOk, 5}));
    EXPECT_EQ(Find(*zero, 2), (Found{kPdfPageNotFound, 0}));
    // Counts are taken as they stand, negative and huge ones too.
    auto negative = tree(three, "<< /Type /Pages /Count -1 >>");
    EXPECT_EQ(Find(*negative, 1), (Found{kPdfPageNotFound, 0})); // page 5 counts as page 0
    auto huge = tree("<< /Type /Pages /Count 2 /Kids [3 0 R 4 0 R] >>",
                     "<< /Type /Pages /Count 2147483647 /Kids [5 0 R] >>");
    EXPECT_EQ(Find(*huge, 1), (Found{kPdfOk, 5}));
    EXPECT_EQ(Find(*tree("<< /Type /Pages /Count 5 /Kids [3 0 R] >>", ""), 1),
              (Found{kPdfPageNotFound, 0}));
    EXPECT_EQ(Find(*tree("<< /Type /Pages /Count 5 /Kids [] >>", ""), 0),
              (Found{kPdfPageNotFound, 0}));
    // /Kids must be a direct array.
    EXPECT_EQ(Find(*tree("<< /Type /Pages /Count 1 /Kids 6 0 R >>", ""), 0).first, kPdfNoKidsItem);
    EXPECT_EQ(Find(*tree("<< /Type /Pages /Count 1 >>", ""), 0).first, kPdfNoKidsItem);
    EXPECT_EQ(Find(*tree("<< /Type /Pages /Kids [3 0 R] >>", ""), 0).first, kPdfNoCountItem);

    // A node before the target is opened too, so its faults show.
    const std::string kids = "<< /Type /Pages /Count 3 /Kids [4 0 R 3 0 R] >>";
    EXPECT_EQ(Find(*tree(kids, "<< /Type /Template >>"), 0).first, kPdfUnknownType);
    EXPECT_EQ(Find(*tree(kids, "<< /Type /Template >>"), 1).first, kPdfUnknownType);
    // Unless the counter is past the target already.
    EXPECT_EQ(Find(*tree(kids, "<< /Type /Template >>"), 1, 2).first, kPdfPageNotFound);
    EXPECT_EQ(Find(*tree(kids, "<< /Type /page >>"), 1).first, kPdfUnknownType);
    EXPECT_EQ(Find(*tree(kids, "<< /Type /Pagex >>"), 1).first, kPdfUnknownType);
    EXPECT_EQ(Find(*tree(kids, "<< /Count 1 >>"), 1).first, kPdfNoTypeItem);
    EXPECT_EQ(Find(*tree(kids, "5"), 1).first, kPdfExpectedArray);
    EXPECT_EQ(Find(*tree("<< /Type /Pages /Count 2 /Kids [9 0 R 3 0 R] >>", ""), 1).first,
              kPdfBadReference);
    EXPECT_EQ(Find(*tree("<< /Type /Pages /Count 2 /Kids [null 3 0 R] >>", ""), 1).first,
              kPdfExpectedArray);
}

// Pages nested `depth` deep, with one page at the bottom.
std::unique_ptr<Opened> Chain(int depth) {
    std::vector<std::string> bodies = {kCatalog};
    for (int k = 0; k < depth; ++k)
        bodies.push_back("<< /Type /Pages /Count 1 /Kids [" + std::to_string(k + 3) + " 0 R] >>");
    bodies.push_back("<< /Type /Page >>");
    return Build(bodies);
}

TEST(PageTree, SelfContainingTreeEnds) {
    auto self = Build({kCatalog, "<< /Type /Pages /Count 2 /Kids [2 0 R] >>"});
    EXPECT_EQ(Find(*self, 0).first, kPdfErrorLoadingObject);
    auto loop = Build({kCatalog, "<< /Type /Pages /Count 3 /Kids [3 0 R] >>",
                       "<< /Type /Pages /Count 3 /Kids [2 0 R] >>"});
    EXPECT_EQ(Find(*loop, 1).first, kPdfErrorLoadingObject);
    EXPECT_EQ(loop->doc.LoadPageProperties(0), kPdfErrorLoadingObject);
    // Going round passes a page each time, so the walk is no repetition: it counts that page
    // again as the tree says, until the depth bound stops it.
    auto round = Build(
        {kCatalog, "<< /Type /Pages /Count 100000 /Kids [3 0 R 2 0 R] >>", "<< /Type /Page >>"});
    EXPECT_EQ(Find(*round, 2), (Found{kPdfOk, 3}));
    EXPECT_EQ(Find(*round, 1000).first, kPdfErrorLoadingObject);

    EXPECT_EQ(Find(*Chain(256), 0), (Found{kPdfOk, 258}));
    EXPECT_EQ(Find(*Chain(257), 0).first, kPdfErrorLoadingObject);
}

TEST(PageTree, LoadPageProperties) {
    auto o =
        Build({kCatalog, "<< /Type /Pages /Count 5 /Kids [3 0 R 4 0 R 5 0 R 6 0 R 7 0 R] >>",
               "<< /Type /Page /Resources << /Properties << /MC0 10 0 R >> >> >>",
               "<< /Type /Page >>", "<< /Type /Page /Resources 8 0 R >>",
               "<< /Type /Page /Resources << /Font << >> >> >>", "<< /Type /Page /Resources 5 >>",
               "<< /Properties 9 0 R >>", "<< /MC1 10 0 R >>", "<< /Type /OCG /Name (L) >>"});
    PDFDocument& doc = o->doc;
    ASSERT_EQ(doc.LoadPageProperties(0), kPdfOk);
    PDFToken* first = doc.pageProperties;
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->ToString(), "<</MC0 10 0 R>>");
    EXPECT_EQ(first->refCount, 2u); // the page's dictionary and ours
    // No /Resources: the previous page's properties stay.
    EXPECT_EQ(doc.LoadPageProperties(1), kPdfNullReference);
    EXPECT_EQ(doc.pageProperties, first);
    EXPECT_EQ(doc.LoadPageProperties(9), kPdfContinue);
    EXPECT_EQ(doc.pageProperties, first);
    // Indirect resources and properties.
    ASSERT_EQ(doc.LoadPageProperties(2), kPdfOk);
    EXPECT_EQ(doc.pageProperties, Obj(*o, 9));
    EXPECT_EQ(first->refCount, 1u);
    EXPECT_EQ(doc.pageProperties->refCount, 2u);
    // Resources without properties, and resources that are no dictionary, clear them.
    ASSERT_EQ(doc.LoadPageProperties(3), kPdfOk);
    EXPECT_EQ(doc.pageProperties, nullptr);
    ASSERT_EQ(doc.LoadPageProperties(2), kPdfOk);
    ASSERT_EQ(doc.LoadPageProperties(4), kPdfOk);
    EXPECT_EQ(doc.pageProperties, nullptr);
    ASSERT_EQ(doc.LoadPageProperties(2), kPdfOk); // left held: the destructor releases it
}

} // namespace
