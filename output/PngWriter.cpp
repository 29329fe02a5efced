#include "output/PngWriter.h"

#include "host/base/VmFile.h"

#include <algorithm>

namespace {

// The byte of the image at `index`; data that run short read as zeros, as the rows are
// padded with zeros when they are written.
unsigned char Sample(const std::string& data, std::size_t index) {
    return index < data.size() ? static_cast<unsigned char>(data[index]) : 0;
}

std::size_t PixelCount(const PDFImage& image) {
    if (image.width <= 0 || image.height <= 0)
        return 0;
    return static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
}

std::unique_ptr<PDFImage> GreyRecord(const PDFImage& image, std::int32_t bits) {
    auto reduced = std::make_unique<PDFImage>();
    reduced->width = image.width;
    reduced->height = image.height;
    reduced->bitsPerComponent = bits;
    reduced->colorSpace = "DeviceGray";
    return reduced;
}

} // namespace

PngWriter::~PngWriter() {
    if (deflating)
        deflateEnd(&stream);
}

void PngWriter::PutByte(unsigned char byte) {
    if (!collecting) {
        std::fputc(byte, file);
    } else if (!deflating) {
        chunk.push_back(static_cast<char>(byte));
    } else {
        deflateInput[inputCount++] = byte;
        if (inputCount == kBufferSize)
            DeflateInput(Z_NO_FLUSH);
    }
}

void PngWriter::PutBytes(const unsigned char* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        PutByte(bytes[i]);
}

void PngWriter::PutWord(std::uint32_t value) {
    const unsigned char bytes[4] = {
        static_cast<unsigned char>(value >> 24), static_cast<unsigned char>(value >> 16),
        static_cast<unsigned char>(value >> 8), static_cast<unsigned char>(value)};
    PutBytes(bytes, 4);
}

// Runs deflate over the waiting input; every full output buffer joins the chunk. With
// Z_FINISH it runs to the end of the stream and also takes the last, partial buffer.
void PngWriter::DeflateInput(int flush) {
    stream.next_in = deflateInput;
    stream.avail_in = static_cast<uInt>(inputCount);
    for (;;) {
        const int result = deflate(&stream, flush);
        if (stream.avail_out == 0) {
            chunk.append(reinterpret_cast<const char*>(deflateOutput), kBufferSize);
            stream.next_out = deflateOutput;
            stream.avail_out = kBufferSize;
            continue;
        }
        if (flush == Z_FINISH && result == Z_OK)
            continue;
        break;
    }
    if (flush == Z_FINISH)
        chunk.append(reinterpret_cast<const char*>(deflateOutput), kBufferSize - stream.avail_out);
    inputCount = 0;
}

void PngWriter::BeginChunk(const char (&type)[5]) {
    collecting = true;
    chunk.assign(type, 4);
}

void PngWriter::EndChunk() {
    if (deflating) {
        DeflateInput(Z_FINISH);
        deflateEnd(&stream);
        deflating = false;
    }
    const auto length = static_cast<std::uint32_t>(chunk.size() - 4);
    // zlib's CRC-32 is the one PNG asks for: polynomial 0xEDB88320, started at all ones and
    // inverted at the end.
    const auto crc = static_cast<std::uint32_t>(
        crc32(0L, reinterpret_cast<const Bytef*>(chunk.data()), static_cast<uInt>(chunk.size())));
    collecting = true;
    deflating = false;
    PutWord(crc);
    collecting = false;
    PutWord(length);
    std::fwrite(chunk.data(), 1, chunk.size(), file);
    chunk.clear();
}

