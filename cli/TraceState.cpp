#include "cli/TraceState.h"

#include "host/base/GK_String.h"

#include "cli/InspectSupport.h"

#include "graphics/PDFImage.h"
#include "pdf/token/PDFTokens.h"
#include "pdf/xref/PDFDocument.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <utility>

namespace {

// Ordered, so that "op" and "args" lead each call as written.
using json = nlohmann::ordered_json;

// %g with six digits, independent of the C locale.
std::string Number(double value) {
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6);
    return std::string(buffer, result.ptr);
}

std::string Render(const TraceValue& value) {
    switch (value.kind) {
    case TraceValue::Kind::Null:
        return "null";
    case TraceValue::Kind::Number:
        return Number(value.number);
    case TraceValue::Kind::Bool:
        return value.flag ? "true" : "false";
    case TraceValue::Kind::Bytes:
    case TraceValue::Kind::Word:
        return value.text;
    case TraceValue::Kind::Text:
        // Quoted, so that spaces and line breaks in the text keep the call on one line.
        return json(value.text).dump(-1, ' ', false, json::error_handler_t::replace);
    case TraceValue::Kind::List: {
        std::string out = "[";
        for (std::size_t i = 0; i < value.items.size(); ++i) {
            if (i)
                out += ' ';
            out += Render(value.items[i]);
        }
        out += ']';
        return out;
    }
    }
    return {};
}

json ToJson(const TraceValue& value) {
    switch (value.kind) {
    case TraceValue::Kind::Null:
        return nullptr;
    case TraceValue::Kind::Number:
        return value.number;
    case TraceValue::Kind::Bool:
        return value.flag;
    case TraceValue::Kind::Bytes:
        return BytesAsLatin1Utf8(value.text);
    case TraceValue::Kind::Word:
    case TraceValue::Kind::Text:
        return value.text;
    case TraceValue::Kind::List: {
        json list = json::array();
        for (const TraceValue& item : value.items)
            list.push_back(ToJson(item));
        return list;
    }
    }
    return nullptr;
}

TraceValue Matrix(const PDFMatrix& m) {
    return TraceValue::List({TraceValue::Num(m.a), TraceValue::Num(m.b), TraceValue::Num(m.c),
                             TraceValue::Num(m.d), TraceValue::Num(m.e), TraceValue::Num(m.f)});
}

std::vector<TraceValue> Nums(std::initializer_list<double> values) {
    std::vector<TraceValue> out;
    for (double value : values)
        out.push_back(TraceValue::Num(value));
    return out;
}

} // namespace

TraceValue TraceValue::Num(double value) {
    TraceValue v;
    v.kind = Kind::Number;
    v.number = value;
    return v;
}

TraceValue TraceValue::Boolean(bool value) {
    TraceValue v;
    v.kind = Kind::Bool;
    v.flag = value;
    return v;
}

TraceValue TraceValue::ByteString(const std::string& bytes) {
    TraceValue v;
    v.kind = Kind::Bytes;
    v.text = PDFParserTokens::PDFString(bytes).ToString();
    return v;
}

TraceValue TraceValue::Token(const PDFToken* token) {
    TraceValue v;
    if (token) {
        v.kind = Kind::Bytes;
        v.text = token->ToString();
    }
    return v;
}

TraceValue TraceValue::Word(std::string word) {
    TraceValue v;
    v.kind = Kind::Word;
    v.text = std::move(word);
    return v;
}

TraceValue TraceValue::Utf8(std::string text) {
    TraceValue v;
    v.kind = Kind::Text;
    v.text = std::move(text);
    return v;
}

TraceValue TraceValue::List(std::vector<TraceValue> items) {
    TraceValue v;
    v.kind = Kind::List;
    v.items = std::move(items);
    return v;
}

std::string TraceUtf8(const std::u16string& text) {
    // Pairs of surrogates join into one character; a lone one stands for U+FFFD (the
    // host's encoder replaces it so).
    std::wstring wide;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        }
        wide += static_cast<wchar_t>(c);
    }
    return VmUtf8FromWide(wide);
}

std::string TraceState::TextReport() const {
    std::string out;
    for (const TraceCall& call : calls) {
        out += call.op;
        // Appended piece by piece: GCC 12 at -O3 warns falsely on " " + temporary.
        for (const TraceValue& arg : call.args) {
            out += ' ';
            out += Render(arg);
        }
        for (const auto& [key, value] : call.extras) {
            out += ' ';
            out += key;
            out += '=';
            out += Render(value);
        }
        out += '\n';
    }
    return out;
}

