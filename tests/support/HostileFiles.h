#pragma once
// PDF files made to hurt: a few kilobytes each that, read naively, would take gigabytes or
// hours. Each is a whole file, ready to import.
#include <cstddef>
#include <string>

namespace tarquil::test {

// A clip path of `vertices` points, then `saves` q operators, then one line.
std::string DeepSavesOverClip(int vertices, int saves);
// `count` operands "0" with no operator, then one line; the content deflated.
std::string OperandFlood(std::size_t count);
// Content that inflates to `bytes` blanks and then one line, in a stream of a few
// megabytes at most.
std::string FlateBomb(std::size_t bytes);
// Arrays `depth` deep (or dictionaries with `dictionaries`), closed again, then one line.
std::string DeepNesting(int depth, bool dictionaries);
// `count` closing brackets with nothing open, then one line.
std::string UnmatchedClosers(std::size_t count);
// A page tree of two pages whose root claims `count` pages.
std::string HugePageCount(long long count);
// A font whose /W array lists `entries` widths, used by one line of text, and one line.
std::string HugeWidths(std::size_t entries);
// A form that draws itself twice, then one line.
std::string SelfDrawingForm();
// An Illustrator file of `layers` layers with one line each, after a line of `lineBytes`
// bytes that ends in no operator.
std::string ManyLegacyLayers(int layers, std::size_t lineBytes);

} // namespace tarquil::test