void PngWriter::WriteImage(const PDFImage& image) {
    static const unsigned char kSignature[8] = {0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A};
    PutBytes(kSignature, sizeof kSignature);

    // Grey, or any one-bit image, as grey; RGB as RGB; anything else as colour type 255 with
    // no samples, which no reader takes: no colour space is converted here.
    std::uint8_t colourType = 255;
    std::int64_t samples = 0;
    if (image.colorSpace == "DeviceGray" || image.bitsPerComponent == 1) {
        colourType = 0;
        samples = 1;
    } else if (image.colorSpace == "DeviceRGB") {
        colourType = 2;
        samples = 3;
    }
    BeginChunk("IHDR");
    PutWord(static_cast<std::uint32_t>(image.width));
    PutWord(static_cast<std::uint32_t>(image.height));
    PutByte(static_cast<unsigned char>(image.bitsPerComponent));
    PutByte(colourType);
    const unsigned char methods[3] = {0, 0, 0}; // deflate, adaptive filters, no interlace
    PutBytes(methods, 3);
    EndChunk();

    BeginChunk("IDAT");
    if (deflateInit2(&stream, 6, Z_DEFLATED, 15, 8, Z_DEFAULT_STRATEGY) == Z_OK) {
        deflating = true;
        inputCount = 0;
        stream.next_out = deflateOutput;
        stream.avail_out = kBufferSize;
    }
    std::int64_t rowBytes =
        (static_cast<std::int64_t>(image.bitsPerComponent) * image.width * samples + 7) / 8;
    if (rowBytes < 0)
        rowBytes = 0;
    const auto* data = reinterpret_cast<const unsigned char*>(image.data.data());
    const std::size_t size = image.data.size();
    std::size_t at = 0;
    for (std::int32_t row = 0; row < image.height; ++row) {
        PutByte(0); // filter None
        const std::size_t take = at < size ? std::min<std::size_t>(size - at, rowBytes) : 0;
        PutBytes(data + at, take);
        for (std::int64_t i = static_cast<std::int64_t>(take); i < rowBytes; ++i)
            PutByte(0);
        at += static_cast<std::size_t>(rowBytes);
    }
    EndChunk();
    BeginChunk("IEND");
    EndChunk();
}

std::unique_ptr<PDFImage> ReduceImage(const PDFImage& image) {
    std::unique_ptr<PDFImage> reduced;
    const std::size_t pixels = PixelCount(image);
    if (image.colorSpace == "DeviceRGB" && image.bitsPerComponent == 8) {
        bool grey = true;
        for (std::size_t i = 0; i < pixels && grey; ++i) {
            const unsigned char red = Sample(image.data, 3 * i);
            grey = red == Sample(image.data, 3 * i + 1) && red == Sample(image.data, 3 * i + 2);
        }
        if (grey) {
            reduced = GreyRecord(image, 8);
            reduced->data.resize(pixels);
            for (std::size_t i = 0; i < pixels; ++i)
                reduced->data[i] = static_cast<char>(Sample(image.data, 3 * i));
        }
    }
    const PDFImage& current = reduced ? *reduced : image;
    if (current.colorSpace == "DeviceGray" && current.bitsPerComponent == 8) {
        bool blackAndWhite = true;
        for (std::size_t i = 0; i < pixels && blackAndWhite; ++i) {
            const unsigned char value = Sample(current.data, i);
            blackAndWhite = value == 0 || value == 255;
        }
        if (blackAndWhite) {
            auto bits = GreyRecord(current, 1);
            const auto width = static_cast<std::size_t>(current.width > 0 ? current.width : 0);
            const std::size_t rowBytes = (width + 7) / 8;
            bits->data.assign(rowBytes * (pixels ? pixels / width : 0), '\0');
            for (std::size_t i = 0; i < pixels; ++i)
                if (Sample(current.data, i) >= 128)
                    bits->data[(i / width) * rowBytes + (i % width) / 8] |=
                        static_cast<char>(0x80u >> (i % width % 8));
            reduced = std::move(bits);
        }
    }
    return reduced;
}

void WritePng(const wchar_t* path, const PDFImage& image) {
    std::FILE* file = VmOpenFile(path, "wb");
    if (!file)
        return;
    {
        PngWriter writer(file);
        const std::unique_ptr<PDFImage> reduced = ReduceImage(image);
        writer.WriteImage(reduced ? *reduced : image);
    }
    std::fclose(file);
}
