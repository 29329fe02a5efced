// Image XObjects become records for the sink: size, bits, the name of the colour space and
// the device corners of the unit square. No mask, decode array or soft mask is applied; an
// Indexed image is expanded into its base space.
#include "filters/DecodeLimit.h"
#include "filters/FilterPipeline.h"
#include "graphics/PDFGraphics.h"
#include "graphics/PDFImage.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

namespace {

using Tokens = PDFParserTokens;

// An image whose declared size passes either bound is dropped before anything is decoded
// or allocated for it. 2^28 pixels is a colour scan of an A0 sheet at 300 dpi with room to
// spare; its samples may take what one stream may decode to. A few lines of a hostile file
// could otherwise declare terabytes.
constexpr double kMaxImagePixels = 268435456.0;
constexpr double kMaxImageBytes = static_cast<double>(kMaxDecodedStream);

struct ImageSpace {
    std::string name;
    std::int32_t components = 0;
    bool indexed = false;
    std::string palette;
};

PDFToken* Item(PDFToken* array, std::size_t index) {
    const auto& items = static_cast<Tokens::PDFArray*>(array)->items;
    return index < items.size() ? items[index] : nullptr;
}

// The name of the colour space, its component count and, for Indexed, the palette. A name
// that stands for a resource is not looked up: it stays as it is, with no components.
ImageSpace ReadImageSpace(PDFParser& parser, const Tokens::PDFDict& dict) {
    ImageSpace space;
    PDFToken* value = nullptr;
    if (parser.Resolve(dict.Find("ColorSpace"), &value) != kPdfOk || !value)
        return space;
    space.name = value->GetString();
    if (value->IsType(kPdfKindArray) && Item(value, 0)) {
        const std::string family = Item(value, 0)->GetString();
        if (family == "Indexed") {
            space.indexed = true;
            PDFToken* base = nullptr;
            if (parser.Resolve(Item(value, 1), &base) != kPdfOk)
                base = nullptr;
            PDFToken* lookup = nullptr;
            if (parser.Resolve(Item(value, 3), &lookup) != kPdfOk)
                lookup = nullptr;
            // The highest index plays no part: an index above it reads on in the palette.
            if (lookup && lookup->IsType(kPdfKindStream))
                (void)DecodeStream(*static_cast<Tokens::PDFStream*>(lookup), space.palette);
            else if (lookup && lookup->IsType(kPdfKindString))
                space.palette = lookup->GetString();
            if (base && (base->IsType(kPdfKindName) || base->IsType(kPdfKindString))) {
                space.name = base->GetString();
            } else if (base && base->IsType(kPdfKindArray) && Item(base, 0)) {
                std::string baseFamily = Item(base, 0)->GetString();
                PDFToken* profile = nullptr;
                if (baseFamily == "ICCBased" && parser.Resolve(Item(base, 1), &profile) == kPdfOk &&
                    profile && profile->IsType(kPdfKindStream)) {
                    const auto* profileDict = static_cast<const Tokens::PDFDict*>(
                        static_cast<Tokens::PDFStream*>(profile)->dict);
                    const PDFToken* alternate = profileDict->Find("Alternate");
                    baseFamily = alternate ? alternate->GetString() : std::string();
                }
                // Of array bases only an RGB one keeps a name.
                space.name = baseFamily == "DeviceRGB" ? baseFamily : std::string();
            }
        } else if (family == "ICCBased") {
            PDFToken* profile = nullptr;
            if (parser.Resolve(Item(value, 1), &profile) == kPdfOk && profile &&
                profile->IsType(kPdfKindStream)) {
                const auto* profileDict = static_cast<const Tokens::PDFDict*>(
                    static_cast<Tokens::PDFStream*>(profile)->dict);
                const PDFToken* count = profileDict->Find("N");
                space.components = count ? count->GetInteger(0) : 0;
                if (const PDFToken* alternate = profileDict->Find("Alternate"))
                    space.name = alternate->GetString();
            }
        }
    }
    if (space.name == "DeviceGray" || space.name == "CalGray")
        space.components = 1;
    else if (space.name == "DeviceRGB" || space.name == "CalRGB")
        space.components = 3;
    else if (space.name == "DeviceCMYK")
        space.components = 4;
    return space;
}

double Positive(std::int32_t value) {
    return value > 0 ? static_cast<double>(value) : 0.0;
}

// Whether the declared image fits the bounds above.
bool FitsInMemory(const PDFImage& image, const ImageSpace& space) {
    const double pixels = Positive(image.width) * Positive(image.height);
    const double components = space.components > 0 ? space.components : 1.0;
    const double bits = image.bitsPerComponent > 0 ? image.bitsPerComponent : 1.0;
    const double bytes =
        space.indexed
            ? pixels * components
            : std::ceil(Positive(image.width) * bits * components / 8.0) * Positive(image.height);
    return pixels <= kMaxImagePixels && bytes <= kMaxImageBytes;
}

// Each pixel's index, from the top bits of its byte down, becomes the palette's bytes for
// it. False when the data or the palette run out: the data contradict their dictionary.
bool ExpandIndexed(PDFImage& image, const std::string& palette, std::int32_t components) {
    const std::int32_t bits = image.bitsPerComponent;
    const std::int32_t pixelsPerByte = 8 / bits;
    // Samples wider than a byte give no pixels, so their mask and shift are never used.
    const unsigned shift = bits <= 8 ? static_cast<unsigned>(8 - bits) : 0u;
    const unsigned mask = (0xffu << shift) & 0xffu;
    const std::int64_t rowBytes = (static_cast<std::int64_t>(image.width) * bits + 7) / 8;
    const auto size = static_cast<std::size_t>(components);
    std::string out;
    if (image.width > 0 && image.height > 0)
        out.reserve(static_cast<std::size_t>(image.width) * image.height * size);
    std::size_t at = 0;
    for (std::int32_t row = 0; row < image.height; ++row) {
        std::int32_t x = 0;
        for (std::int64_t i = 0; i < rowBytes; ++i) {
            if (at >= image.data.size())
                return false;
            unsigned byte = static_cast<unsigned char>(image.data[at++]);
            for (std::int32_t k = 0; k < pixelsPerByte && x < image.width; ++k, ++x) {
                const std::size_t index = ((byte & mask) >> shift) * size;
                if (index + size > palette.size())
                    return false;
                out.append(palette, index, size);
                byte = (byte << bits) & 0xffu;
            }
        }
    }
    image.data = std::move(out);
    image.bitsPerComponent = 8;
    return true;
}

} // namespace

