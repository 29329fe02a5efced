#include "support/HostileFiles.h"

#include "support/PdfWriter.h"
#include "support/TestSupport.h"

#include <zlib.h>

#include <functional>
#include <string>

namespace tarquil::test {

namespace {

// One page over `content` (its stream's extra entries in `entries`) with `resources`; `more`
// writes the objects that the resources name.
std::string OnePage(const std::string& content, const std::string& entries = "/Filter /FlateDecode",
                    const std::string& resources = "",
                    const std::function<void(PdfWriter&)>& more = {}) {
    PdfWriter writer;
    writer.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    writer.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    writer.Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 4 0 R "
                     "/Resources << " +
                         resources + " >> >>");
    writer.Stream(4, entries, content);
    if (more)
        more(writer);
    writer.ClassicXref("/Root 1 0 R");
    return writer.Text();
}

const std::string kLine = "\n10 10 m 190 190 l S\n";

// A zlib stream of `block` `count` times and then `tail`, made without deflating all of it:
// the block is deflated once after a full flush, which makes it refer to nothing before it,
// so its compressed bytes can follow each other; the checksum is put together from the
// block's.
std::string RepeatedDeflate(const std::string& block, std::size_t count, const std::string& tail) {
    z_stream z{};
    deflateInit(&z, 9);
    std::string first(compressBound(block.size()) + 64, '\0'), last(tail.size() + 64, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(block.data()));
    z.avail_in = static_cast<uInt>(block.size());
    z.next_out = reinterpret_cast<Bytef*>(first.data());
    z.avail_out = static_cast<uInt>(first.size());
    deflate(&z, Z_FULL_FLUSH);
    first.resize(first.size() - z.avail_out);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(tail.data()));
    z.avail_in = static_cast<uInt>(tail.size());
    z.next_out = reinterpret_cast<Bytef*>(last.data());
    z.avail_out = static_cast<uInt>(last.size());
    deflate(&z, Z_FINISH);
    last.resize(last.size() - z.avail_out - 4); // its checksum covers one block only
    deflateEnd(&z);

    const std::string header = first.substr(0, 2), body = first.substr(2);
    const auto bytes = [](const std::string& s) {
        return reinterpret_cast<const Bytef*>(s.data());
    };
    const uLong one = adler32(adler32(0, nullptr, 0), bytes(block), block.size());
    uLong sum = adler32(0, nullptr, 0);
    std::string data = header;
    data.reserve(header.size() + count * body.size() + last.size() + 4);
    for (std::size_t i = 0; i < count; ++i) {
        data += body;
        sum = adler32_combine(sum, one, block.size());
    }
    data += last;
    sum = adler32(sum, bytes(tail), tail.size());
    for (int shift = 24; shift >= 0; shift -= 8)
        data += static_cast<char>((sum >> shift) & 0xff);
    return data;
}

} // namespace

std::string DeepSavesOverClip(int vertices, int saves) {
    std::string content = "0 0 m ";
    for (int i = 1; i < vertices; ++i)
        content += std::to_string(100 + (i % 2 ? 90 : 40) * ((i * 7) % 13) / 13) + " " +
                   std::to_string(i * 200 / vertices) + " l ";
    content += "h W n\n";
    for (int i = 0; i < saves; ++i)
        content += "q ";
    return OnePage(ZlibCompress(content + kLine));
}

std::string OperandFlood(std::size_t count) {
    std::string block;
    for (int i = 0; i < (1 << 19); ++i)
        block += "0 ";
    return OnePage(RepeatedDeflate(block, (count + (1 << 19) - 1) >> 19, kLine));
}

std::string FlateBomb(std::size_t bytes) {
    return OnePage(
        RepeatedDeflate(std::string(1 << 20, ' '), (bytes + (1 << 20) - 1) >> 20, kLine));
}

std::string DeepNesting(int depth, bool dictionaries) {
    std::string content;
    for (int i = 0; i < depth; ++i)
        content += dictionaries ? "<< /K " : "[";
    content += "0 ";
    for (int i = 0; i < depth; ++i)
        content += dictionaries ? ">> " : "]";
    return OnePage(ZlibCompress(content + kLine));
}

std::string UnmatchedClosers(std::size_t count) {
    return OnePage(ZlibCompress(std::string(count, ']') + kLine));
}

std::string HugePageCount(long long count) {
    PdfWriter writer;
    writer.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    writer.Object(2, "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count " + std::to_string(count) + " >>");
    for (int page : {3, 4})
        writer.Object(page,
                      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 5 0 R >>");
    writer.Stream(5, "", kLine);
    writer.ClassicXref("/Root 1 0 R");
    return writer.Text();
}

std::string HugeWidths(std::size_t entries) {
    std::string descendant = "<< /Type /Font /Subtype /CIDFontType2 /BaseFont /Wide /W [0 [";
    for (std::size_t i = 0; i < entries; ++i)
        descendant += "500 ";
    descendant += "]] >>";
    return OnePage("BT /F1 12 Tf 20 20 Td <00410042> Tj ET" + kLine, "", "/Font << /F1 5 0 R >>",
                   [&descendant](PdfWriter& writer) {
                       writer.Object(5, "<< /Type /Font /Subtype /Type0 /BaseFont /Wide "
                                        "/Encoding /Identity-H /DescendantFonts [6 0 R] >>");
                       writer.Object(6, descendant);
                   });
}

std::string SelfDrawingForm() {
    return OnePage("/Self Do" + kLine, "", "/XObject << /Self 5 0 R >>", [](PdfWriter& writer) {
        writer.Stream(5,
                      "/Type /XObject /Subtype /Form /Resources << /XObject << /Self 5 0 R >> >>",
                      "/Self Do /Self Do");
    });
}

std::string ManyLegacyLayers(int layers, std::size_t lineBytes) {
    std::string text = "%!PS-Adobe-2.0 EPSF-1.2\n%%EndSetup\n" + std::string(lineBytes, '7') + "\n";
    for (int i = 0; i < layers; ++i)
        text += "1 1 0 1 0 0 1 0 0 0 Lb\n(Layer " + std::to_string(i) + ") Ln\n0 " +
                std::to_string(i) + " m\n10 " + std::to_string(i) + " L\nS\n";
    return text;
}

} // namespace tarquil::test
