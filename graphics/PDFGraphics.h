#pragma once
// The content-stream interpreter: the parser hands every bare word to ExecuteWord, which is
// the whole operator switch. Operators run to completion there and drive the graphics state.
// Nothing is validated: a missing operand reads as zero and an unknown word is skipped.
#include "fonts/EncodingMap.h"
#include "graphics/FontCache.h"
#include "graphics/PDFGraphicsState.h"
#include "pdf/parser/PDFParser.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// The numbers a function dictionary gives for one evaluation (graphics/colour).
struct FunctionValues;

class PDFGraphics : public PDFParser {
public:
    // All references are borrowed from the document. A page that is no dictionary leaves the
    // interpreter without resources and without a clip box.
    PDFGraphics(PDFDocument* document, PDFGraphicsState* state, PDFToken* page);

    [[nodiscard]] PDFStatus ExecuteWord(const std::string& word, PDFDocument* document) override;
    ~PDFGraphics() override;

    virtual void SetColorSpaceName(std::uint8_t which, const std::string& name);
    // Colour-space evaluation; they take their numbers from the operand stack.
    virtual void SetAlternateColour(PDFToken* alternate, std::uint8_t which, std::uint64_t count);
    virtual void ApplyColour(std::uint8_t which);
    // Fills fontToUnicode[name], fontEncoding[name] and the font fields of the state.
    virtual void LoadFont(const std::string& name);

    // A direct dictionary becomes the current resources and the old value is returned;
    // anything else (a reference or null included) changes nothing and returns the current.
    PDFToken* SwapResources(PDFToken* newResources);

    // Up to the first four bytes, big-endian: the key the operator switch goes by. No
    // operator is longer than three bytes, so a longer word matches nothing.
    static constexpr std::uint32_t PackOperator(std::string_view word) {
        std::uint32_t key = 0;
        for (std::size_t i = 0; i < word.size() && i < 4; ++i)
            key = (key << 8) | static_cast<unsigned char>(word[i]);
        return key;
    }

    PDFGraphicsState* state = nullptr;
    PDFToken* pageDict = nullptr;
    // The page's /Resources. It hides the parser's own CMap store of the same name, which a
    // content stream never uses.
    PDFToken* resources = nullptr;
    PDFToken* colorSpaceDict = nullptr;
    PDFToken* shadingDict = nullptr;
    PDFToken* fontDict = nullptr;
    PDFToken* swappedResources = nullptr;

    // Index 0 non-stroking, 1 stroking. Not saved by q: a cs inside q ... Q outlives the Q.
    std::string colorSpaceName[2];
    // Per font resource name, the tables that Tf hands to the state (shared, not copied).
    // Fonts read earlier in the import, shared by its pages (borrowed; null reads each font
    // every time it is named on a page).
    FontCache* fontCache = nullptr;
    std::map<std::string, SharedToUnicodeMap> fontToUnicode;
    std::map<std::string, SharedEncodingMap> fontEncoding;

    // Set when colour or image data are read past their end (the data contradict their own
    // dictionary, so nothing drawn from them can be trusted) or when saved states nest beyond
    // all reason. Every later word returns it, so the page's parse ends at once and the whole
    // read fails with it.
    PDFStatus readFailure = kPdfOk;

private:
    // Resolves `key` of the dictionary `dict` and gives it back if it is a dictionary.
    PDFToken* FindDict(PDFToken* dict, const std::string& key);
    void SetClipFrom(PDFToken* box);

    // One operator family each; they return false when the word is none of theirs.
    bool GeneralOp(std::uint32_t op);
    bool PathOp(std::uint32_t op);
    bool ColourOp(std::uint32_t op, std::uint8_t which);
    bool TextOp(std::uint32_t op);
    bool MarkedOp(std::uint32_t op, PDFDocument* document);

    void ShowTextArray();
    void EndInlineImage();

    // Colour spaces and tint transforms (graphics/colour).
    PDFToken* ColourSpaceResources();
    void ApplyColourAtDepth(std::uint8_t which, int depth);
    // An array alternate: Lab through its white point, any other family taking the first
    // value as red and the second as green and blue, the rest pushed back.
    void SetArrayAlternateColour(PDFToken* alternate, std::uint8_t which,
                                 const std::vector<double>& values, std::size_t count);
    void EvaluateTintTransform(PDFToken* function, PDFToken* alternate, std::uint8_t which);
    void EvaluateSampled(const FunctionValues& values, const std::string& data, PDFToken* alternate,
                         std::uint8_t which);
    void EvaluateExponential(const FunctionValues& values, PDFToken* dict, PDFToken* alternate,
                             std::uint8_t which);
    void EvaluateSingleInput(const FunctionValues& values, PDFToken* dict, PDFToken* alternate,
                             std::uint8_t which);
    void ShowShading();

    // External objects (graphics/PDFGraphicsXObjects.cpp, graphics/ImageXObject.cpp).
    void DoXObject();
    void DrawForm(PDFStream* form, PDFToken* keptResources);
    void DrawImageXObject(PDFStream* image, PDFToken* keptResources);
    int formDepth = 0;         // forms being drawn, one inside the other
    std::size_t formDraws = 0; // forms drawn on this page

    // The decoded samples of the last sampled function met (borrowed token): a page that
    // sets many tints of one space decodes them once.
    const PDFToken* tintSamplesOf = nullptr;
    std::string tintSamples;
};
