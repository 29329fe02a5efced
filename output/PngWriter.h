#pragma once
// The system's own PNG writer: one IDAT chunk, filter None on every row, zlib's standard
// deflate. Images are written in the form their colour space names; nothing is converted,
// so a space other than grey or RGB gives colour type 255, which no viewer reads.
#include "graphics/PDFImage.h"

#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

class PngWriter {
public:
    // `file` is borrowed and stays open.
    explicit PngWriter(std::FILE* file) : file(file) {}
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter();

    // Signature, IHDR, the rows in one IDAT, IEND. Missing data are written as zeros.
    void WriteImage(const PDFImage& image);

    std::FILE* file;
    std::string chunk; // type bytes and data of the chunk under construction
    bool collecting = false;
    bool deflating = false;
    z_stream stream{};
    // Rows go through deflate in fixed pieces of this size. Deflate's output does not depend
    // on how its input is cut when nothing is flushed, and deflate itself dominates: a page
    // scan takes as long as zlib's one-call compress2 (bench/bench_png.cpp).
    static constexpr int kBufferSize = 256;
    unsigned char deflateInput[kBufferSize]{};
    unsigned char deflateOutput[kBufferSize]{};
    std::int32_t inputCount = 0;

private:
    void PutByte(unsigned char byte);
    void PutBytes(const unsigned char* bytes, std::size_t count);
    void PutWord(std::uint32_t value);
    void BeginChunk(const char (&type)[5]);
    void EndChunk();
    void DeflateInput(int flush);
};

// Writes `image` as a PNG at `path`, reduced first when its pixels allow. A file that cannot
// be opened is skipped without a word.
void WritePng(const wchar_t* path, const PDFImage& image);

// RGB whose pixels are all grey becomes 8-bit grey, and grey of only black and white becomes
// 1 bit a pixel. Gives null when the image stays as it is, else the reduced record (its
// corners left zero).
std::unique_ptr<PDFImage> ReduceImage(const PDFImage& image);
