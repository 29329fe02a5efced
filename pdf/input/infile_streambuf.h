#pragma once
// A read-only stream buffer over a FILE, in blocks of 4096 bytes.
#include <cstdio>
#include <streambuf>

class infile_streambuf : public std::streambuf {
public:
    static constexpr std::size_t kBufferSize = 4096;

    // Takes over `file`, opened for binary reading; it is closed on destruction.
    explicit infile_streambuf(std::FILE* file);
    ~infile_streambuf() override;
    infile_streambuf(const infile_streambuf&) = delete;
    infile_streambuf& operator=(const infile_streambuf&) = delete;

protected:
    int_type underflow() override;
    // Offset 0 from the current position only asks: the logical position, the file's
    // position less the bytes still unread. Anything else seeks the file itself.
    pos_type seekoff(off_type offset, std::ios_base::seekdir way,
                     std::ios_base::openmode mode = std::ios_base::in) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode = std::ios_base::in) override;

private:
    std::FILE* file;
    char* buffer;
};
