#include "pdf/parser/PDFParser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using P = PDFParser;

std::string Bytes(std::initializer_list<int> values) {
    std::string s;
    for (int v : values)
        s += static_cast<char>(v);
    return s;
}

TEST(Tokens, NumbersAndTheirConversions) {
    P::PDFInteger three(3);
    P::PDFFloat pos(12.9), neg(-12.9), huge(1e12);
    P::PDFBool yes(true);
    P::PDFName name("A");
    EXPECT_EQ(pos.GetInteger(-1), 12);
    EXPECT_EQ(neg.GetInteger(-1), -12);
    EXPECT_EQ(huge.GetInteger(-1), 2147483647); // saturates rather than wrapping
    EXPECT_EQ(yes.GetInteger(-1), 1);
    EXPECT_EQ(name.GetInteger(-1), -1);
    EXPECT_EQ(yes.GetFloat(0.5), 0.5); // a boolean is no number
    EXPECT_EQ(three.GetFloat(0.5), 3.0);
    EXPECT_TRUE(three.IsType(kPdfKindNumber));
    EXPECT_TRUE(pos.IsType(kPdfKindNumber));
    EXPECT_FALSE(pos.IsType(kPdfKindInteger));
    EXPECT_TRUE(pos.IsType(kPdfKindReal));
    EXPECT_EQ(three.ToString(), "3");
    EXPECT_EQ(P::PDFInteger(-2147483647 - 1).ToString(), "-2147483648");
    EXPECT_EQ(P::PDFFloat(1500.0).ToString(), "1500");
    EXPECT_EQ(P::PDFFloat(0.1).ToString(), "0.1");
    EXPECT_EQ(P::PDFFloat(-0.000001).ToString(), "-1e-06");
    EXPECT_EQ(P::PDFFloat(123456789.0).ToString(), "1.23457e+08");
    EXPECT_EQ(P::PDFFloat(2.5).ToString(), "2.5");
}

TEST(Tokens, NamesEscapeStringsChooseTheirForm) {
    EXPECT_EQ(P::PDFName("A B#").ToString(), "/A#20B#23");
    EXPECT_EQ(P::PDFName(Bytes({'x', 0, 0x80, '(', '/', '%'})).ToString(), "/x#00#80#28#2f#25");
    EXPECT_EQ(P::PDFName("").ToString(), "/");

    EXPECT_EQ(P::PDFString("").ToString(), "()");
    EXPECT_EQ(P::PDFString("a(b)c\\").ToString(), "(a\\(b\\)c\\\\)");
    EXPECT_EQ(P::PDFString(Bytes({8, 9, 10, 12, 13, 0, 127, 1})).ToString(),
              "(\\b\\t\\n\\f\\r\\000\\177\\001)");
    // Only the first twelve bytes decide between literal and hexadecimal form.
    EXPECT_EQ(P::PDFString(std::string(13, 'a') + "\xFF").ToString(), "(aaaaaaaaaaaaa\\377)");
    std::string hex = "<";
    for (int i = 0; i < 11; ++i)
        hex += "61";
    EXPECT_EQ(P::PDFString(std::string(11, 'a') + "\xFF").ToString(), hex + "ff>");
    EXPECT_EQ(P::PDFString("ab\xFF").ToString(), "<6162ff>");
    EXPECT_EQ(P::PDFString("ab\xFF").GetString(), "ab\xFF");
}

TEST(Tokens, ContainersPrintAndOwnTheirItems) {
    auto* array = new P::PDFArray();
    EXPECT_EQ(array->ToString(), "[]");
    array->Append(new P::PDFNull());
    EXPECT_EQ(array->ToString(), "[]"); // null prints as nothing
    array->Append(new P::PDFNull());
    EXPECT_EQ(array->ToString(), "[ ]");
    array->Release();

    auto* dict = new P::PDFDict();
    EXPECT_EQ(dict->ToString(), "<<>>");
    (*dict)["b"] = new P::PDFInteger(2);
    (*dict)["\xE9"] = new P::PDFBool(false); // after every ASCII key: bytes are unsigned
    (*dict)["A B"] = new P::PDFRef(5, 0);    // keys print unescaped
    (*dict)["bc"] = new P::PDFName("N");
    EXPECT_EQ(dict->ToString(), "<</A B 5 0 R /b 2 /bc /N /\xE9 false>>");
    EXPECT_EQ(dict->Find("b")->GetInteger(0), 2);
    EXPECT_EQ(dict->Find("zz"), nullptr);
    EXPECT_EQ(dict->entries.size(), 4u); // Find never inserts

    // A stream owns its dictionary; the shared token outlives the stream through its count.
    PDFToken* shared = new P::PDFInteger(7);
    shared->AddRef();
    auto* streamDict = new P::PDFDict();
    (*streamDict)["Length"] = shared;
    auto* stream = new P::PDFStream("hi", streamDict);
    EXPECT_EQ(stream->ToString(), "<</Length 7>> stream\nhi\nendstream");
    EXPECT_TRUE(stream->IsType(kPdfKindStream));
    EXPECT_FALSE(stream->IsType(kPdfKindDict));
    stream->Release();
    EXPECT_EQ(shared->refCount, 1u);
    shared->Release();
    dict->Release();
}

TEST(Tokens, OnlyReferencesClone) {
    P::PDFRef ref(12, 3);
    PDFTokenRef copy(ref.Clone());
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->ToString(), "12 3 R");
    EXPECT_EQ(copy->refCount, 1u);
    EXPECT_EQ(P::PDFInteger(1).Clone(), nullptr);
    EXPECT_EQ(P::PDFDict().Clone(), nullptr);
    EXPECT_EQ(P::PDFMark("<<").ToString(), "-mark-");
    EXPECT_EQ(P::PDFBool(true).ToString(), "true");
    EXPECT_EQ(P::PDFNull().ToString(), "");
}

TEST(Tokens, ErrorTextsComeFromTheOneList) {
    EXPECT_STREQ(PDFErrorText(kPdfInvalidPdf), "Invalid PDF");
    EXPECT_STREQ(PDFErrorText(10039), "Command was canceled");
    EXPECT_EQ(kPdfUnmatchedParen, 10007);
    EXPECT_EQ(PDFErrorText(-1), nullptr);
    EXPECT_STREQ(PDFErrorText(10043), "Graphics states nested too deeply");
    EXPECT_EQ(PDFErrorText(10044), nullptr);
}

} // namespace
