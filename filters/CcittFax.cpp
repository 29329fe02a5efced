// "CCITTFaxDecode": a one-dimensional decoder without lines and a Group 4 decoder.
#include "filters/CcittFax.h"

#include "filters/CcittFaxTables.h"
#include "filters/DecodeLimit.h"
#include "pdf/token/PDFTokens.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

// No line wider than this is decoded. A V0 code of one bit emits a whole line, so /Columns
// multiplies the output a few bits of data can ask for; 65536 pixels is far beyond any fax
// or scanned page, yet bounds a line at 8 KiB and the line state at 512 KiB.
constexpr int kMaxColumns = 65536;
// The decoders' own code for output that went beyond what one stream may decode to.
constexpr int kFaxLimitExceeded = -100;

// Outcome of reading a run: its codes, or what stopped them.
enum class RunEnd { kComplete, kEol, kInvalid, kCutOff };

// Input bits, most significant first.
class BitReader {
public:
    explicit BitReader(const std::string& bytes)
        : m_data(reinterpret_cast<const unsigned char*>(bytes.data())), m_size(bytes.size()),
          m_bits(static_cast<std::uint64_t>(bytes.size()) * 8) {}

    std::uint64_t Remaining() const { return m_bits - m_pos; }

    // The code at the read position; false, reading nothing, when the input ends inside it.
    bool ReadCode(const ccitt::CodeTable& table, std::int16_t& value) {
        const ccitt::CodeEntry entry = table[Peek()];
        if (entry.length > Remaining())
            return false;
        m_pos += entry.length;
        value = entry.value;
        return true;
    }

    // Make-up codes while they come, then a terminating code; the lengths added up.
    RunEnd ReadRun(const ccitt::CodeTable& table, std::int64_t& run) {
        run = 0;
        for (;;) {
            std::int16_t value;
            if (!ReadCode(table, value))
                return RunEnd::kCutOff;
            if (value == ccitt::kEol)
                return RunEnd::kEol;
            if (value < 0)
                return RunEnd::kInvalid;
            run += value;
            if (value < 64)
                return RunEnd::kComplete;
        }
    }

private:
    // The next kLookupBits bits, zeros past the end.
    unsigned Peek() const {
        const std::size_t byte = static_cast<std::size_t>(m_pos >> 3);
        std::uint32_t word;
        if (byte + 3 <= m_size) {
            word = std::uint32_t{m_data[byte]} << 16 | std::uint32_t{m_data[byte + 1]} << 8 |
                   m_data[byte + 2];
        } else {
            word = 0;
            for (std::size_t i = 0; i < 3; ++i)
                word = (word << 8) | (byte + i < m_size ? m_data[byte + i] : 0u);
        }
        const int shift = 24 - ccitt::kLookupBits - static_cast<int>(m_pos & 7);
        return (word >> shift) & ((1u << ccitt::kLookupBits) - 1);
    }

    const unsigned char* m_data;
    std::size_t m_size;
    std::uint64_t m_bits;
    std::uint64_t m_pos = 0;
};

// Sets bits [from, to) of a packed line, most significant bit first.
void SetBits(unsigned char* line, int from, int to) {
    if (from >= to)
        return;
    const int first = from >> 3, last = (to - 1) >> 3;
    const unsigned char head = static_cast<unsigned char>(0xFFu >> (from & 7));
    const unsigned char tail = static_cast<unsigned char>(0xFFu << (7 - ((to - 1) & 7)));
    if (first == last) {
        line[first] |= head & tail;
        return;
    }
    line[first] |= head;
    std::memset(line + first + 1, 0xFF, static_cast<std::size_t>(last - first - 1));
    line[last] |= tail;
}

// The two lines of the Group 4 decoder. Both are kept as their changing elements, the
// positions where the colour differs from the pixel before (white before the first), so
// that finding b1 and b2 costs no walk over pixels and a wide line with few changes stays
// small. Even entries turn black, odd ones white.
class Fax2D {
public:
    Fax2D(int columns, std::string& output)
        : m_columns(columns), m_lineBytes((static_cast<std::size_t>(columns) + 7) / 8),
          m_out(output) {
        m_reference.assign(2, columns);
    }

