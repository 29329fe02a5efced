// The filters that work byte by byte on text: hexadecimal, base 85, "0"/"1" characters, and
// the text picture of a bitmap.
#include "filters/Filters.h"

#include "pdf/token/PDFNumbers.h"
#include "pdf/token/PDFTokens.h"

#include <cstdint>

namespace {

inline bool IsSpace(unsigned char c) {
    return c == ' ' || (c >= 9 && c <= 13);
}

void AppendWord(std::string& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>((value >> (24 - 8 * i)) & 0xFF);
}

} // namespace

PDFStatus ASCIIHexDecode(const std::string& input, std::string& output, PDFToken*) {
    output.clear();
    output.reserve(input.size() / 2);
    int high = -1;
    for (unsigned char c : input) {
        if (IsSpace(c))
            continue;
        if (c == '>')
            break;
        const int v = PdfHexDigit(c);
        if (v < 0)
            return kPdfIllegalStreamCharacter;
        if (high < 0) {
            high = v;
        } else {
            output += static_cast<char>(high * 16 + v);
            high = -1;
        }
    }
    if (high >= 0)
        output += static_cast<char>(high * 16);
    return kPdfOk;
}

PDFStatus ASCIIHexEncode(const std::string& input, std::string& output, PDFToken*) {
    static const char kDigits[] = "0123456789ABCDEF";
    output.clear();
    output.reserve(2 * input.size() + 1);
    for (unsigned char c : input) {
        output += kDigits[c >> 4];
        output += kDigits[c & 15];
    }
    output += '>';
    return kPdfOk;
}

PDFStatus ASCII85Decode(const std::string& input, std::string& output, PDFToken*) {
    output.clear();
    output.reserve(input.size() * 4 / 5 + 4);
    std::uint32_t group[5];
    int n = 0;
    for (unsigned char c : input) {
        if (IsSpace(c))
            continue;
        if (c == '~')
            break;
        if (c == 'z') {
            output.append(4, '\0'); // wherever it stands, the group is left as it is
            continue;
        }
        // No range test: this filter knows no error.
        group[n++] = static_cast<std::uint8_t>(c - 33);
        if (n == 5) {
            std::uint32_t value = 0;
            for (std::uint32_t d : group)
                value = value * 85 + d; // wraps at 32 bits
            AppendWord(output, value, 4);
            n = 0;
        }
    }
    if (n >= 2) {
        std::uint32_t value = 0;
        for (int i = 0; i < 5; ++i)
            value = value * 85 + (i < n ? group[i] : 84);
        AppendWord(output, value, n - 1);
    }
    return kPdfOk;
}

PDFStatus ASCII85Encode(const std::string& input, std::string& output, PDFToken*) {
    output.clear();
    output.reserve(input.size() * 5 / 4 + input.size() / 60 + 8);
    std::size_t sinceBreak = 0;
    for (std::size_t at = 0; at < input.size(); at += 4) {
        const std::size_t n = input.size() - at < 4 ? input.size() - at : 4;
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = (value << 8) | (i < n ? static_cast<unsigned char>(input[at + i]) : 0u);
        if (value == 0 && n == 4) {
            output += 'z';
            ++sinceBreak;
            continue;
        }
        char digits[5];
        for (int i = 4; i >= 0; --i) {
            digits[i] = static_cast<char>(value % 85 + 33);
            value /= 85;
        }
        output.append(digits, n + 1);
        sinceBreak += n + 1;
        if (sinceBreak > 75) {
            output += '\n';
            sinceBreak = 0;
        }
    }
    output += "~>";
    return kPdfOk;
}

PDFStatus ASCIIBinaryDecode(const std::string& input, std::string& output, PDFToken*) {
    output.clear();
    output.reserve(input.size() / 8 + 1);
    unsigned value = 0;
    int bits = 0;
    for (unsigned char c : input) {
        if (c != '0' && c != '1')
            continue;
        value = (value << 1) | (c == '1' ? 1u : 0u);
        if (++bits == 8) {
            output += static_cast<char>(value);
            value = 0;
            bits = 0;
        }
    }
    if (bits > 0)
        output += static_cast<char>(value << (8 - bits));
    return kPdfOk;
}

PDFStatus ASCIIBinaryEncode(const std::string& input, std::string& output, PDFToken*) {
    output.clear();
    output.reserve(input.size() * 9 + input.size() / 4);
    for (std::size_t i = 0; i < input.size(); ++i) {
        if (i != 0 && i % 4 == 0)
            output += '\n'; // four groups a line
        const auto c = static_cast<unsigned char>(input[i]);
        for (int bit = 7; bit >= 0; --bit)
            output += (c >> bit) & 1 ? '1' : '0';
        output += ' ';
    }
    return kPdfOk;
}

PDFStatus ASCIIBWEncode(const std::string& input, std::string& output, PDFToken* parms) {
    output.clear();
    int width = 32;
    if (parms && parms->IsType(kPdfKindDict))
        if (PDFToken* columns = static_cast<PDFParserTokens::PDFDict*>(parms)->Find("Columns"))
            width = columns->GetInteger(32);
    // A width below 1 is never reached by a line, which then simply runs on.
    output.reserve(input.size() * 8 + 16);
    int inLine = 0;
    for (unsigned char c : input) {
        for (int bit = 7; bit >= 0; --bit) {
            output += (c >> bit) & 1 ? 'X' : ' ';
            if (++inLine == width) {
                output += "|\n";
                inLine = 0;
                break; // the rest of the byte is dropped: lines start on a byte
            }
        }
    }
    return kPdfOk;
}