void PDFGraphics::DrawImageXObject(PDFStream* stream, PDFToken* keptResources) {
    const auto* dict = static_cast<const PDFDict*>(stream->dict);
    auto image = std::make_unique<PDFImage>();
    const auto readInteger = [dict](const char* key) {
        const PDFToken* value = dict->Find(key);
        return value ? value->GetInteger(0) : 0;
    };
    image->height = readInteger("Height");
    image->width = readInteger("Width");
    image->bitsPerComponent = readInteger("BitsPerComponent");
    const ImageSpace space = ReadImageSpace(*this, *dict);
    image->colorSpace = space.name;
    // An Indexed image without a sample width has no meaning, and one too large to hold is
    // refused: both are dropped as if the name were not there.
    if ((space.indexed && image->bitsPerComponent <= 0) || !FitsInMemory(*image, space)) {
        swappedResources = keptResources;
        return;
    }
    const double unit[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (int i = 0; i < 4; ++i)
        state->currentMatrix.Transform(unit[i][0], unit[i][1], image->corners[i][0],
                                       image->corners[i][1]);

    // A filter that fails drops the image, with the resources as the image left them.
    if (DecodeStream(*stream, image->data) != kPdfOk)
        return;
    if (space.indexed && !ExpandIndexed(*image, space.palette, space.components)) {
        readFailure = kPdfDataCorrupted;
        return;
    }
    // Every image of the file waits in memory for the image pass: what the decoder grew
    // ahead of need would double that.
    image->data.shrink_to_fit();
    state->DrawImage(image.release());
    swappedResources = keptResources;
}
