#pragma once
// A graphics state that notes every virtual call with its arguments and then lets the base
// do its work, so that tests see both the calls and the resulting state.
#include "graphics/PDFGraphicsState.h"
#include "graphics/PDFImage.h"

#include <locale>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tarquil::test {

class RecordingState : public PDFGraphicsState {
public:
    std::vector<std::string> calls;

    // Calls whose text starts with `prefix`.
    std::vector<std::string> Calls(const std::string& prefix) const {
        std::vector<std::string> found;
        for (const std::string& call : calls)
            if (call.rfind(prefix, 0) == 0)
                found.push_back(call);
        return found;
    }

    void DrawImage(PDFImage* image) override {
        Note("DrawImage", image ? image->width : -1);
        PDFGraphicsState::DrawImage(image);
    }
    void SaveState() override {
        Note("SaveState");
        PDFGraphicsState::SaveState();
    }
    void RestoreState() override {
        Note("RestoreState");
        PDFGraphicsState::RestoreState();
    }
    void SetMatrix(double a, double b, double c, double d, double e, double f) override {
        Note("SetMatrix", a, b, c, d, e, f);
        PDFGraphicsState::SetMatrix(a, b, c, d, e, f);
    }
    void ConcatMatrix(double a, double b, double c, double d, double e, double f) override {
        Note("ConcatMatrix", a, b, c, d, e, f);
        PDFGraphicsState::ConcatMatrix(a, b, c, d, e, f);
    }
    void SetLineWidth(double width) override {
        Note("SetLineWidth", width);
        PDFGraphicsState::SetLineWidth(width);
    }
    void SetLineCap(std::uint32_t cap) override {
        Note("SetLineCap", cap);
        PDFGraphicsState::SetLineCap(cap);
    }
    void SetLineJoin(std::uint32_t join) override {
        Note("SetLineJoin", join);
        PDFGraphicsState::SetLineJoin(join);
    }
    void SetMiterLimit(double limit) override {
        Note("SetMiterLimit", limit);
        PDFGraphicsState::SetMiterLimit(limit);
    }
    void SetDash(std::uint32_t count, const double* lengths, double phase) override {
        Note("SetDash", count, phase);
        PDFGraphicsState::SetDash(count, lengths, phase);
    }
    void SetRenderingIntent(const std::string& intent) override {
        Note("SetRenderingIntent", intent);
        PDFGraphicsState::SetRenderingIntent(intent);
    }
    void SetExtGStateName(const std::string& name) override {
        Note("SetExtGStateName", name);
        PDFGraphicsState::SetExtGStateName(name);
    }
    void SetFlatness(double value) override {
        Note("SetFlatness", value);
        PDFGraphicsState::SetFlatness(value);
    }
    void MoveTo(double x, double y) override {
        Note("MoveTo", x, y);
        PDFGraphicsState::MoveTo(x, y);
    }
    void LineTo(double x, double y) override {
        Note("LineTo", x, y);
        PDFGraphicsState::LineTo(x, y);
    }
    void CurveTo(double x1, double y1, double x2, double y2, double x3, double y3) override {
        Note("CurveTo", x1, y1, x2, y2, x3, y3);
        PDFGraphicsState::CurveTo(x1, y1, x2, y2, x3, y3);
    }
    void ClosePath() override {
        Note("ClosePath");
        PDFGraphicsState::ClosePath();
    }
    void Stroke() override {
        Note("Stroke");
        PDFGraphicsState::Stroke();
    }
    void Fill() override {
        Note("Fill");
        PDFGraphicsState::Fill();
    }
    void EoFill() override {
        Note("EoFill");
        PDFGraphicsState::EoFill();
    }
    void Clip(int evenOdd) override {
        Note("Clip", evenOdd);
        PDFGraphicsState::Clip(evenOdd);
    }
    void EndPath() override {
        Note("EndPath");
        PDFGraphicsState::EndPath();
    }
    void AddPathElement(const PathElement& element) override {
        Note("AddPathElement", element.x, element.y, std::string(1, element.kind));
        PDFGraphicsState::AddPathElement(element);
    }
    void SetCharSpacing(double spacing) override {
        Note("SetCharSpacing", spacing);
        PDFGraphicsState::SetCharSpacing(spacing);
    }
    void SetWordSpacing(double spacing) override {
        Note("SetWordSpacing", spacing);
        PDFGraphicsState::SetWordSpacing(spacing);
    }
    void SetHorizontalScale(double scale) override {
        Note("SetHorizontalScale", scale);
        PDFGraphicsState::SetHorizontalScale(scale);
    }
    void SetLeading(double value) override {
        Note("SetLeading", value);
        PDFGraphicsState::SetLeading(value);
    }
    void SetTextRenderMode(int mode) override {
        Note("SetTextRenderMode", mode);
        PDFGraphicsState::SetTextRenderMode(mode);
    }
    void SetFont(const std::string& name, double size, SharedToUnicodeMap toUnicode,
                 SharedEncodingMap encoding) override {
        Note("SetFont", name, size, toUnicode ? toUnicode->size() : 0,
             encoding ? encoding->size() : 0);
        PDFGraphicsState::SetFont(name, size, std::move(toUnicode), std::move(encoding));
    }
    void SetTextRise(double rise) override {
        Note("SetTextRise", rise);
        PDFGraphicsState::SetTextRise(rise);
    }
    void BeginText() override {
        Note("BeginText");
        PDFGraphicsState::BeginText();
    }
    // Also keeps the text that a sink would take at this moment.
    void FlushTextRun(double start) override {
        Note("FlushTextRun", start);
        flushedText.push_back(pendingText);
        PDFGraphicsState::FlushTextRun(start);
    }
    void MoveText(double tx, double ty) override {
        Note("MoveText", tx, ty);
        PDFGraphicsState::MoveText(tx, ty);
    }
    void SetTextMatrix(double a, double b, double c, double d, double e, double f) override {
        Note("SetTextMatrix", a, b, c, d, e, f);
        PDFGraphicsState::SetTextMatrix(a, b, c, d, e, f);
    }
    void AppendText(const std::string& bytes, double& advance) override {
        Note("AppendText", bytes.size(), advance);
        PDFGraphicsState::AppendText(bytes, advance);
    }
    bool DecodeMappedText(const std::string& bytes, double& advance, std::u16string& out) override {
        const bool ok = PDFGraphicsState::DecodeMappedText(bytes, advance, out);
        Note("DecodeMappedText", bytes.size(), ok);
        return ok;
    }
    bool DecodePlainText(const std::string& bytes, double& advance, std::u16string& out) override {
        const bool ok = PDFGraphicsState::DecodePlainText(bytes, advance, out);
        Note("DecodePlainText", bytes.size(), ok);
        return ok;
    }
    void MarkPoint(const std::string& tag, PDFToken* properties) override {
        Note("MarkPoint", tag, properties != nullptr);
        PDFGraphicsState::MarkPoint(tag, properties);
    }
    void BeginMarkedContent(PDFDocument* document, const std::string& tag,
                            PDFToken* properties) override {
        Note("BeginMarkedContent", tag, properties != nullptr);
        PDFGraphicsState::BeginMarkedContent(document, tag, properties);
    }
    void EndMarkedContent() override {
        Note("EndMarkedContent");
        PDFGraphicsState::EndMarkedContent();
    }
    void SetColour(std::uint8_t which, double r, double g, double b) override {
        Note("SetColour", static_cast<int>(which), r, g, b);
        PDFGraphicsState::SetColour(which, r, g, b);
    }
    void ColourChanged(std::uint32_t red, std::uint32_t green, std::uint32_t blue) override {
        Note("ColourChanged", red, green, blue);
        PDFGraphicsState::ColourChanged(red, green, blue);
    }
    void SetOptionalContentName(const std::string& name) override {
        Note("SetOptionalContentName", name);
        PDFGraphicsState::SetOptionalContentName(name);
    }
    void OptionalContentLoaded(const std::map<std::string, OptionalContentGroup>& groups) override {
        Note("OptionalContentLoaded", groups.size());
        PDFGraphicsState::OptionalContentLoaded(groups);
    }

    std::vector<std::u16string> flushedText;

private:
    // "Name a b c", numbers in the classic locale.
    template <typename... Args> void Note(const char* name, const Args&... args) {
        std::ostringstream text;
        text.imbue(std::locale::classic());
        text << name;
        ((text << ' ' << args), ...);
        calls.push_back(text.str());
    }
};

} // namespace tarquil::test
