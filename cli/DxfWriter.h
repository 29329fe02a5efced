#pragma once
// ASCII DXF written while it is produced, group by group: a group code on one line, its value
// on the next. Each record (a table entry, an entity, an object) is held until it is complete,
// so that a record with a number that is not finite never reaches the file: it is dropped
// whole, and the caller learns so from EndRecord.
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

class DxfWriter {
public:
    // Text collects in a buffer that goes to `out` (borrowed; it must outlive the writer)
    // whenever it fills.
    explicit DxfWriter(std::ostream& out);
    DxfWriter(const DxfWriter&) = delete;
    DxfWriter& operator=(const DxfWriter&) = delete;

    // Starts a record; its groups wait until EndRecord.
    void BeginRecord();
    // Ends the record: its text goes out, or nothing of it when a value was not finite.
    // Returns whether it went out.
    bool EndRecord();

    DxfWriter& Int(int code, std::int64_t value);
    // The shortest text that reads back as the same double. A value that is not finite spoils
    // the record (outside a record it is written as 0.0 and Finish reports failure).
    DxfWriter& Real(int code, double value);
    // `text` must be one line; DxfText makes any text so.
    DxfWriter& Text(int code, std::string_view text);
    DxfWriter& Handle(int code, std::uint64_t handle);
    // A point as the three groups code, code + 10, code + 20; Point2 only the first two.
    DxfWriter& Point(int code, double x, double y, double z);
    DxfWriter& Point2(int code, double x, double y);

    // Hands the rest to the stream; true when all of it got there and every number outside
    // records was finite.
    [[nodiscard]] bool Finish();

private:
    void Code(int code);
    void Spill();

    std::ostream& m_out; // borrowed
    std::string m_buffer;
    std::size_t m_recordStart = 0;
    bool m_inRecord = false;
    bool m_recordSpoiled = false;
    bool m_failed = false;
};

// A double as DXF readers take it: shortest round-trip form, always with a decimal point
// ("1.0", "2.5e-08"), in the classic notation whatever the locale.
std::string DxfNumber(double value);

// Wide text as the value of one group: UTF-8, control characters in caret notation ("^J"),
// a caret itself as "^ ", so that the value stays on its line and reads back unchanged.
std::string DxfText(std::wstring_view text);
