#pragma once
// Streams and parameter dictionaries for filter tests, written as PDF text.
#include "pdf/input/MemoryInput.h"
#include "pdf/parser/PDFParser.h"
#include "pdf/parser/ParseText.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace filtertest {

using tarquil::test::ZlibCompress;

// A stream of `data` whose dictionary is `dictText`.
inline PDFTokenRef MakeStream(const std::string& dictText, const std::string& data) {
    PDFToken* dict = ParseDictionaryText(dictText);
    EXPECT_NE(dict, nullptr) << dictText;
    return PDFTokenRef(new PDFParser::PDFStream(data, dict ? dict : new PDFParser::PDFDict()));
}

inline const PDFParser::PDFStream& AsStream(const PDFTokenRef& t) {
    return *static_cast<const PDFParser::PDFStream*>(t.Get());
}

inline std::string Bytes(std::initializer_list<int> values) {
    std::string s;
    for (int v : values)
        s += static_cast<char>(v);
    return s;
}

inline std::string RandomBytes(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::string s(n, '\0');
    for (char& c : s)
        c = static_cast<char>(rng() & 0xFF);
    return s;
}

} // namespace filtertest
