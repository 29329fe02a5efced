#include "cli/DxfWriter.h"

#include "host/base/GK_String.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace {

// Text is handed to the stream in pieces of about this size.
constexpr std::size_t kSpillSize = 1 << 16;

} // namespace

DxfWriter::DxfWriter(std::ostream& out) : m_out(out) {
    m_buffer.reserve(kSpillSize + 4096);
}

void DxfWriter::BeginRecord() {
    // A record starts where the text that is sure to go out ends; what came before it may
    // go to the stream now.
    if (m_buffer.size() >= kSpillSize)
        Spill();
    m_recordStart = m_buffer.size();
    m_inRecord = true;
    m_recordSpoiled = false;
}

bool DxfWriter::EndRecord() {
    const bool kept = !m_recordSpoiled;
    if (!kept)
        m_buffer.resize(m_recordStart);
    m_inRecord = false;
    m_recordSpoiled = false;
    if (m_buffer.size() >= kSpillSize)
        Spill();
    return kept;
}

void DxfWriter::Code(int code) {
    // Group codes right-aligned in three columns, as DXF files traditionally have them.
    char buf[16];
    const int n = std::snprintf(buf, sizeof buf, "%3d\n", code);
    m_buffer.append(buf, static_cast<std::size_t>(n));
}

DxfWriter& DxfWriter::Int(int code, std::int64_t value) {
    Code(code);
    char buf[32];
    const auto r = std::to_chars(buf, buf + sizeof buf, value);
    m_buffer.append(buf, r.ptr);
    m_buffer += '\n';
    return *this;
}

DxfWriter& DxfWriter::Real(int code, double value) {
    if (!std::isfinite(value)) {
        if (m_inRecord)
            m_recordSpoiled = true;
        else
            m_failed = true;
        value = 0.0;
    }
    Code(code);
    m_buffer += DxfNumber(value);
    m_buffer += '\n';
    return *this;
}

DxfWriter& DxfWriter::Text(int code, std::string_view text) {
    Code(code);
    m_buffer += text;
    m_buffer += '\n';
    return *this;
}

DxfWriter& DxfWriter::Handle(int code, std::uint64_t handle) {
    Code(code);
    char buf[32];
    const auto r = std::to_chars(buf, buf + sizeof buf, handle, 16);
    for (char* p = buf; p != r.ptr; ++p)
        m_buffer += static_cast<char>(*p >= 'a' && *p <= 'f' ? *p - 'a' + 'A' : *p);
    m_buffer += '\n';
    return *this;
}

DxfWriter& DxfWriter::Point(int code, double x, double y, double z) {
    return Real(code, x).Real(code + 10, y).Real(code + 20, z);
}

DxfWriter& DxfWriter::Point2(int code, double x, double y) {
    return Real(code, x).Real(code + 10, y);
}

void DxfWriter::Spill() {
    const std::size_t keep = m_inRecord ? m_recordStart : m_buffer.size();
    m_out.write(m_buffer.data(), static_cast<std::streamsize>(keep));
    m_buffer.erase(0, keep);
    m_recordStart = 0;
}

bool DxfWriter::Finish() {
    m_inRecord = false;
    Spill();
    m_out.flush();
    return !m_failed && static_cast<bool>(m_out);
}

std::string DxfNumber(double value) {
    if (value == 0.0)
        return "0.0"; // no "-0.0": some readers take the sign for a separate token
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, value);
    std::string text(buf, r.ptr);
    const std::size_t e = text.find('e');
    if (text.find('.') == std::string::npos)
        text.insert(e == std::string::npos ? text.size() : e, ".0");
    return text;
}

std::string DxfText(std::wstring_view text) {
    std::wstring escaped;
    escaped.reserve(text.size());
    for (const wchar_t c : text) {
        if (c == L'^') {
            escaped += L"^ ";
        } else if (c >= 0 && c < 0x20) {
            escaped += L'^';
            escaped += static_cast<wchar_t>(c + 64);
        } else {
            escaped += c;
        }
    }
    return VmUtf8FromWide(escaped);
}
