#include "cli/JsonWriter.h"

#include <nlohmann/json.hpp>

#include <bit>
#include <charconv>
#include <cmath>

namespace {

// Text is handed to the stream in pieces of about this size.
constexpr std::size_t kSpillSize = 1 << 16;

// Printable ASCII without a quote or a backslash comes out of the escaper unchanged.
bool NeedsNoEscape(std::string_view text) {
    for (const char c : text)
        if (c < 0x20 || c > 0x7e || c == '"' || c == '\\')
            return false;
    return true;
}

} // namespace

JsonWriter::JsonWriter(std::ostream& out, int indent) : m_out(out), m_indent(indent) {
    m_buffer.reserve(kSpillSize + 1024);
}

void JsonWriter::Write(std::string_view text) {
    m_buffer.append(text);
    if (m_buffer.size() >= kSpillSize)
        Spill();
}

void JsonWriter::Spill() {
    m_out.write(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
    m_buffer.clear();
}

void JsonWriter::NewLine(std::size_t depth) {
    m_buffer += '\n';
    m_buffer.append(static_cast<std::size_t>(m_indent) * depth, ' ');
}

// The values of a list that turned out to hold more than plain values go one a line after all.
void JsonWriter::FlushPending() {
    Frame& frame = m_frames.back();
    const std::size_t depth = m_frames.size();
    Write("[");
    std::size_t begin = 0;
    for (std::size_t i = 0; i < m_pendingEnds.size(); ++i) {
        if (i > 0)
            Write(",");
        NewLine(depth);
        Write(std::string_view(m_pending).substr(begin, m_pendingEnds[i] - begin));
        begin = m_pendingEnds[i];
    }
    m_pending.clear();
    m_pendingEnds.clear();
    frame.pending = false;
}

void JsonWriter::BeforeValue(bool structured) {
    if (m_frames.empty())
        return;
    Frame& frame = m_frames.back();
    if (!frame.array)
        return; // the key came first
    if (m_indent < 0) {
        if (frame.count++ > 0)
            Write(",");
        return;
    }
    if (frame.pending) {
        if (!structured)
            return; // the value waits with the others
        FlushPending();
    }
    if (frame.count++ > 0)
        Write(",");
    NewLine(m_frames.size());
}

// A plain value, given in up to three pieces that are written one after the other.
void JsonWriter::Scalar(std::string_view text, std::string_view more, std::string_view last) {
    BeforeValue(false);
    if (!m_frames.empty() && m_frames.back().pending) {
        ++m_frames.back().count;
        m_pending.append(text).append(more).append(last);
        m_pendingEnds.push_back(m_pending.size());
        return;
    }
    m_buffer.append(text).append(more).append(last);
    if (m_buffer.size() >= kSpillSize)
        Spill();
}

JsonWriter& JsonWriter::BeginObject() {
    BeforeValue(true);
    m_frames.push_back({false, 0, false});
    // Indented, the brace waits for the first key: an empty object stays on its line.
    if (m_indent < 0)
        Write("{");
    return *this;
}

JsonWriter& JsonWriter::EndObject() {
    const Frame frame = m_frames.back();
    m_frames.pop_back();
    if (m_indent < 0)
        Write("}");
    else if (frame.count == 0)
        Write("{}");
    else {
        NewLine(m_frames.size());
        Write("}");
    }
    return *this;
}

JsonWriter& JsonWriter::BeginArray() {
    BeforeValue(true);
    m_frames.push_back({true, 0, m_indent >= 0});
    if (m_indent < 0)
        Write("[");
    return *this;
}

JsonWriter& JsonWriter::EndArray() {
    const Frame frame = m_frames.back();
    if (frame.pending) {
        Write("[");
        std::size_t begin = 0;
        for (std::size_t i = 0; i < m_pendingEnds.size(); ++i) {
            if (i > 0)
                Write(", ");
            Write(std::string_view(m_pending).substr(begin, m_pendingEnds[i] - begin));
            begin = m_pendingEnds[i];
        }
        Write("]");
        m_pending.clear();
        m_pendingEnds.clear();
        m_frames.pop_back();
        return *this;
    }
    m_frames.pop_back();
    if (m_indent >= 0 && frame.count > 0)
        NewLine(m_frames.size());
    Write("]");
    return *this;
}

JsonWriter& JsonWriter::Key(std::string_view name) {
    Frame& frame = m_frames.back();
    if (m_indent < 0) {
        if (frame.count++ > 0)
            Write(",");
    } else {
        Write(frame.count++ > 0 ? "," : "{");
        NewLine(m_frames.size());
    }
    String(name);
    // String went through Scalar, which does nothing before a value inside an object.
    Write(m_indent < 0 ? ":" : ": ");
    return *this;
}

JsonWriter& JsonWriter::Number(double value) {
    if (!std::isfinite(value))
        return Null();
    // The library's own shortest round-trip form, so that this text is the one a parsed
    // and dumped copy would have. Drawings repeat their coordinates (a vertex shared by
    // neighbouring faces, a loop's start at its end), so the text of recent values is kept
    // by their bits.
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(value);
    NumberText& entry = m_numbers[(bits ^ (bits >> 29) ^ (bits >> 43)) & (kNumberTexts - 1)];
    if (entry.length == 0 || entry.bits != bits) {
        char* end = nlohmann::detail::to_chars(entry.text, entry.text + sizeof entry.text, value);
        entry.bits = bits;
        entry.length = static_cast<std::uint8_t>(end - entry.text);
    }
    Scalar(std::string_view(entry.text, entry.length));
    return *this;
}

JsonWriter& JsonWriter::Integer(std::int64_t value) {
    char text[24];
    const auto result = std::to_chars(text, text + sizeof text, value);
    Scalar(std::string_view(text, static_cast<std::size_t>(result.ptr - text)));
    return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
    Scalar(value ? "true" : "false");
    return *this;
}

JsonWriter& JsonWriter::Null() {
    Scalar("null");
    return *this;
}

JsonWriter& JsonWriter::String(std::string_view utf8) {
    if (NeedsNoEscape(utf8)) {
        Scalar("\"", utf8, "\"");
        return *this;
    }
    // Escapes and the replacement of broken UTF-8 exactly as the library does them.
    Scalar(nlohmann::json(std::string(utf8))
               .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    return *this;
}

bool JsonWriter::Finish() {
    Write("\n");
    Spill();
    m_out.flush();
    return static_cast<bool>(m_out);
}