    int Decode(const std::string& input);
    bool Exceeded() const { return m_exceeded; }

private:
    // Fills up to `run` pixels of the coding line, never past its end.
    void Fill(std::int64_t run, bool black) {
        const int n = static_cast<int>(std::min<std::int64_t>(run, m_columns - m_written));
        if (n <= 0)
            return;
        if (black != m_lastBlack) {
            m_coding.push_back(m_written);
            m_lastBlack = black;
        }
        m_written += n;
    }

    bool Full() const { return m_written >= m_columns; }

    // Packs the coding line onto the output and makes it the reference line.
    void FlushLine() {
        if (m_out.size() > m_limit) {
            m_exceeded = true;
            return;
        }
        if (m_lastBlack && m_written < m_columns)
            m_coding.push_back(m_written);
        const std::size_t at = m_out.size();
        m_out.resize(at + m_lineBytes, '\0');
        auto* line = reinterpret_cast<unsigned char*>(m_out.data() + at);
        for (std::size_t i = 0; i < m_coding.size(); i += 2)
            SetBits(line, m_coding[i], i + 1 < m_coding.size() ? m_coding[i + 1] : m_columns);
        m_reference.swap(m_coding);
        // Two sentinels, so that b1 and the change after it can always be read.
        m_reference.push_back(m_columns);
        m_reference.push_back(m_columns);
        m_coding.clear();
        m_written = 0;
        m_lastBlack = false;
        m_a0 = m_columns;
        m_next = 0;
    }

    void FlushIfWritten() {
        if (m_written != 0)
            FlushLine();
    }

    int Fail(int status) {
        m_out.clear();
        return status;
    }

    const int m_columns;
    const std::size_t m_lineBytes;
    std::string& m_out;
    // A one-bit code can emit a whole line: the output is bounded as it grows.
    std::size_t m_limit = CurrentDecodeLimit().bytes;
    bool m_exceeded = false;
    std::vector<int> m_reference;
    std::vector<int> m_coding;
    int m_written = 0;
    bool m_lastBlack = false; // colour of the last pixel written to the coding line
    int m_a0 = 0;
    std::size_t m_next = 0; // first reference change not left of a0, as far as known
};

int Fax2D::Decode(const std::string& input) {
    BitReader in(input);
    m_a0 = m_columns; // the first pass starts a line
    bool black = false;
    for (;;) {
        if (m_exceeded)
            return 0; // told by Exceeded()
        std::size_t b1Index;
        if (m_a0 < m_columns) {
            // a0 never moves left within a line, so the search resumes where it stopped.
            while (m_reference[m_next] <= m_a0)
                ++m_next;
            b1Index = m_next;
            if ((b1Index & 1) != static_cast<std::size_t>(black))
                ++b1Index;
        } else {
            m_a0 = 0;
            black = false;
            m_next = 0;
            b1Index = 0;
        }
        const int b1 = m_reference[b1Index];

        if (in.Remaining() == 0) {
            FlushIfWritten();
            return 0;
        }
        std::int16_t mode;
        if (!in.ReadCode(ccitt::kModeCodes, mode)) {
            FlushIfWritten();
            return -1;
        }
        switch (mode) {
        case ccitt::kEol:
            FlushIfWritten();
            return 0;
        case ccitt::kInvalid:
            return Fail(-2);
        case ccitt::kExtension:
            FlushIfWritten();
            return -1;
        case ccitt::kExtensionStop:
            return Fail(-1);
        case ccitt::kPass: {
            const int b2 = b1 < m_columns ? m_reference[b1Index + 1] : m_columns;
            Fill(b2 - m_a0, black);
            if (Full())
                FlushLine();
            else
                m_a0 = m_written;
            break;
        }
        case ccitt::kHorizontal: {
            std::int64_t first, second;
            RunEnd end = in.ReadRun(black ? ccitt::kBlackCodes : ccitt::kWhiteCodes, first);
            if (end == RunEnd::kComplete)
                end = in.ReadRun(black ? ccitt::kWhiteCodes : ccitt::kBlackCodes, second);
            if (end == RunEnd::kEol)
                return Fail(-1);
            if (end == RunEnd::kInvalid)
                return Fail(-2);
            if (end == RunEnd::kCutOff)
                return Fail(-3);
            Fill(first, black);
            // A line filled by the first run is flushed and the second run starts the next
            // one as it stands: a0 and the colour are not reset as for a new line.
            if (Full())
                FlushLine();
            Fill(second, !black);
            if (Full())
                FlushLine();
            else
                m_a0 = m_written;
            break;
        }
        default: { // vertical
            const int run = b1 + (mode - ccitt::kVertical0) - m_a0;
            if (run > 0)
                Fill(run, black);
            if (Full()) {
                FlushLine();
            } else {
                black = !black;
                m_a0 = m_written;
            }
            break;
        }
        }
    }
}

