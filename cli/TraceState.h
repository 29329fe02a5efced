#pragma once
// `tarquil inspect trace`: a graphics state that notes every call the interpreter makes on it
// and then lets the base do its work, so the trace shows exactly what a sink would receive.
#include "graphics/PDFGraphicsState.h"

#include <string>
#include <vector>

// One printed value: rendered once as text and once as JSON from the same record, so the two
// forms cannot drift apart.
struct TraceValue {
    enum class Kind { Null, Number, Bool, Bytes, Word, Text, List };
    Kind kind = Kind::Null;
    double number = 0.0;
    bool flag = false;
    // Bytes: the PDF text form (any bytes); Word: plain ASCII; Text: UTF-8.
    std::string text;
    std::vector<TraceValue> items;

    static TraceValue Num(double value);
    static TraceValue Boolean(bool value);
    // A byte string, shown as a PDF string literal.
    static TraceValue ByteString(const std::string& bytes);
    // A token's own text form; null prints as null.
    static TraceValue Token(const PDFToken* token);
    static TraceValue Word(std::string word);
    static TraceValue Utf8(std::string text);
    static TraceValue List(std::vector<TraceValue> items);
};

struct TraceCall {
    std::string op;
    std::vector<TraceValue> args;
    std::vector<std::pair<std::string, TraceValue>> extras; // in the order printed
};

class TraceState : public PDFGraphicsState {
public:
    std::vector<TraceCall> calls;
    // The colour space whose operands are being applied, told by the interpreter; SetColour
    // shows it beside the resulting RGB.
    std::string colourSpace;

    // One line per call: "Op arg arg key=value ...", numbers as %g in the classic locale.
    std::string TextReport() const;
    // One JSON list of {"op", "args", extras...}; byte strings one byte per character.
    std::string JsonReport() const;

    void DrawImage(PDFImage* image) override;
    void SaveState() override;
    void RestoreState() override;
    void SetMatrix(double a, double b, double c, double d, double e, double f) override;
    void ConcatMatrix(double a, double b, double c, double d, double e, double f) override;
    void SetLineWidth(double width) override;
    void SetLineCap(std::uint32_t cap) override;
    void SetLineJoin(std::uint32_t join) override;
    void SetMiterLimit(double limit) override;
    void SetDash(std::uint32_t count, const double* lengths, double phase) override;
    void SetRenderingIntent(const std::string& intent) override;
    void SetExtGStateName(const std::string& name) override;
    void SetFlatness(double value) override;
    void MoveTo(double x, double y) override;
    void LineTo(double x, double y) override;
    void CurveTo(double x1, double y1, double x2, double y2, double x3, double y3) override;
    void ClosePath() override;
    void Stroke() override;
    void Fill() override;
    void EoFill() override;
    void Clip(int evenOdd) override;
    void EndPath() override;
    void AddPathElement(const PathElement& element) override;
    void SetCharSpacing(double spacing) override;
    void SetWordSpacing(double spacing) override;
    void SetHorizontalScale(double scale) override;
    void SetLeading(double value) override;
    void SetTextRenderMode(int mode) override;
    void SetFont(const std::string& name, double size, SharedToUnicodeMap toUnicode,
                 SharedEncodingMap encoding) override;
    void SetTextRise(double rise) override;
    void BeginText() override;
    void FlushTextRun(double start) override;
    void MoveText(double tx, double ty) override;
    void SetTextMatrix(double a, double b, double c, double d, double e, double f) override;
    void AppendText(const std::string& bytes, double& advance) override;
    bool DecodeMappedText(const std::string& bytes, double& advance, std::u16string& out) override;
    bool DecodePlainText(const std::string& bytes, double& advance, std::u16string& out) override;
    void MarkPoint(const std::string& tag, PDFToken* properties) override;
    void BeginMarkedContent(PDFDocument* document, const std::string& tag,
                            PDFToken* properties) override;
    void EndMarkedContent() override;
    void SetColour(std::uint8_t which, double r, double g, double b) override;
    void ColourChanged(std::uint32_t red, std::uint32_t green, std::uint32_t blue) override;
    void SetOptionalContentName(const std::string& name) override;
    void OptionalContentLoaded(const std::map<std::string, OptionalContentGroup>& groups) override;

private:
    TraceCall& Note(const char* op, std::vector<TraceValue> args = {});
    // The path and clip box, added to the last call before a painting operation runs.
    void NotePath(TraceCall& call) const;
};

// The UTF-16 text as UTF-8; an unpaired surrogate becomes U+FFFD.
std::string TraceUtf8(const std::u16string& text);
