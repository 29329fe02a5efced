#pragma once
// The graphics state that the content-stream interpreter drives, with one virtual operation
// per drawing action. The base is a complete but silent state machine: it tracks matrix,
// path, colours and text position, and its painting operations do nothing. The output sink
// derives from it and reads the fields directly, so they are public on purpose.
//
// Only what is listed here is kept: no transparency, soft masks, overprint, ExtGState
// contents, text clipping, render modes, rise or horizontal scaling take effect.
#include "fonts/EncodingMap.h"
#include "graphics/PDFMatrix.h"
#include "graphics/PathElement.h"
#include "graphics/SharedPath.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

class PDFDocument;
class PDFToken;
struct OptionalContentGroup;
struct PDFImage;

// Character code to one UTF-16 unit, ordered by code: a font's ToUnicode table.
using ToUnicodeMap = std::map<std::uint32_t, char16_t>;
// A font's tables are made once per page and font name and shared, never copied: an Identity
// table has 65,536 entries and a page may select its font thousands of times. Null stands
// for an empty table.
using SharedToUnicodeMap = std::shared_ptr<const ToUnicodeMap>;
using SharedEncodingMap = std::shared_ptr<const EncodingMap>;

// Device-space box of the page's clip.
struct PDFClipBox {
    double xmin = 0.0;
    double xmax = 0.0;
    double ymin = 0.0;
    double ymax = 0.0;
};

// What q saves and Q restores, and nothing more: line style, dash, font, text spacing and
// leading survive a Q with their latest values, which the sink relies on. The clip path is
// shared with the state, not copied, so a frame costs the same whatever the clip.
struct PDFSavedFrame {
    PDFMatrix currentMatrix;
    SharedPath clipElements;
    std::uint64_t clipVersion = 0;
    PDFMatrix textMatrix;
    std::uint32_t fillColour = 0;
    std::uint32_t strokeColour = 0;
};

class PDFGraphicsState {
public:
    PDFGraphicsState() = default;
    PDFGraphicsState(const PDFGraphicsState&) = delete;
    PDFGraphicsState& operator=(const PDFGraphicsState&) = delete;

    // Takes ownership of the image; the base only destroys it.
    virtual void DrawImage(PDFImage* image);
    virtual ~PDFGraphicsState();

    virtual void SaveState();
    // An unbalanced Q (empty stack) changes nothing.
    virtual void RestoreState();
    virtual void SetMatrix(double a, double b, double c, double d, double e, double f);
    // The operand matrix is applied before the current one: M' × currentMatrix.
    virtual void ConcatMatrix(double a, double b, double c, double d, double e, double f);
    virtual void SetLineWidth(double width);
    virtual void SetLineCap(std::uint32_t cap);
    virtual void SetLineJoin(std::uint32_t join);
    virtual void SetMiterLimit(double limit);
    virtual void SetDash(std::uint32_t count, const double* lengths, double phase);
    virtual void SetRenderingIntent(const std::string& intent);
    // The ExtGState dictionary is never opened; only its name is kept.
    virtual void SetExtGStateName(const std::string& name);
    virtual void SetFlatness(double flatness);

    virtual void MoveTo(double x, double y);
    virtual void LineTo(double x, double y);
    virtual void CurveTo(double x1, double y1, double x2, double y2, double x3, double y3);
    virtual void ClosePath();
    virtual void Stroke();
    virtual void Fill();
    virtual void EoFill();
    // Replaces the clip by the current path; clips are never intersected, and the fill rule
    // is not kept.
    virtual void Clip(int evenOdd);
    // Empties the path; the clip stays.
    virtual void EndPath();
    virtual void AddPathElement(const PathElement& element);