// Bits appended to a byte string, most significant first.
class BitWriter {
public:
    explicit BitWriter(std::string& out) : m_out(out) {}

    void Append(std::int64_t count, bool one) {
        const unsigned char fill = one ? 0xFF : 0x00;
        if (m_used != 0 && count > 0) {
            const int take = static_cast<int>(std::min<std::int64_t>(count, 8 - m_used));
            if (one)
                m_out.back() =
                    static_cast<char>(static_cast<unsigned char>(m_out.back()) |
                                      ((0xFFu >> m_used) & (0xFFu << (8 - m_used - take))));
            m_used = (m_used + take) & 7;
            count -= take;
        }
        if (count >= 8) {
            m_out.append(static_cast<std::size_t>(count / 8), static_cast<char>(fill));
            count %= 8;
        }
        if (count > 0) {
            m_out.push_back(static_cast<char>(one ? (0xFFu << (8 - count)) & 0xFFu : 0u));
            m_used = static_cast<int>(count);
        }
    }

private:
    std::string& m_out;
    int m_used = 0; // bits of the last byte taken; the rest are zero
};

} // namespace

// Knowing no lines, this decoder has no use for /Columns, whatever its value.
int DecodeFax1D(const std::string& input, std::string& output, int /*columns*/) {
    output.clear();
    const std::size_t limit = CurrentDecodeLimit().bytes;
    BitReader in(input);
    BitWriter bits(output);
    bool black = false;
    while (in.Remaining() != 0) {
        std::int64_t run;
        switch (in.ReadRun(black ? ccitt::kBlackCodes : ccitt::kWhiteCodes, run)) {
        case RunEnd::kComplete:
            bits.Append(run, black);
            black = !black;
            if (output.size() > limit) {
                output.clear();
                return kFaxLimitExceeded;
            }
            break;
        case RunEnd::kEol:
            // Make-up codes read before it belong to no complete run and are dropped.
            return 0;
        case RunEnd::kInvalid:
            output.clear();
            return -2;
        case RunEnd::kCutOff:
            output.clear();
            return -3;
        }
    }
    return 0;
}

int DecodeFax2D(const std::string& input, std::string& output, int columns) {
    output.clear();
    // Neither a line of no pixels nor one beyond kMaxColumns can be decoded: the parameters
    // are taken as damaged, and the data as undecodable.
    if (columns <= 0 || columns > kMaxColumns)
        return -1;
    Fax2D fax(columns, output);
    const int status = fax.Decode(input);
    return fax.Exceeded() ? kFaxLimitExceeded : status;
}

PDFStatus CCITTFaxDecode(const std::string& input, std::string& output, PDFToken* parms) {
    std::int32_t k = 0, columns = 1728;
    bool blackIs1 = false;
    if (parms && parms->IsType(kPdfKindDict)) {
        const auto* dict = static_cast<PDFParserTokens::PDFDict*>(parms);
        if (const PDFToken* t = dict->Find("K"))
            k = t->GetInteger(0);
        if (const PDFToken* t = dict->Find("Columns"))
            columns = t->GetInteger(1728);
        if (const PDFToken* t = dict->Find("BlackIs1"))
            blackIs1 = t->GetInteger(0) != 0;
    }
    if (k < 0) {
        const int status = DecodeFax2D(input, output, columns);
        if (status == kFaxLimitExceeded)
            return CurrentDecodeLimit().status;
        if (status != 0)
            return status;
    } else {
        // Mixed data (K > 0) goes this way too; what the decoder says of it is not used,
        // unless it went beyond what one stream may decode to.
        if (DecodeFax1D(input, output, columns) == kFaxLimitExceeded)
            return CurrentDecodeLimit().status;
    }
    if (!blackIs1) {
        for (char& c : output)
            c = static_cast<char>(~static_cast<unsigned char>(c));
    }
    return 0;
}
