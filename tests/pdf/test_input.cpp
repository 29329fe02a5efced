#include "pdf/input/MemoryInput.h"
#include "pdf/input/infile_streambuf.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <istream>
#include <string>

namespace {

// A temporary file of `size` bytes whose byte i is i*7 mod 251, read through the buffer.
class FileInput {
public:
    explicit FileInput(std::size_t size) {
        for (std::size_t i = 0; i < size; ++i)
            bytes += static_cast<char>((i * 7) % 251);
        std::FILE* f = std::tmpfile();
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::rewind(f);
        buffer = std::make_unique<infile_streambuf>(f);
        stream = std::make_unique<std::istream>(buffer.get());
    }
    std::string bytes;
    std::unique_ptr<infile_streambuf> buffer;
    std::unique_ptr<std::istream> stream;
};

void ReadAllWithPositions(std::size_t size) {
    FileInput in(size);
    std::istream& s = *in.stream;
    for (std::size_t i = 0; i < size; ++i) {
        ASSERT_EQ(s.tellg(), std::streampos(i)) << "at byte " << i;
        const int c = s.get();
        ASSERT_EQ(c, static_cast<unsigned char>(in.bytes[i])) << "at byte " << i;
    }
    EXPECT_EQ(s.tellg(), std::streampos(size));
    EXPECT_EQ(s.get(), std::char_traits<char>::eof());
    EXPECT_TRUE(s.eof());
}

TEST(InfileStreambuf, ReadsWholeFilesWithRightPositions) {
    ReadAllWithPositions(5000); // the second block is short and sits at the buffer's top
    ReadAllWithPositions(4096); // exactly one block
    ReadAllWithPositions(1);
    ReadAllWithPositions(0);
}

TEST(InfileStreambuf, SeeksAndTheQueryThatMovesNothing) {
    FileInput in(5000);
    std::istream& s = *in.stream;
    char three[3];
    s.read(three, 3);
    EXPECT_EQ(s.tellg(), std::streampos(3)); // not the file's 4096
    EXPECT_EQ(s.tellg(), std::streampos(3)); // asking twice moves nothing
    EXPECT_EQ(s.get(), static_cast<unsigned char>(in.bytes[3]));

    s.seekg(4500);
    EXPECT_EQ(s.tellg(), std::streampos(4500));
    EXPECT_EQ(s.get(), static_cast<unsigned char>(in.bytes[4500]));
    s.seekg(-10, std::ios_base::end);
    EXPECT_EQ(s.tellg(), std::streampos(4990));
    EXPECT_EQ(s.get(), static_cast<unsigned char>(in.bytes[4990]));
    s.seekg(0);
    EXPECT_EQ(s.get(), static_cast<unsigned char>(in.bytes[0]));

    // Reading to the end and back again after clearing the state.
    s.seekg(4998);
    s.get();
    s.get();
    EXPECT_EQ(s.get(), std::char_traits<char>::eof());
    s.clear();
    s.seekg(4096);
    EXPECT_EQ(s.get(), static_cast<unsigned char>(in.bytes[4096]));
    // Writing is not offered.
    EXPECT_EQ(in.buffer->pubseekoff(0, std::ios_base::cur, std::ios_base::out), std::streampos(-1));
}

TEST(MemoryInput, LengthZeroMeasuresToTheFirstNul) {
    const char bytes[] = "abc\0def";
    auto whole = MakeMemoryInput(bytes, 7);
    std::string all((std::istreambuf_iterator<char>(*whole)), std::istreambuf_iterator<char>());
    EXPECT_EQ(all, std::string("abc\0def", 7));
    auto measured = MakeMemoryInput(bytes, 0);
    std::string head((std::istreambuf_iterator<char>(*measured)), std::istreambuf_iterator<char>());
    EXPECT_EQ(head, "abc");
    auto none = MakeMemoryInput(nullptr, 0);
    EXPECT_EQ(none->get(), std::char_traits<char>::eof());
}

} // namespace
