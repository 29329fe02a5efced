#pragma once
// JSON written while it is produced, value by value, so that a report of any size needs no
// tree of itself in memory. Two layouts: compact (no white space at all), or for people and
// diff tools one key a line, with lists of plain values (a point, a colour, knots) on one line.
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

class JsonWriter {
public:
    // `indent` < 0 is compact. Text collects in a small buffer that goes to `out` (borrowed;
    // it must outlive the writer) whenever it fills.
    JsonWriter(std::ostream& out, int indent);
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    JsonWriter& BeginObject();
    JsonWriter& EndObject();
    JsonWriter& BeginArray();
    JsonWriter& EndArray();
    // The name of the next member of the object being written.
    JsonWriter& Key(std::string_view name);

    // Numbers round-trip exactly; one that is not finite is written as null.
    JsonWriter& Number(double value);
    JsonWriter& Integer(std::int64_t value);
    JsonWriter& Bool(bool value);
    JsonWriter& Null();
    // UTF-8 text; invalid bytes are replaced by U+FFFD.
    JsonWriter& String(std::string_view utf8);

    // Ends the text with a newline and hands the rest to the stream; true when all of it got
    // there.
    [[nodiscard]] bool Finish();

private:
    struct Frame {
        bool array = false;
        int count = 0;
        // An indented list that has held only plain values so far: whether it goes on one
        // line is known only at its end, so its values wait in m_pending.
        bool pending = false;
    };

    void BeforeValue(bool structured);
    void Scalar(std::string_view text, std::string_view more = {}, std::string_view last = {});
    void Write(std::string_view text);
    void NewLine(std::size_t depth);
    void FlushPending();
    void Spill();

    // The text of a number written lately, kept by the number's bits.
    struct NumberText {
        std::uint64_t bits = 0;
        std::uint8_t length = 0; // 0: nothing kept
        char text[31];
    };
    static constexpr std::size_t kNumberTexts = 4096;

    std::ostream& m_out; // borrowed
    int m_indent;
    std::vector<Frame> m_frames;
    std::string m_buffer;
    std::string m_pending;                  // the waiting values' text, one after another
    std::vector<std::size_t> m_pendingEnds; // where each of them ends in m_pending
    std::vector<NumberText> m_numbers = std::vector<NumberText>(kNumberTexts);
};
