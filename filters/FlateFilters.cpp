// "FlateDecode" and "FlateEncode" over zlib.
#include "filters/DecodeLimit.h"
#include "filters/Filters.h"

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <vector>

namespace {

PDFStatus InflateStatus(int z) {
    if (z == Z_STREAM_END)
        return kPdfOk;
    if (z == Z_DATA_ERROR)
        return kPdfDataCorrupted;
    return kPdfZlibError; // Z_BUF_ERROR of a cut stream among them
}

// Ends a started zlib stream however its loop is left: growing the output can throw when the
// import runs out of its memory, and zlib's own state would then be lost.
class ZStreamEnd {
public:
    ZStreamEnd(z_stream& z, int (*end)(z_streamp)) : m_z(z), m_end(end) {}
    ZStreamEnd(const ZStreamEnd&) = delete;
    ZStreamEnd& operator=(const ZStreamEnd&) = delete;
    ~ZStreamEnd() { m_end(&m_z); }

private:
    z_stream& m_z; // borrowed: the stream of the caller's frame
    int (*m_end)(z_streamp);
};

// Grows `text` to exactly `size` bytes of room. A plain resize may double the capacity
// beyond what was asked, which near the bound of one stream would ask for twice the bound.
void GrowTo(std::string& text, std::size_t size) {
    if (size <= text.capacity()) {
        text.resize(size);
        return;
    }
    std::string grown;
    grown.reserve(size);
    grown.append(text);
    grown.resize(size);
    text.swap(grown);
}

// Inflates through a window of `window` bytes: no flush while input is left, Z_FINISH once it
// is all taken in, going on while zlib says Z_OK. Everything produced is kept, whatever the
// end. Returns zlib's last status; `started` tells whether inflation could begin at all, and
// `exceeded` whether it stopped at `limit` bytes, which it never goes far beyond.
int Inflate(const std::string& input, std::string& output, std::size_t window, bool& started,
            std::size_t limit, bool& exceeded) {
    exceeded = false;
    output.clear();
    z_stream z{};
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    z.avail_in = static_cast<uInt>(input.size() > UINT_MAX ? UINT_MAX : input.size());
    started = inflateInit(&z) == Z_OK;
    if (!started)
        return Z_STREAM_ERROR;
    const ZStreamEnd ending(z, inflateEnd);
    // Inflated straight into the output, whose room doubles as it fills: no copy through a
    // buffer, and growth stays amortised. The narrow window is kept exactly; a wide one
    // takes all the room there is.
    std::size_t produced = 0;
    int status;
    do {
        // Never more room than the bound allows: past it the stream fails anyway.
        if (output.size() - produced < window) {
            std::size_t room = std::max(output.size() * 2, produced + window);
            if (room >= limit)
                room = std::max(limit, produced) + window + 1;
            GrowTo(output, room);
        }
        const std::size_t free = std::min<std::size_t>(output.size() - produced, UINT_MAX);
        const std::size_t room = window <= 256 ? window : free;
        z.next_out = reinterpret_cast<Bytef*>(output.data() + produced);
        z.avail_out = static_cast<uInt>(room);
        status = inflate(&z, z.avail_in == 0 ? Z_FINISH : Z_NO_FLUSH);
        produced += room - z.avail_out;
        if (produced > limit) {
            exceeded = true;
            break;
        }
    } while (status == Z_OK);
    output.resize(produced);
    return status;
}

} // namespace

PDFStatus FlateDecode(const std::string& input, std::string& output, PDFToken*) {
    // A whole stream inflates the same through any window, so a large one is used. Where
    // the stream fails, how much of a cut stream comes out depends on the window once the
    // input is all taken in (zlib answers Z_FINISH with a short window by stopping), so the
    // failure is inflated again through the 256-byte window that fixes that amount.
    const DecodeLimit limit = CurrentDecodeLimit();
    bool started = false, exceeded = false;
    int status = Inflate(input, output, 1 << 16, started, limit.bytes, exceeded);
    if (!started)
        return kPdfZlibError;
    if (!exceeded && status != Z_STREAM_END)
        status = Inflate(input, output, 256, started, limit.bytes, exceeded);
    if (exceeded)
        return limit.status;
    return InflateStatus(status);
}

PDFStatus FlateEncode(const std::string& input, std::string& output, PDFToken*) {
    output.clear();
    z_stream z{};
    if (deflateInit(&z, Z_DEFAULT_COMPRESSION) != Z_OK)
        return kPdfZlibError;
    const ZStreamEnd ending(z, deflateEnd);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    z.avail_in = static_cast<uInt>(input.size() > UINT_MAX ? UINT_MAX : input.size());
    // Deflating everything with Z_FINISH gives the same bytes through any window.
    std::vector<unsigned char> buffer(1 << 16);
    int status;
    do {
        z.next_out = buffer.data();
        z.avail_out = static_cast<uInt>(buffer.size());
        status = deflate(&z, Z_FINISH);
        output.append(reinterpret_cast<const char*>(buffer.data()), buffer.size() - z.avail_out);
    } while (status == Z_OK);
    return status == Z_STREAM_END ? kPdfOk : kPdfZlibError;
}
