// The image pass: files in the temporary folder, read back by libpng, and picture frames.
#include "graphics/PDFImage.h"
#include "host/base/CVelmoFileUtilities.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "output/PDFToVelmo.h"
#include "output/PngWriter.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

PDFImage* MakeImage(std::int32_t width, std::int32_t height, std::int32_t bits,
                    const std::string& space, std::string data) {
    auto* image = new PDFImage;
    image->width = width;
    image->height = height;
    image->bitsPerComponent = bits;
    image->colorSpace = space;
    image->data = std::move(data);
    image->corners = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
    return image;
}

struct Decoded {
    png_uint_32 width = 0, height = 0;
    int bitDepth = 0, colourType = 0;
    std::vector<unsigned char> pixels; // one byte a sample, grey or RGB
};

// Reads a PNG with libpng, expanded to 8-bit samples.
bool ReadPng(const fs::path& path, Decoded& out) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return false;
    out.width = image.width;
    out.height = image.height;
    out.colourType = (image.format & PNG_FORMAT_FLAG_COLOR) ? 2 : 0;
    image.format = out.colourType == 2 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    out.pixels.resize(PNG_IMAGE_SIZE(image));
    const bool ok = png_image_finish_read(&image, nullptr, out.pixels.data(), 0, nullptr) != 0;
    png_image_free(&image);
    // The bit depth as written, from the IHDR chunk.
    const std::string bytes = tarquil::test::ReadFileBytes(path);
    out.bitDepth = static_cast<unsigned char>(bytes[24]);
    return ok;
}

// The rows of the IDAT chunk of a PNG file, inflated.
std::string InflatedRows(const std::string& png) {
    const std::size_t at = png.find("IDAT");
    const std::size_t length = (static_cast<unsigned char>(png[at - 4]) << 24) |
                               (static_cast<unsigned char>(png[at - 3]) << 16) |
                               (static_cast<unsigned char>(png[at - 2]) << 8) |
                               static_cast<unsigned char>(png[at - 1]);
    std::string out(1 << 16, '\0');
    uLongf size = out.size();
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(out.data()), &size,
                         reinterpret_cast<const Bytef*>(png.data() + at + 4), length),
              Z_OK);
    out.resize(size);
    return out;
}

class ImagePass : public ::testing::Test {
protected:
    void SetUp() override {
        tarquil::test::ResetHost();
        folder = fs::temp_directory_path() / ("tarquil-images-" + std::to_string(getpid()));
        fs::remove_all(folder);
        CVelmoFileUtilities::SetTempFolder(folder.wstring().c_str());
    }
    void TearDown() override {
        CVelmoFileUtilities::SetTempFolder(nullptr);
        fs::remove_all(folder);
    }
    // Commits `images` at scale 2 after a shift of (1, 1); gives the frames' files in order.
    std::vector<fs::path> Commit(CVelmoDoc& doc, std::vector<PDFImage*> images) {
        PDFToVelmo sink(&doc, &options);
        for (PDFImage* image : images)
            sink.DrawImage(image);
        const int before = doc.ObjectCount();
        sink.CommitToDocument(2.0, GK_3dVector(1.0, 1.0, 0.0), false, false, false, false);
        std::vector<fs::path> paths;
        for (int i = before; i < doc.ObjectCount(); ++i)
            paths.emplace_back(
                static_cast<const CVelmoPictureFrameObject&>(doc.Object(i)).Path().Array());
        return paths;
    }

    fs::path folder;
    CVelmoFileReadOptions options;
};

// Frames sit on the image's corners through the commit's matrix; files are named by process
// and a counter that runs on across imports.
TEST_F(ImagePass, FramesAndFileNames) {
    CVelmoDoc doc;
    PDFImage* skewed = MakeImage(1, 1, 8, "DeviceGray", "x");
    skewed->corners = {{{10, 20}, {110, 20}, {130, 70}, {30, 70}}};
    const auto first = Commit(doc, {skewed, MakeImage(1, 1, 8, "DeviceGray", "y")});
    ASSERT_EQ(first.size(), 2u);
    const auto& frame = static_cast<const CVelmoPictureFrameObject&>(doc.Object(0)).Frame();
    EXPECT_EQ(frame.Plane().origin, GK_3dPoint(22, 42, 0));
    EXPECT_DOUBLE_EQ(frame.Width(), 200.0);
    EXPECT_DOUBLE_EQ(frame.Height(), std::hypot(40.0, 100.0));
    const GK_3dPoint top = frame.Corner(0, 1); // the skew stays
    EXPECT_NEAR(top.x, 62.0, 1e-12);
    EXPECT_NEAR(top.y, 142.0, 1e-12);

    const auto second = Commit(doc, {MakeImage(1, 1, 8, "DeviceGray", "z")});
    const std::string prefix = "PDF" + std::to_string(getpid()) + "_";
    ASSERT_EQ(first[0].parent_path(), folder);
    ASSERT_EQ(first[0].filename().string().rfind(prefix, 0), 0u);
    const int counter = std::stoi(first[0].stem().string().substr(prefix.size()));
    char name[64];
    std::snprintf(name, sizeof name, "%s%03d.png", prefix.c_str(), counter + 2);
    EXPECT_EQ(second[0].filename(), name);
}

