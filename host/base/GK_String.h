#pragma once
// Strings of the host: GK_wString is wide text for the user, GK_String a byte string.
#include <cstdarg>
#include <string>
#include <string_view>

class GK_String {
public:
    GK_String() = default;
    GK_String(const char* s) : m_s(s ? s : "") {}
    GK_String(std::string s) : m_s(std::move(s)) {}
    const char* Array() const { return m_s.c_str(); }
    int Length() const { return static_cast<int>(m_s.size()); }
    bool IsEmpty() const { return m_s.empty(); }
    const std::string& str() const { return m_s; }
    operator const char*() const { return m_s.c_str(); }

private:
    std::string m_s;
};

class GK_wString {
public:
    GK_wString() = default;
    GK_wString(const wchar_t* s) : m_s(s ? s : L"") {}
    GK_wString(std::wstring s) : m_s(std::move(s)) {}
    // A byte string becomes wide text by the host's conversion: UTF-8 when the bytes are
    // valid UTF-8, otherwise one byte one character (Latin-1).
    explicit GK_wString(const char* bytes);

    const wchar_t* Array() const { return m_s.c_str(); }
    int Length() const { return static_cast<int>(m_s.size()); }
    bool IsEmpty() const { return m_s.empty(); }
    void Empty() { m_s.clear(); }
    const std::wstring& str() const { return m_s; }
    std::wstring& str() { return m_s; }
    operator const wchar_t*() const { return m_s.c_str(); }
    bool operator==(const GK_wString& o) const { return m_s == o.m_s; }
    GK_wString& operator+=(const GK_wString& o) {
        m_s += o.m_s;
        return *this;
    }
    int CompareNoCase(const wchar_t* other) const;

    // printf-style formatting with the host's conventions: in a wide format "%s" and "%ls"
    // both take a wide string, "%hs" a byte string.
    bool Format(const wchar_t* format, ...);
    bool FormatVargs(const wchar_t* format, va_list args);
    void TrimLeftAndRight();

    // Loads a text from the string table of the module `instance`; false when there is none.
    bool LoadResourceString(void* instance, unsigned int id);

    // Splits a path into drive, directory, file name and extension (with its dot); any out
    // argument may be null.
    static void SplitPath(const wchar_t* path, GK_wString* drive, GK_wString* dir,
                          GK_wString* fname, GK_wString* ext);

private:
    std::wstring m_s;
};

// Conversions between wide text and UTF-8 bytes, independent of the C locale.
std::string VmUtf8FromWide(const std::wstring& text);
std::wstring VmWideFromUtf8(const std::string& bytes);
// Any bytes to wide text: UTF-8 if valid, else Latin-1.
std::wstring VmWideFromBytes(const std::string& bytes);
// UTF-16 text to wide text: surrogate pairs are joined, and a surrogate without its partner
// becomes U+FFFD.
std::wstring VmWideFromUtf16(std::u16string_view text);
// The same formatting as GK_wString::Format, into a std::wstring.
std::wstring VmFormatV(const wchar_t* format, va_list args);
std::wstring VmFormat(const wchar_t* format, ...);
