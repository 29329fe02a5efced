#include "pdf/token/PDFTokens.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

const char kHex[] = "0123456789abcdef";

void AppendHexByte(std::string& out, unsigned char b) {
    out += kHex[b >> 4];
    out += kHex[b & 15];
}

} // namespace

std::string PDFParserTokens::PDFString::ToString() const {
    const std::size_t probe = value.size() < 12 ? value.size() : 12;
    bool binary = false;
    for (std::size_t i = 0; i < probe; ++i)
        binary = binary || (static_cast<unsigned char>(value[i]) & 0x80);
    std::string out;
    if (binary) {
        out.reserve(2 * value.size() + 2);
        out += '<';
        for (char c : value)
            AppendHexByte(out, static_cast<unsigned char>(c));
        out += '>';
        return out;
    }
    out.reserve(value.size() + 2);
    out += '(';
    for (char ch : value) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
        case 8:
            out += "\\b";
            break;
        case 9:
            out += "\\t";
            break;
        case 10:
            out += "\\n";
            break;
        case 12:
            out += "\\f";
            break;
        case 13:
            out += "\\r";
            break;
        case '(':
            out += "\\(";
            break;
        case ')':
            out += "\\)";
            break;
        case '\\':
            out += "\\\\";
            break;
        default:
            if (c < 32 || c > 126) {
                out += '\\';
                out += static_cast<char>('0' + ((c >> 6) & 7));
                out += static_cast<char>('0' + ((c >> 3) & 7));
                out += static_cast<char>('0' + (c & 7));
            } else {
                out += static_cast<char>(c);
            }
        }
    }
    out += ')';
    return out;
}

std::string PDFParserTokens::PDFName::ToString() const {
    std::string out = "/";
    out.reserve(value.size() + 1);
    for (char ch : value) {
        const auto c = static_cast<unsigned char>(ch);
        const bool plain = static_cast<signed char>(ch) > 0 && !std::isspace(c) && c != '#' &&
                           !std::strchr("()<>{}[]/%", c);
        if (plain) {
            out += ch;
        } else {
            out += '#';
            AppendHexByte(out, c);
        }
    }
    return out;
}

std::string PDFParserTokens::PDFInteger::ToString() const {
    return std::to_string(value);
}

std::string PDFParserTokens::PDFFloat::ToString() const {
    // "%g" of the classic locale, whatever locale the process runs in.
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 6);
    return std::string(buf, r.ptr);
}

std::int32_t PDFParserTokens::PDFFloat::GetInteger(std::int32_t) const {
    // A plain cast of an out-of-range double is undefined; such values saturate instead.
    if (std::isnan(value))
        return 0;
    if (value >= 2147483647.0)
        return std::numeric_limits<std::int32_t>::max();
    if (value <= -2147483648.0)
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

PDFParserTokens::PDFArray::~PDFArray() {
    for (PDFToken* item : items)
        if (item)
            item->Release();
}

std::string PDFParserTokens::PDFArray::ToString() const {
    std::string out = "[";
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i)
            out += ' ';
        out += items[i]->ToString();
    }
    out += ']';
    return out;
}

PDFParserTokens::PDFDict::~PDFDict() {
    for (auto& [key, value] : entries)
        if (value)
            value->Release();
}

PDFToken* PDFParserTokens::PDFDict::Find(const std::string& key) const {
    const auto it = entries.find(key);
    return it == entries.end() ? nullptr : it->second;
}

std::string PDFParserTokens::PDFDict::ToString() const {
    std::string out = "<<";
    bool first = true;
    for (const auto& [key, value] : entries) {
        if (!first)
            out += ' ';
        first = false;
        out += '/';
        out += key;
        out += ' ';
        if (value)
            out += value->ToString();
    }
    out += ">>";
    return out;
}

std::string PDFParserTokens::PDFRef::ToString() const {
    return std::to_string(objectNumber) + " " + std::to_string(generation) + " R";
}

PDFParserTokens::PDFStream::~PDFStream() {
    if (dict)
        dict->Release();
}

std::string PDFParserTokens::PDFStream::ToString() const {
    std::string out = dict ? dict->ToString() : std::string();
    out += " stream\n";
    out += data;
    out += "\nendstream";
    return out;
}
