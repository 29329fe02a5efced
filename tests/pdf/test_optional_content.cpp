#include "pdf/parser/PDFParser.h"
#include "pdf/xref/PDFDocument.h"
#include "support/PdfWriter.h"

#include "OpenedPdf.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using tarquil::test::PdfWriter;

using tarquil::test::Opened;

// Objects 1 to `last` are in the file, and so in its table.
std::unique_ptr<Opened> OpenByHand(PdfWriter& writer, int /*last*/, int rootNumber) {
    return tarquil::test::OpenWritten(writer, rootNumber);
}

// Groups A to D are objects 2 to 5, a second group named A is 6, then `more` from 7 on. The
// table comes back as "name" or "name in parent", " off" for a hidden group, joined by "; ".
std::string Layers(const std::string& ocProperties, const std::vector<std::string>& more = {}) {
    PdfWriter writer;
    writer.Object(1, "<< /Type /Catalog " +
                         (ocProperties.empty() ? "" : "/OCProperties " + ocProperties) + " >>");
    int number = 2;
    for (const char* name : {"A", "B", "C", "D", "A"})
        writer.Object(number++, std::string("<< /Type /OCG /Name (") + name + ") >>");
    for (const std::string& body : more)
        writer.Object(number++, body);
    auto o = OpenByHand(writer, number - 1, 1);
    o->doc.LoadOptionalContent();
    std::string text;
    bool first = true;
    for (const auto& [name, group] : o->doc.optionalContentGroups) {
        text += (first ? "" : "; ") + name;
        first = false;
        text += (group.parentName.empty() ? "" : " in " + group.parentName);
        text += group.visible ? "" : " off";
    }
    return text;
}

TEST(OptionalContent, StartingStates) {
    EXPECT_EQ(Layers("<< /OCGs [2 0 R 3 0 R 4 0 R] /D << /BaseState /OFF /ON [3 0 R] >> >>"),
              "A off; B; C off");
    EXPECT_EQ(Layers("<< /OCGs [2 0 R 3 0 R] /D << /BaseState /Unchanged >> >>"), "A; B");
    EXPECT_EQ(Layers("<< /OCGs [2 0 R] /D << /BaseState /ON >> >>"), "A");
    // A hidden group need not be among /OCGs; ON is read after OFF.
    EXPECT_EQ(Layers("<< /OCGs [2 0 R 3 0 R] /D << /OFF [5 0 R 2 0 R] /ON [2 0 R] >> >>"),
              "A; B; D off");
    // Groups are keyed by name: two objects named A are one entry, hidden through either.
    EXPECT_EQ(Layers("<< /OCGs [2 0 R 6 0 R] /D << /OFF [6 0 R] >> >>"), "A off");
    // Entries that are no group, a broken reference and a group without a name all count as
    // the unnamed group; in /OFF the same entries are passed over.
    EXPECT_EQ(Layers("<< /OCGs [null 5 99 0 R 7 0 R] /D << /OFF [null 7 99 0 R 3 0 R] >> >>",
                     {"<< /Type /OCG >>"}),
              "; B off");
    EXPECT_EQ(Layers("<< /OCGs [null] /D << /OFF [7 0 R] >> >>", {"<< /Type /OCG >>"}), " off");
    // Indirect lists; a broken /OFF leaves what /OCGs gave.
    EXPECT_EQ(Layers("7 0 R", {"<< /OCGs 8 0 R /D << /OFF 9 0 R /ON 99 0 R >> >>", "[2 0 R 3 0 R]",
                               "[3 0 R]"}),
              "A; B off");
    EXPECT_EQ(Layers("<< /OCGs [2 0 R] /D << /OFF 99 0 R >> >>"), "A");
    // No /OCProperties, or a catalog that cannot be had: no groups.
    EXPECT_EQ(Layers(""), "");
    PdfWriter writer;
    writer.Object(1, "<< /OCProperties << /OCGs [1 0 R] >> >>");
    auto broken = OpenByHand(writer, 1, 7);
    broken->doc.LoadOptionalContent();
    EXPECT_TRUE(broken->doc.optionalContentGroups.empty());
    broken->doc.root->Release();
    broken->doc.root = nullptr;
    broken->doc.LoadOptionalContent();
    EXPECT_TRUE(broken->doc.optionalContentGroups.empty());
}

TEST(OptionalContent, OrderGivesParents) {
    const auto order = [](const std::string& items, const std::vector<std::string>& more = {}) {
        return Layers("<< /OCGs [] /D << /Order " + items + " >> >>", more);
    };
    EXPECT_EQ(order("[2 0 R [3 0 R 4 0 R] 5 0 R]"), "A; B in A; C in A; D");
    EXPECT_EQ(order("[[3 0 R] 2 0 R]"), "A; B");
    EXPECT_EQ(order("[(Label) [3 0 R]]"), "B");
    EXPECT_EQ(order("[2 0 R [3 0 R [4 0 R] 5 0 R]]"), "A; B in A; C in B; D in A");
    // Named at two places, a group takes the parent of the last.
    EXPECT_EQ(order("[2 0 R [4 0 R] 3 0 R [4 0 R]]"), "A; B; C in B");
    // Nested arrays may be indirect; /Order itself too. Broken entries are passed over.
    EXPECT_EQ(order("[2 0 R 7 0 R]", {"[3 0 R 99 0 R null 4]"}), "A; B in A");
    EXPECT_EQ(order("7 0 R", {"[2 0 R [3 0 R]]"}), "A; B in A");
    // Order keeps the starting state.
    EXPECT_EQ(Layers("<< /OCGs [3 0 R] /D << /OFF [3 0 R] /Order [2 0 R [3 0 R]] >> >>"),
              "A; B in A off");
}

// An /Order array nested `depth` deep around group A.
std::string Nested(int depth) {
    return std::string(static_cast<std::size_t>(depth), '[') + "2 0 R" +
           std::string(static_cast<std::size_t>(depth), ']');
}

TEST(OptionalContent, OrderThatNeverEndsIsCut) {
    // Arrays that hold themselves are passed over where they come back.
    EXPECT_EQ(Layers("<< /D << /Order 7 0 R >> >>", {"[2 0 R 7 0 R]"}), "A");
    EXPECT_EQ(Layers("<< /D << /Order 7 0 R >> >>", {"[2 0 R 8 0 R]", "[3 0 R 7 0 R 4 0 R]"}),
              "A; B in A; C in A");
    // Nesting is bounded.
    EXPECT_EQ(Layers("<< /D << /Order " + Nested(256) + " >> >>"), "A");
    EXPECT_EQ(Layers("<< /D << /Order " + Nested(257) + " >> >>"), "");
    // Shared arrays doubling at each of 40 levels: reading stops after a bounded amount.
    std::vector<std::string> shared = {"[[2 0 R] 3 0 R]"};
    for (int k = 1; k < 40; ++k) {
        // Appended piece by piece: GCC 12 at -O3 warns falsely about "literal" + string.
        const std::string ref = std::to_string(6 + k) + " 0 R";
        std::string array = "[";
        array += ref;
        array += ' ';
        array += ref;
        array += ']';
        shared.push_back(array);
    }
    EXPECT_EQ(Layers("<< /D << /Order 46 0 R >> >>", shared), "A; B");
}

} // namespace
