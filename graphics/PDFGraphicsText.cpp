// Text state, text position and the decoding of shown strings.
//
// The three advance accumulations below are deliberately unlike each other (which widths
// count, whether missingWidth stands in, whether spacing is added); the sink's layout of
// runs depends on each as it is.
#include "graphics/PDFGraphicsState.h"

#include <cstddef>
#include <cstdint>
#include <utility>

void PDFGraphicsState::SetCharSpacing(double spacing) {
    charSpacing = spacing;
}

void PDFGraphicsState::SetWordSpacing(double spacing) {
    wordSpacing = spacing;
}

void PDFGraphicsState::SetHorizontalScale(double scale) {
    horizontalScale = scale;
}

void PDFGraphicsState::SetLeading(double value) {
    leading = value;
}

void PDFGraphicsState::SetTextRenderMode(int /*mode*/) {}

void PDFGraphicsState::SetFont(const std::string& name, double size, SharedToUnicodeMap toUnicode,
                               SharedEncodingMap encoding) {
    fontName = name;
    fontSize = size;
    toUnicodeMap = std::move(toUnicode);
    encodingMap = std::move(encoding);
}

void PDFGraphicsState::SetTextRise(double /*rise*/) {}

void PDFGraphicsState::BeginText() {
    // textAdvance and runStart carry over, so a BT ... Tj after ET continues the old line.
    pendingText.clear();
    textMatrix = PDFMatrix{};
}

void PDFGraphicsState::FlushTextRun(double /*start*/) {}

void PDFGraphicsState::MoveText(double tx, double ty) {
    FlushTextRun(runStart);
    pendingText.clear();
    textAdvance = 0.0;
    runStart = 0.0;
    const PDFMatrix& m = textMatrix;
    const double e = m.a * tx + m.c * ty + m.e;
    const double f = m.b * tx + m.d * ty + m.f;
    textMatrix.e = e;
    textMatrix.f = f;
}

void PDFGraphicsState::SetTextMatrix(double a, double b, double c, double d, double e, double f) {
    textMatrix = PDFMatrix{a, b, c, d, e, f};
}

void PDFGraphicsState::AppendText(const std::string& bytes, double& advance) {
    std::u16string decoded;
    const bool mapped = toUnicodeMap && !toUnicodeMap->empty();
    const bool ok = !mapped ? DecodePlainText(bytes, advance, decoded)
                            : DecodeMappedText(bytes, advance, decoded);
    if (ok)
        pendingText += decoded;
}

bool PDFGraphicsState::DecodeMappedText(const std::string& bytes, double& advance,
                                        std::u16string& out) {
    static const ToUnicodeMap none;
    const ToUnicodeMap& map = toUnicodeMap ? *toUnicodeMap : none;
    double acc = advance;
    std::size_t p = 0;
    while (p < bytes.size()) {
        // Codes of one to four bytes share one key space; the shortest code that the map
        // knows wins. Past the end, the code is shifted with nothing added.
        std::uint32_t code = 0;
        std::size_t length = 0;
        ToUnicodeMap::const_iterator hit = map.end();
        for (std::size_t n = 1; n <= 4; ++n) {
            code <<= 8;
            if (p + n - 1 < bytes.size())
                code |= static_cast<unsigned char>(bytes[p + n - 1]);
            if (code != 0) {
                hit = map.find(code);
                if (hit != map.end()) {
                    length = n;
                    break;
                }
            }
        }
        // One undecodable code drops the whole string, its advance included.
        if (hit == map.end())
            return false;
        out.push_back(hit->second);
        const auto width = widths.find(static_cast<std::int32_t>(code));
        acc += (width == widths.end() || width->second == 0.0) ? missingWidth : width->second;
        // Spacing is added in thousandths of the font size as it stands, unconverted.
        acc += code == 32 ? wordSpacing : charSpacing;
        p += length;
    }
    advance = acc;
    return true;
}

bool PDFGraphicsState::DecodePlainText(const std::string& bytes, double& advance,
                                       std::u16string& out) {
    if (bytes.empty())
        return true;
    double acc = advance;
    bool twoBytes = false;
    if (bytes.size() % 2 == 0) {
        twoBytes = encodingMap && encodingMap->size() == 65536;
        // A control byte, or any byte from 0x80 up, at an even index marks two-byte codes.
        for (std::size_t i = 0; !twoBytes && i < bytes.size(); i += 2)
            twoBytes = static_cast<signed char>(bytes[i]) < 32;
    }
    if (twoBytes) {
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const std::uint32_t code =
                (static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << 8) |
                static_cast<unsigned char>(bytes[i + 1]);
            // These codes go straight into the run, not through `out`.
            pendingText.push_back(static_cast<char16_t>(code));
            const auto width = widths.find(static_cast<std::int32_t>(code));
            if (width == widths.end())
                continue;
            acc += width->second;
            acc += code == 32 ? wordSpacing : charSpacing;
        }
    } else {
        for (const char byte : bytes) {
            const auto value = static_cast<unsigned char>(byte);
            out.push_back(static_cast<char16_t>(value));
            const auto width = widths.find(value);
            if (width != widths.end())
                acc += width->second;
        }
    }
    advance = acc;
    return true;
}
