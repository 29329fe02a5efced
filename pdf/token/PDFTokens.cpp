#include "pdf/token/PDFTokens.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>

namespace {

const char kHex[] = "0123456789abcdef";

void AppendHexByte(std::string& out, unsigned char b) {
    out += kHex[b >> 4];
    out += kHex[b & 15];
}

// The text of arrays, dictionaries and streams, built with a work list instead of
// recursion so that nesting of any depth prints. Items are taken last-in first-out, so
// each container pushes its closing text first and its opening text last.
std::string ContainerText(const PDFToken* root) {
    using P = PDFParserTokens;
    struct Item {
        const PDFToken* token = nullptr;
        const std::string* text = nullptr;
        const char* literal = nullptr;
    };
    std::string out;
    std::vector<Item> work{{root, nullptr, nullptr}};
    while (!work.empty()) {
        const Item item = work.back();
        work.pop_back();
        if (item.literal) {
            out += item.literal;
            continue;
        }
        if (item.text) {
            out += *item.text;
            continue;
        }
        const PDFToken* t = item.token;
        if (!t)
            continue;
        if (t->IsType(kPdfKindArray)) {
            const auto& items = static_cast<const P::PDFArray*>(t)->items;
            work.push_back({nullptr, nullptr, "]"});
            for (std::size_t i = items.size(); i-- > 0;) {
                work.push_back({items[i], nullptr, nullptr});
                if (i)
                    work.push_back({nullptr, nullptr, " "});
            }
            out += '[';
        } else if (t->IsType(kPdfKindDict)) {
            const auto& entries = static_cast<const P::PDFDict*>(t)->entries;
            work.push_back({nullptr, nullptr, ">>"});
            // Keys go out exactly as stored, without the escapes of names.
            for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
                work.push_back({it->second, nullptr, nullptr});
                work.push_back({nullptr, nullptr, " "});
                work.push_back({nullptr, &it->first, nullptr});
                work.push_back({nullptr, nullptr, std::next(it) == entries.rend() ? "/" : " /"});
            }
            out += "<<";
        } else if (t->IsType(kPdfKindStream)) {
            const auto* stream = static_cast<const P::PDFStream*>(t);
            work.push_back({nullptr, nullptr, "\nendstream"});
            work.push_back({nullptr, &stream->data, nullptr});
            work.push_back({nullptr, nullptr, " stream\n"});
            work.push_back({stream->dict, nullptr, nullptr});
        } else {
            out += t->ToString();
        }
    }
    return out;
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
    return ContainerText(this);
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
    return ContainerText(this);
}

std::string PDFParserTokens::PDFRef::ToString() const {
    return std::to_string(objectNumber) + " " + std::to_string(generation) + " R";
}

PDFParserTokens::PDFStream::~PDFStream() {
    if (dict)
        dict->Release();
}

std::string PDFParserTokens::PDFStream::ToString() const {
    return ContainerText(this);
}