std::string TraceState::JsonReport() const {
    json list = json::array();
    for (const TraceCall& call : calls) {
        json entry = json::object();
        entry["op"] = call.op;
        json args = json::array();
        for (const TraceValue& arg : call.args)
            args.push_back(ToJson(arg));
        entry["args"] = args;
        for (const auto& [key, value] : call.extras)
            entry[key] = ToJson(value);
        list.push_back(entry);
    }
    // Every string here is valid UTF-8 by construction; replacing keeps a slip from
    // losing the whole trace to an exception.
    return list.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

TraceCall& TraceState::Note(const char* op, std::vector<TraceValue> args) {
    calls.push_back({op, std::move(args), {}});
    return calls.back();
}

void TraceState::NotePath(TraceCall& call) const {
    std::vector<TraceValue> path;
    for (const PathElement& element : pathElements)
        path.push_back(TraceValue::List({TraceValue::Word(std::string(1, element.kind)),
                                         TraceValue::Num(element.x), TraceValue::Num(element.y)}));
    call.extras.emplace_back("path", TraceValue::List(std::move(path)));
    if (hasClipBox)
        call.extras.emplace_back("clipBox", TraceValue::List(Nums({clipBox.xmin, clipBox.ymin,
                                                                   clipBox.xmax, clipBox.ymax})));
}

void TraceState::DrawImage(PDFImage* image) {
    TraceCall& call = Note("DrawImage", {TraceValue::Boolean(image != nullptr)});
    if (image) {
        call.extras.emplace_back("width", TraceValue::Num(image->width));
        call.extras.emplace_back("height", TraceValue::Num(image->height));
        call.extras.emplace_back("bitsPerComponent", TraceValue::Num(image->bitsPerComponent));
        call.extras.emplace_back("colorSpace", TraceValue::ByteString(image->colorSpace));
        call.extras.emplace_back("dataLength",
                                 TraceValue::Num(static_cast<double>(image->data.size())));
        std::vector<TraceValue> corners;
        for (const auto& corner : image->corners)
            corners.push_back(TraceValue::List(Nums({corner[0], corner[1]})));
        call.extras.emplace_back("corners", TraceValue::List(std::move(corners)));
    }
    PDFGraphicsState::DrawImage(image);
}

void TraceState::SaveState() {
    Note("SaveState");
    PDFGraphicsState::SaveState();
}

void TraceState::RestoreState() {
    Note("RestoreState");
    PDFGraphicsState::RestoreState();
}

void TraceState::SetMatrix(double a, double b, double c, double d, double e, double f) {
    Note("SetMatrix", Nums({a, b, c, d, e, f}));
    PDFGraphicsState::SetMatrix(a, b, c, d, e, f);
}

void TraceState::ConcatMatrix(double a, double b, double c, double d, double e, double f) {
    Note("ConcatMatrix", Nums({a, b, c, d, e, f}));
    PDFGraphicsState::ConcatMatrix(a, b, c, d, e, f);
}

void TraceState::SetLineWidth(double width) {
    Note("SetLineWidth", Nums({width}));
    PDFGraphicsState::SetLineWidth(width);
}

void TraceState::SetLineCap(std::uint32_t cap) {
    Note("SetLineCap", Nums({static_cast<double>(cap)}));
    PDFGraphicsState::SetLineCap(cap);
}

void TraceState::SetLineJoin(std::uint32_t join) {
    Note("SetLineJoin", Nums({static_cast<double>(join)}));
    PDFGraphicsState::SetLineJoin(join);
}

void TraceState::SetMiterLimit(double limit) {
    Note("SetMiterLimit", Nums({limit}));
    PDFGraphicsState::SetMiterLimit(limit);
}

void TraceState::SetDash(std::uint32_t count, const double* lengths, double phase) {
    std::vector<TraceValue> dashes;
    for (std::uint32_t i = 0; lengths && i < count; ++i)
        dashes.push_back(TraceValue::Num(lengths[i]));
    Note("SetDash",
         {TraceValue::Num(count), TraceValue::List(std::move(dashes)), TraceValue::Num(phase)});
    PDFGraphicsState::SetDash(count, lengths, phase);
}

void TraceState::SetRenderingIntent(const std::string& intent) {
    Note("SetRenderingIntent", {TraceValue::ByteString(intent)});
    PDFGraphicsState::SetRenderingIntent(intent);
}

void TraceState::SetExtGStateName(const std::string& name) {
    Note("SetExtGStateName", {TraceValue::ByteString(name)});
    PDFGraphicsState::SetExtGStateName(name);
}

void TraceState::SetFlatness(double value) {
    Note("SetFlatness", Nums({value}));
    PDFGraphicsState::SetFlatness(value);
}

void TraceState::MoveTo(double x, double y) {
    Note("MoveTo", Nums({x, y}));
    PDFGraphicsState::MoveTo(x, y);
}

void TraceState::LineTo(double x, double y) {
    Note("LineTo", Nums({x, y}));
    PDFGraphicsState::LineTo(x, y);
}

void TraceState::CurveTo(double x1, double y1, double x2, double y2, double x3, double y3) {
    Note("CurveTo", Nums({x1, y1, x2, y2, x3, y3}));
    PDFGraphicsState::CurveTo(x1, y1, x2, y2, x3, y3);
}

void TraceState::ClosePath() {
    Note("ClosePath");
    PDFGraphicsState::ClosePath();
}

void TraceState::Stroke() {
    NotePath(Note("Stroke"));
    PDFGraphicsState::Stroke();
}

void TraceState::Fill() {
    NotePath(Note("Fill"));
    PDFGraphicsState::Fill();
}

void TraceState::EoFill() {
    NotePath(Note("EoFill"));
    PDFGraphicsState::EoFill();
}

void TraceState::Clip(int evenOdd) {
    NotePath(Note("Clip", Nums({static_cast<double>(evenOdd)})));
    PDFGraphicsState::Clip(evenOdd);
}

void TraceState::EndPath() {
    Note("EndPath");
    PDFGraphicsState::EndPath();
}

void TraceState::AddPathElement(const PathElement& element) {
    Note("AddPathElement", {TraceValue::Word(std::string(1, element.kind)),
                            TraceValue::Num(element.x), TraceValue::Num(element.y)});
    PDFGraphicsState::AddPathElement(element);
}

void TraceState::SetCharSpacing(double spacing) {
    Note("SetCharSpacing", Nums({spacing}));
    PDFGraphicsState::SetCharSpacing(spacing);
}

void TraceState::SetWordSpacing(double spacing) {
    Note("SetWordSpacing", Nums({spacing}));
    PDFGraphicsState::SetWordSpacing(spacing);
}

void TraceState::SetHorizontalScale(double scale) {
    Note("SetHorizontalScale", Nums({scale}));
    PDFGraphicsState::SetHorizontalScale(scale);
}

void TraceState::SetLeading(double value) {
    Note("SetLeading", Nums({value}));
    PDFGraphicsState::SetLeading(value);
}

void TraceState::SetTextRenderMode(int mode) {
    Note("SetTextRenderMode", Nums({static_cast<double>(mode)}));
    PDFGraphicsState::SetTextRenderMode(mode);
}

void TraceState::SetFont(const std::string& name, double size, SharedToUnicodeMap toUnicode,
                         SharedEncodingMap encoding) {
    // The tables are shown by their sizes: their entries would swamp the trace.
    Note("SetFont", {TraceValue::ByteString(name), TraceValue::Num(size),
                     TraceValue::Num(toUnicode ? static_cast<double>(toUnicode->size()) : 0.0),
                     TraceValue::Num(encoding ? static_cast<double>(encoding->size()) : 0.0)});
    PDFGraphicsState::SetFont(name, size, std::move(toUnicode), std::move(encoding));
}

void TraceState::SetTextRise(double rise) {
    Note("SetTextRise", Nums({rise}));
    PDFGraphicsState::SetTextRise(rise);
}

void TraceState::BeginText() {
    Note("BeginText");
    PDFGraphicsState::BeginText();
}

void TraceState::FlushTextRun(double start) {
    TraceCall& call = Note("FlushTextRun", Nums({start}));
    call.extras.emplace_back("pendingText", TraceValue::Utf8(TraceUtf8(pendingText)));
    call.extras.emplace_back("textMatrix", Matrix(textMatrix));
    call.extras.emplace_back("currentMatrix", Matrix(currentMatrix));
    call.extras.emplace_back("fontSize", TraceValue::Num(fontSize));
    call.extras.emplace_back("fontHeightScale", TraceValue::Num(fontHeightScale));
    call.extras.emplace_back("fontFamily", TraceValue::ByteString(fontFamily));
    PDFGraphicsState::FlushTextRun(start);
}

void TraceState::MoveText(double tx, double ty) {
    Note("MoveText", Nums({tx, ty}));
    PDFGraphicsState::MoveText(tx, ty);
}

void TraceState::SetTextMatrix(double a, double b, double c, double d, double e, double f) {
    Note("SetTextMatrix", Nums({a, b, c, d, e, f}));
    PDFGraphicsState::SetTextMatrix(a, b, c, d, e, f);
}

void TraceState::AppendText(const std::string& bytes, double& advance) {
    Note("AppendText", {TraceValue::ByteString(bytes), TraceValue::Num(advance)});
    PDFGraphicsState::AppendText(bytes, advance);
}

// The decoders' outcome is only known after the base has run, so it is added to the call
// noted beforehand (by index: the base may note further calls).
bool TraceState::DecodeMappedText(const std::string& bytes, double& advance, std::u16string& out) {
    const std::size_t index = calls.size();
    Note("DecodeMappedText", {TraceValue::ByteString(bytes), TraceValue::Num(advance)});
    const bool ok = PDFGraphicsState::DecodeMappedText(bytes, advance, out);
    calls[index].extras.emplace_back("ok", TraceValue::Boolean(ok));
    return ok;
}

bool TraceState::DecodePlainText(const std::string& bytes, double& advance, std::u16string& out) {
    const std::size_t index = calls.size();
    Note("DecodePlainText", {TraceValue::ByteString(bytes), TraceValue::Num(advance)});
    const bool ok = PDFGraphicsState::DecodePlainText(bytes, advance, out);
    calls[index].extras.emplace_back("ok", TraceValue::Boolean(ok));
    return ok;
}

void TraceState::MarkPoint(const std::string& tag, PDFToken* properties) {
    Note("MarkPoint", {TraceValue::ByteString(tag), TraceValue::Token(properties)});
    PDFGraphicsState::MarkPoint(tag, properties);
}

void TraceState::BeginMarkedContent(PDFDocument* document, const std::string& tag,
                                    PDFToken* properties) {
    Note("BeginMarkedContent", {TraceValue::ByteString(tag), TraceValue::Token(properties)});
    PDFGraphicsState::BeginMarkedContent(document, tag, properties);
}

void TraceState::EndMarkedContent() {
    Note("EndMarkedContent");
    PDFGraphicsState::EndMarkedContent();
}

void TraceState::SetColour(std::uint8_t which, double r, double g, double b) {
    const std::size_t index = calls.size();
    Note("SetColour", Nums({static_cast<double>(which), r, g, b}));
    PDFGraphicsState::SetColour(which, r, g, b);
    const std::uint32_t packed = which == 0 ? fillColour : strokeColour;
    TraceCall& call = calls[index];
    call.extras.emplace_back("space", TraceValue::ByteString(colourSpace));
    call.extras.emplace_back("rgb", TraceValue::List({TraceValue::Num(packed & 0xff),
                                                      TraceValue::Num((packed >> 8) & 0xff),
                                                      TraceValue::Num((packed >> 16) & 0xff)}));
}

void TraceState::ColourChanged(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    Note("ColourChanged",
         Nums({static_cast<double>(red), static_cast<double>(green), static_cast<double>(blue)}));
    PDFGraphicsState::ColourChanged(red, green, blue);
}

void TraceState::SetOptionalContentName(const std::string& name) {
    Note("SetOptionalContentName", {TraceValue::ByteString(name)});
    PDFGraphicsState::SetOptionalContentName(name);
}

void TraceState::OptionalContentLoaded(const std::map<std::string, OptionalContentGroup>& groups) {
    // The groups by name; their contents belong to `inspect object`.
    std::vector<TraceValue> names;
    for (const auto& entry : groups)
        names.push_back(TraceValue::ByteString(entry.first));
    Note("OptionalContentLoaded", {TraceValue::List(std::move(names))});
    PDFGraphicsState::OptionalContentLoaded(groups);
}