// JPEG data go out as they came, without their tag; others as PNG that libpng reads, the
// colour reduced where the pixels allow and short data padded with zeros.
TEST_F(ImagePass, FilesReadBack) {
    CVelmoDoc doc;
    const std::string jpeg = std::string("\xff\xd8\xff\xe0 any bytes \0 at all", 23);
    const auto paths =
        Commit(doc, {MakeImage(5, 5, 8, "DeviceCMYK", "JPEG:" + jpeg),
                     MakeImage(2, 1, 8, "DeviceRGB", std::string("\x10\x20\x30\x40\x50\x60", 6)),
                     MakeImage(2, 1, 8, "DeviceRGB", std::string("\x10\x10\x10\x80\x80\x80", 6)),
                     MakeImage(3, 1, 8, "DeviceRGB", std::string("\0\0\0\xff\xff\xff\0\0\0", 9)),
                     MakeImage(2, 2, 8, "DeviceGray", std::string("\x00\xfe\xff", 3)),
                     MakeImage(9, 1, 1, "", std::string("\xa5\x80", 2))});
    ASSERT_EQ(paths.size(), 6u);
    EXPECT_EQ(paths[0].extension(), ".jpg");
    EXPECT_EQ(tarquil::test::ReadFileBytes(paths[0]), jpeg);

    Decoded png;
    ASSERT_TRUE(ReadPng(paths[1], png));
    EXPECT_EQ(png.colourType, 2);
    EXPECT_EQ(png.pixels, (std::vector<unsigned char>{0x10, 0x20, 0x30, 0x40, 0x50, 0x60}));
    ASSERT_TRUE(ReadPng(paths[2], png)); // all grey: one channel
    EXPECT_EQ(png.colourType, 0);
    EXPECT_EQ(png.bitDepth, 8);
    EXPECT_EQ(png.pixels, (std::vector<unsigned char>{0x10, 0x80}));
    ASSERT_TRUE(ReadPng(paths[3], png)); // black and white: one bit
    EXPECT_EQ(png.bitDepth, 1);
    EXPECT_EQ(png.pixels, (std::vector<unsigned char>{0, 255, 0}));
    ASSERT_TRUE(ReadPng(paths[4], png)); // 254 keeps it at 8 bits; the missing byte is 0
    EXPECT_EQ(png.bitDepth, 8);
    EXPECT_EQ(png.pixels, (std::vector<unsigned char>{0, 254, 255, 0}));
    ASSERT_TRUE(ReadPng(paths[5], png)); // one bit in any space is grey
    EXPECT_EQ(png.pixels, (std::vector<unsigned char>{255, 0, 255, 0, 0, 255, 0, 255, 255}));
}

// What no reader takes is still written as the rules say: colour type 255 with rows of a
// filter byte alone; width 0 gives rows of filter bytes, height 0 an empty stream.
TEST_F(ImagePass, OddShapesKeepTheirForm) {
    CVelmoDoc doc;
    const auto paths =
        Commit(doc, {MakeImage(2, 3, 8, "DeviceCMYK", "abcdefgh"),
                     MakeImage(0, 2, 8, "DeviceGray", ""), MakeImage(4, 0, 8, "DeviceGray", "")});
    ASSERT_EQ(paths.size(), 3u); // the frame's size is the corners', not the pixels'
    const std::vector<fs::path>& files = paths;
    const std::string cmyk = tarquil::test::ReadFileBytes(files[0]);
    EXPECT_EQ(static_cast<unsigned char>(cmyk[25]), 255);
    EXPECT_EQ(InflatedRows(cmyk), std::string(3, '\0'));
    EXPECT_EQ(InflatedRows(tarquil::test::ReadFileBytes(files[1])), std::string(2, '\0'));
    EXPECT_EQ(InflatedRows(tarquil::test::ReadFileBytes(files[2])), "");
}

} // namespace
