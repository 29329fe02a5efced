#include "pdf/parser/PDFParser.h"
#include "pdf/xref/ObjectStream.h"
#include "pdf/xref/PDFDocument.h"

#include "support/PdfWriter.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

namespace {

using tarquil::test::PdfWriter;

// A document over the text, opened.
struct Opened {
    explicit Opened(const std::string& text) : input(text), doc(&input) { status = doc.Open(); }
    std::string Load(int number, int generation = 0) {
        PDFToken* t = nullptr;
        loadStatus = doc.LoadObject(number, generation, &t);
        return t ? t->ToString() : "<null>";
    }
    std::string Root() const { return doc.root ? doc.root->ToString() : "<null>"; }
    std::istringstream input;
    PDFDocument doc;
    PDFStatus status = 0;
    PDFStatus loadStatus = 0;
};

PdfWriter SimpleFile() {
    PdfWriter w;
    w.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    w.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    w.Object(3, "<< /Type /Page /Parent 2 0 R >>");
    return w;
}

TEST(Xref, ClassicTableOpensAndLoads) {
    PdfWriter w = SimpleFile();
    w.ClassicXref("/Root 1 0 R");
    Opened o(w.Text());
    EXPECT_EQ(o.status, kPdfOk);
    EXPECT_EQ(o.Root(), "1 0 R");
    EXPECT_EQ(o.doc.entries.size(), 4u);
    EXPECT_EQ(o.Load(2), "<</Count 1 /Kids [3 0 R] /Type /Pages>>");
    EXPECT_EQ(o.Load(3, 1), "<null>"); // a generation the table does not have
    EXPECT_EQ(o.loadStatus, kPdfBadReference);
    EXPECT_EQ(o.Load(0), "<null>"); // the free head: generation 65535 is never stored
    EXPECT_EQ(o.loadStatus, kPdfBadReference);
    EXPECT_EQ(o.Load(0, -1), "<null>"); // nor does asking with the mark of an unset entry
    EXPECT_EQ(o.loadStatus, kPdfBadReference);
    EXPECT_EQ(o.Load(9), "<null>");
    EXPECT_EQ(o.loadStatus, kPdfBadReference);
}

TEST(Xref, TheEndOfTheFile) {
    const std::string good = [] {
        PdfWriter w = SimpleFile();
        w.ClassicXref("/Root 1 0 R");
        return w.Text();
    }();
    // No "%%EOF" in the last 1024 bytes: no scan, though /Root would be known.
    EXPECT_EQ(Opened(good + std::string(1100, ' ')).status, kPdfInvalidPdf);
    EXPECT_EQ(Opened(good + std::string(900, ' ')).status, kPdfOk);
    // No digits between "startxref" and "%%EOF".
    EXPECT_EQ(Opened("%PDF-1.4\nstartxref\n%%EOF\n").status, kPdfInvalidPdf);
    EXPECT_EQ(Opened("").status, kPdfInvalidPdf);
    EXPECT_EQ(Opened("%!PS-Adobe-3.0 EPSF-3.0\n%%EOF").status, kPdfOldAiFile);
    // A bad first offset cannot be rescued: no trailer was read.
    std::string wrong = good;
    wrong.replace(wrong.rfind("startxref\n") + 10, 1, "9");
    EXPECT_NE(Opened(wrong).status, kPdfOk);
}

TEST(Xref, ClassicSectionsKeepTheNewest) {
    PdfWriter w = SimpleFile();
    w.ClassicXref("/Root 1 0 R");
    const std::size_t first = w.Text().rfind("xref\n");
    // An update replaces object 3 at the same generation and adds 4.
    w.Object(3, "<< /Type /Page /Updated true >>");
    w.Object(4, "(new)");
    w.ClassicXref("/Root 1 0 R /Prev " + std::to_string(first), {3, 4});
    Opened o(w.Text());
    EXPECT_EQ(o.status, kPdfOk);
    EXPECT_EQ(o.Load(3), "<</Type /Page /Updated true>>");
    EXPECT_EQ(o.Load(4), "(new)");
    EXPECT_EQ(o.Load(1), "<</Pages 2 0 R /Type /Catalog>>");
}

TEST(Xref, StreamSectionsLetTheOldestStand) {
    PdfWriter w = SimpleFile();
    w.Object(7, "(old)");
    const std::size_t first = w.XrefStream(8, "/Root 1 0 R", {}, true);
    w.Object(7, "(new)");
    w.XrefStream(9, "/Root 1 0 R /Prev " + std::to_string(first), {7, 9}, true);
    Opened o(w.Text());
    EXPECT_EQ(o.status, kPdfOk);
    EXPECT_EQ(o.Load(7), "(old)");
}

TEST(Xref, DamagedChainsAndTheRescue) {
    // /Prev of -5 fails the chain; /Root is known, so the scan rescues it.
    {
        PdfWriter w = SimpleFile();
        w.ClassicXref("/Root 1 0 R /Prev -5");
        Opened o(w.Text());
        EXPECT_EQ(o.status, kPdfOk);
        EXPECT_EQ(o.Load(3), "<</Parent 2 0 R /Type /Page>>");
    }
    // Without a /Root reference the same failure stands.
    {
        PdfWriter w = SimpleFile();
        w.ClassicXref("/Root << /Type /Catalog >> /Prev -5");
        EXPECT_EQ(Opened(w.Text()).status, kPdfBadPrev);
    }
    // A direct /Root opens, with no root.
    {
        PdfWriter w = SimpleFile();
        w.ClassicXref("/Root << /Type /Catalog >>");
        Opened o(w.Text());
        EXPECT_EQ(o.status, kPdfOk);
        EXPECT_EQ(o.Root(), "<null>");
    }
    // A /Prev that leads back to itself ends instead of going round.
    {
        PdfWriter w = SimpleFile();
        const std::size_t at = w.Text().size();
        w.ClassicXref("/Root << >> /Prev " + std::to_string(at));
        EXPECT_EQ(Opened(w.Text()).status, kPdfInvalidPdf);
    }
    // Entries of 19 bytes: each read runs into the next, and the trailer is never found.
    {
        PdfWriter w = SimpleFile();
        w.ClassicXref("/Root 1 0 R");
        std::string text = w.Text();
        for (std::size_t at = text.find(" n\r\n"); at != std::string::npos;
             at = text.find(" n\r\n", at))
            text.erase(at + 2, 1);
        text.replace(text.find(" f\r\n"), 4, " f\n");
        EXPECT_EQ(Opened(text).status, kPdfPrematureEof);
    }
    // Encrypted: with a /Root reference the scan opens it; without, 10038 stands.
    {
        PdfWriter w = SimpleFile();
        w.ClassicXref("/Root 1 0 R /Encrypt << /Filter /Standard >>");
        EXPECT_EQ(Opened(w.Text()).status, kPdfOk);
    }
    {
        PdfWriter w = SimpleFile();
        w.ClassicXref("/Encrypt << /Filter /Standard >>");
        EXPECT_EQ(Opened(w.Text()).status, kPdfEncrypted);
    }
}

TEST(Xref, StreamSectionForms) {
    // The usual compressed form without /Colors: rows keep their type bytes, the width test
    // fails, and the scan reads the file instead.
    {
        PdfWriter w = SimpleFile();
        w.XrefStream(4, "/Root 1 0 R", {}, true, true, false);
        Opened o(w.Text());
        EXPECT_EQ(o.status, kPdfOk);
        EXPECT_EQ(o.Load(2), "<</Count 1 /Kids [3 0 R] /Type /Pages>>");
    }
    // With /Colors the widths fit, but Up rows stay undone, so the entries are wrong: here
    // the differences make objects 2 and 3 free, and nothing notices.
    {
        PdfWriter w = SimpleFile();
        w.XrefStream(4, "/Root 1 0 R", {}, true, true, true);
        Opened o(w.Text());
        EXPECT_EQ(o.status, kPdfOk);
        EXPECT_EQ(o.Load(1), "<</Pages 2 0 R /Type /Catalog>>");
        EXPECT_EQ(o.Load(3), "<null>");
        EXPECT_EQ(o.loadStatus, kPdfBadReference);
    }
    // Where a type-1 row follows a type-2 row, the difference is a first field of 255: the
    // section ends with -1 and the scan rescues the file.
    {
        PdfWriter w = SimpleFile();
        w.ObjectStream(5, {{6, "(member)"}});
        w.Object(7, "(after)");
        w.XrefStream(8, "/Root 1 0 R", {}, true, true, true);
        Opened o(w.Text());
        EXPECT_EQ(o.status, kPdfOk);
        EXPECT_EQ(o.Load(3), "<</Parent 2 0 R /Type /Page>>");
        EXPECT_EQ(o.Load(6), "(member)");
    }
    // /W adding up to nothing, or missing: no table.
    {
        PdfWriter w = SimpleFile();
        w.Stream(4, "/Type /XRef /Size 4 /W [0 0 0] /Root << >>", "");
        const std::size_t at = w.OffsetOf(4);
        w.Raw("startxref\n" + std::to_string(at) + "\n%%EOF\n");
        EXPECT_EQ(Opened(w.Text()).status, kPdfInvalidPdf);
    }
}

TEST(Xref, ObjectStreamsLoadEveryMemberOnce) {
    PdfWriter w = SimpleFile();
    w.ObjectStream(5, {{10, "(ten)"}, {11, "[1 2] (two values)"}, {12, "<< /K 12 >>"}});
    w.XrefStream(6, "/Root 1 0 R", {}, true);
    Opened o(w.Text());
    ASSERT_EQ(o.status, kPdfOk);
    EXPECT_EQ(o.doc.entries[11].type, 2);
    EXPECT_EQ(o.Load(11), "(two values)"); // the last value of a member counts
    // The first load brought every member in.
    EXPECT_NE(o.doc.entries[10].object, nullptr);
    EXPECT_NE(o.doc.entries[12].object, nullptr);
    EXPECT_EQ(o.Load(12), "<</K 12>>");
    // A member naming its own stream as container cannot load.
    o.doc.entries[5].type = 2;
    o.doc.entries[5].streamObject = 5;
    o.doc.entries[5].object->Release();
    o.doc.entries[5].object = nullptr;
    EXPECT_EQ(o.Load(5), "<null>");
    EXPECT_EQ(o.loadStatus, kPdfErrorLoadingObject);
}

TEST(Xref, ObjectStreamHeaders) {
    // Built by hand: header pairs, /First, member bytes.
    auto load = [](const std::string& head, int first, const std::string& body,
                   std::vector<std::pair<int, int>> members, int want, PDFStatus& status) {
        PdfWriter w = SimpleFile();
        w.Stream(5, "/Type /ObjStm /First " + std::to_string(first), head + body);
        std::string text = w.Text();
        std::istringstream in(text);
        PDFDocument doc(&in);
        doc.entries.resize(30);
        doc.entries[5] = XrefEntry{static_cast<std::int64_t>(w.OffsetOf(5)), 0, 1, 0, 0, nullptr};
        for (auto [number, index] : members)
            doc.entries[number] = XrefEntry{0, 0, 2, 5, static_cast<std::uint32_t>(index), nullptr};
        PDFToken* t = nullptr;
        status = doc.LoadObject(want, 0, &t);
        return t ? t->ToString() : std::string("<null>");
    };
    PDFStatus status = 0;
    // Object 10 from byte 12 to 37, object 11 from 37 to the end.
    const std::string body = std::string("(first member)") + std::string(11, ' ') + "(second)";
    EXPECT_EQ(load("10 0 11 25  ", 12, body, {{10, 0}, {11, 1}}, 11, status), "(second)");
    EXPECT_EQ(status, kPdfOk);
    // The same number twice: only the pair whose index the table gives is read.
    EXPECT_EQ(load("10 0 10 25  ", 12, body, {{10, 1}}, 10, status), "(second)");
    // A zero-length member reads nothing.
    EXPECT_EQ(load("10 0 11 0   ", 12, body, {{10, 0}}, 10, status), "<null>");
    EXPECT_EQ(status, kPdfErrorLoadingObject);
    // Offsets that go down, and /First beyond the data: -1.
    EXPECT_EQ(load("10 9 11 0   ", 12, body, {{10, 0}}, 10, status), "<null>");
    EXPECT_EQ(status, -1);
    EXPECT_EQ(load("10 0", 500, "", {{10, 0}}, 10, status), "<null>");
    EXPECT_EQ(status, -1);
    // A number outside the table is passed over; its offset still ends nothing before it.
    EXPECT_EQ(load("99 0 10 14  ", 12, body, {{10, 1}}, 10, status), "(second)");
    EXPECT_EQ(status, kPdfOk);

    EXPECT_EQ(SplitWords("1 2\t\"a b\"c \"d\n"),
              (std::vector<std::string>{"1", "2", "a bc", "d\n"}));
    EXPECT_EQ(SplitWords(std::string("1 2\0 3", 6)), (std::vector<std::string>{"1", "2"}));
}

TEST(Xref, RebuildFindsObjectsAndObjectStreams) {
    PdfWriter w = SimpleFile();
    w.ObjectStream(5, {{20, "(in a stream)"}});
    w.Object(3, "<< /Type /Page /Later true >>"); // the last header of a number wins
    // A table that points nowhere useful, with /Root: the scan builds the table.
    w.Raw("xref\n0 1\n0000000000 65535 f\r\ntrailer\n<< /Size 1 /Root 1 0 R /Prev 99999 >>\n"
          "startxref\n");
    std::string text = w.Text();
    const std::size_t xref = text.rfind("xref\n0 1");
    text += std::to_string(xref) + "\n%%EOF\n";
    Opened o(text);
    EXPECT_EQ(o.status, kPdfOk);
    EXPECT_EQ(o.Load(3), "<</Later true /Type /Page>>");
    EXPECT_EQ(o.Load(20), "(in a stream)");
    EXPECT_EQ(o.doc.entries.size(), 120u); // grown to the highest number + 100
    // A free entry with a stored generation is read at its offset all the same.
    PdfWriter f = SimpleFile();
    f.ClassicXref("/Root 1 0 R");
    std::string freed = f.Text();
    freed.replace(freed.find(" n\r\n", freed.find("xref")), 4, " f\r\n");
    Opened free(freed);
    EXPECT_EQ(free.status, kPdfOk);
    EXPECT_EQ(free.Load(1), "<</Pages 2 0 R /Type /Catalog>>");
}

TEST(Xref, ReadLineEnds) {
    std::istringstream in("a\r\nb\n\rc\r\rd\n\ne");
    PDFDocument doc(&in);
    std::string line;
    std::vector<std::string> lines;
    int status = 0;
    while ((status = doc.ReadLine(line)) == 0)
        lines.push_back(line);
    EXPECT_EQ(lines, (std::vector<std::string>{"a", "b", "c", "", "d", ""}));
    EXPECT_EQ(line, "e"); // the end inside a line: -1 with what was read
    EXPECT_EQ(status, -1);
}

} // namespace
