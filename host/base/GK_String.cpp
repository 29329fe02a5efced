#include "host/base/GK_String.h"

#include "host/base/VmResources.h"

#include <cstdint>
#include <cwchar>
#include <cwctype>
#include <vector>

GK_wString::GK_wString(const char* bytes) : m_s(VmWideFromBytes(bytes ? bytes : "")) {}

int GK_wString::CompareNoCase(const wchar_t* other) const {
    const wchar_t* a = m_s.c_str();
    const wchar_t* b = other ? other : L"";
    for (;; ++a, ++b) {
        const wint_t ca = std::towlower(static_cast<wint_t>(*a));
        const wint_t cb = std::towlower(static_cast<wint_t>(*b));
        if (ca != cb)
            return ca < cb ? -1 : 1;
        if (ca == 0)
            return 0;
    }
}

bool GK_wString::Format(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const bool ok = FormatVargs(format, args);
    va_end(args);
    return ok;
}

bool GK_wString::FormatVargs(const wchar_t* format, va_list args) {
    m_s = VmFormatV(format, args);
    return true;
}

void GK_wString::TrimLeftAndRight() {
    std::size_t b = 0, e = m_s.size();
    while (b < e && std::iswspace(static_cast<wint_t>(m_s[b])))
        ++b;
    while (e > b && std::iswspace(static_cast<wint_t>(m_s[e - 1])))
        --e;
    m_s = m_s.substr(b, e - b);
}

bool GK_wString::LoadResourceString(void* instance, unsigned int id) {
    const wchar_t* text = VmFindResourceString(instance, id);
    if (!text)
        return false;
    m_s = text;
    return true;
}

void GK_wString::SplitPath(const wchar_t* path, GK_wString* drive, GK_wString* dir,
                           GK_wString* fname, GK_wString* ext) {
    const std::wstring p = path ? path : L"";
    std::size_t start = 0;
    if (p.size() >= 2 && p[1] == L':' && std::iswalpha(static_cast<wint_t>(p[0])))
        start = 2;
    if (drive)
        *drive = p.substr(0, start);
    const std::size_t slash = p.find_last_of(L"/\\");
    const std::size_t nameStart =
        (slash == std::wstring::npos || slash < start) ? start : slash + 1;
    if (dir)
        *dir = p.substr(start, nameStart - start);
    const std::wstring name = p.substr(nameStart);
    const std::size_t dot = name.find_last_of(L'.');
    if (fname)
        *fname = dot == std::wstring::npos ? name : name.substr(0, dot);
    if (ext)
        *ext = dot == std::wstring::npos ? std::wstring() : name.substr(dot);
}

namespace {

// Rewrites a format with the host's wide conventions to the C library's: a plain "%s"
// (a wide string on the host) becomes "%ls", "%hs" becomes "%s".
std::wstring TranslateFormat(const wchar_t* format) {
    std::wstring out;
    for (const wchar_t* p = format; *p; ++p) {
        out += *p;
        if (*p != L'%')
            continue;
        if (p[1] == L'%') {
            out += *++p;
            continue;
        }
        // Copy flags, width, precision; then look at the length modifier and conversion.
        while (p[1] && std::wcschr(L"-+ #0123456789.*", p[1]))
            out += *++p;
        if (p[1] == L'h' && p[2] == L's') {
            out += L's';
            p += 2;
        } else if (p[1] == L's' || p[1] == L'S') {
            out += L"ls";
            ++p;
        }
    }
    return out;
}

} // namespace

std::wstring VmFormatV(const wchar_t* format, va_list args) {
    if (!format)
        return {};
    const std::wstring fmt = TranslateFormat(format);
    std::vector<wchar_t> buf(256);
    for (;;) {
        va_list copy;
        va_copy(copy, args);
        const int n = std::vswprintf(buf.data(), buf.size(), fmt.c_str(), copy);
        va_end(copy);
        if (n >= 0 && static_cast<std::size_t>(n) < buf.size())
            return std::wstring(buf.data(), static_cast<std::size_t>(n));
        if (buf.size() > (1u << 24))
            return fmt; // a format that never fits: show it unformatted rather than loop
        buf.resize(buf.size() * 4);
    }
}

std::wstring VmFormat(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring s = VmFormatV(format, args);
    va_end(args);
    return s;
}

std::string VmUtf8FromWide(const std::wstring& text) {
    std::string out;
    out.reserve(text.size());
    for (wchar_t wc : text) {
        auto c = static_cast<std::uint32_t>(wc);
        if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
            c = 0xFFFD;
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

namespace {

// Decodes UTF-8; false at the first ill-formed sequence.
bool DecodeUtf8(const std::string& bytes, std::wstring& out) {
    out.clear();
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    for (std::size_t i = 0; i < n;) {
        const unsigned char b = s[i];
        std::uint32_t c;
        int extra;
        if (b < 0x80) {
            c = b;
            extra = 0;
        } else if (b >= 0xC2 && b <= 0xDF) {
            c = b & 0x1F;
            extra = 1;
        } else if (b >= 0xE0 && b <= 0xEF) {
            c = b & 0x0F;
            extra = 2;
        } else if (b >= 0xF0 && b <= 0xF4) {
            c = b & 0x07;
            extra = 3;
        } else {
            return false;
        }
        if (i + static_cast<std::size_t>(extra) >= n && extra > 0)
            return false; // sequence cut off by the end
        for (int k = 1; k <= extra; ++k) {
            const unsigned char t = s[i + k];
            if ((t & 0xC0) != 0x80)
                return false;
            c = (c << 6) | (t & 0x3F);
        }
        const std::uint32_t minimum[] = {0, 0x80, 0x800, 0x10000};
        if (c < minimum[extra] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
            return false;
        out += static_cast<wchar_t>(c);
        i += static_cast<std::size_t>(extra) + 1;
    }
    return true;
}

} // namespace

std::wstring VmWideFromUtf8(const std::string& bytes) {
    std::wstring out;
    if (DecodeUtf8(bytes, out))
        return out;
    // Replace what cannot be decoded rather than lose the whole text.
    out.clear();
    for (unsigned char b : bytes)
        out += b < 0x80 ? static_cast<wchar_t>(b) : L'\xFFFD';
    return out;
}

std::wstring VmWideFromBytes(const std::string& bytes) {
    std::wstring out;
    if (DecodeUtf8(bytes, out))
        return out;
    out.clear();
    for (unsigned char b : bytes)
        out += static_cast<wchar_t>(b);
    return out;
}

std::wstring VmWideFromUtf16(std::u16string_view text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            out += static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00));
            ++i;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            out += static_cast<wchar_t>(0xFFFD);
        } else {
            out += static_cast<wchar_t>(unit);
        }
    }
    return out;
}