    virtual void SetCharSpacing(double spacing);
    virtual void SetWordSpacing(double spacing);
    virtual void SetHorizontalScale(double scale);
    virtual void SetLeading(double value);
    virtual void SetTextRenderMode(int mode);
    virtual void SetFont(const std::string& name, double size, SharedToUnicodeMap toUnicode,
                         SharedEncodingMap encoding);
    virtual void SetTextRise(double rise);
    virtual void BeginText();
    // `start` is where pendingText begins along the line, in thousandths of fontSize.
    virtual void FlushTextRun(double start);
    virtual void MoveText(double tx, double ty);
    virtual void SetTextMatrix(double a, double b, double c, double d, double e, double f);
    // Decodes `bytes` into pendingText and adds their widths to `advance`.
    virtual void AppendText(const std::string& bytes, double& advance);
    // Through toUnicodeMap; false, with `advance` untouched, when a code has no entry.
    [[nodiscard]] virtual bool DecodeMappedText(const std::string& bytes, double& advance,
                                                std::u16string& out);
    // Without a ToUnicode table: one byte or one big-endian pair per character.
    [[nodiscard]] virtual bool DecodePlainText(const std::string& bytes, double& advance,
                                               std::u16string& out);

    // `properties` is owned by the call and released; the tag is not kept.
    virtual void MarkPoint(const std::string& tag, PDFToken* properties);
    // `properties` is owned by the call. Loads the document's groups on first need and names
    // the group of an OC tag.
    virtual void BeginMarkedContent(PDFDocument* document, const std::string& tag,
                                    PDFToken* properties);
    virtual void EndMarkedContent();
    // which: 0 fill, 1 stroke. Components are 0 to 1 and are clamped.
    virtual void SetColour(std::uint8_t which, double r, double g, double b);
    virtual void ColourChanged(std::uint32_t red, std::uint32_t green, std::uint32_t blue);
    virtual void SetOptionalContentName(const std::string& name);
    virtual void OptionalContentLoaded(const std::map<std::string, OptionalContentGroup>& groups);

    // Called with /MediaBox and then /CropBox, so the latter wins. Only the corners
    // (x0, y0) and (x1, y1) are transformed, so under rotation this is their diagonal's box.
    void SetClipBox(double x0, double y0, double x1, double y1);

    PDFClipBox clipBox;
    bool hasClipBox = false;
    PDFMatrix currentMatrix;
    std::vector<PathElement> pathElements;
    SharedPath clipElements; // set whole by Clip and SetClipBox, shared by saved frames
    // Changes whenever clipElements gets other contents, so that what is worked out from a
    // clip can be kept while it stays. Code that changes clipElements in place gives it a new
    // version from NewClipVersion().
    std::uint64_t clipVersion = 0;
    std::uint64_t NewClipVersion() { return ++clipVersionsIssued; }
    double lineWidth = 0.0;
    // In user space, except right after a ClosePath that appended a line (device space then).
    double currentX = 0.0;
    double currentY = 0.0;
    std::uint32_t lineCap = 0;
    std::uint32_t lineJoin = 0;
    double miterLimit = 0.0;
    double flatness = 0.0;
    std::vector<double> dashArray;
    double dashPhase = 0.0;
    std::string renderingIntent;
    std::string extGStateName;
    // Packed: red in the low byte, then green, then blue; top byte 0.
    std::uint32_t fillColour = 0;
    std::uint32_t strokeColour = 0;
    // There is no separate line matrix: Td and friends move this one.
    PDFMatrix textMatrix;
    std::string fontName;
    double fontSize = 0.0;
    std::string fontFamily;
    std::string fontRegistryOrdering;
    bool fontItalic = false;
    double fontHeightScale = 1.0;
    double fontBoxHeight = 1.0;
    double fontDescent = 0.0;
    double leading = 1.0; // 1, not 0, before any TL
    double charSpacing = 0.0;
    double wordSpacing = 0.0;
    double horizontalScale = 100.0;
    double missingWidth = 0.0;
    // Thousandths of the font size, by code.
    std::map<std::int32_t, double> widths;
    double averageWidth = 0.0;
    double largestWidth = 0.0;
    std::u16string pendingText;
    double textAdvance = 0.0; // thousandths of the font size
    double runStart = 0.0;    // the textAdvance at which pendingText begins
    std::vector<std::int32_t> layerStack;
    std::int32_t layerIndex = 0;
    std::string optionalContentName;
    bool paintingEnabled = true;
    std::vector<PDFSavedFrame> stateStack;
    // The current font's tables, shared with the interpreter; null when empty.
    SharedToUnicodeMap toUnicodeMap;
    SharedEncodingMap encodingMap;

private:
    void AppendPoint(double x, double y, char kind);

    std::uint64_t clipVersionsIssued = 0;
};
