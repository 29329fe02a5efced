// Tint transforms of Separation spaces, evaluated inline while a colour operator runs, and
// the sh operator. Only sampled (type 0) and exponential (type 2) functions are evaluated;
// a sampled function takes the nearest sample by its rounded linear position, without
// interpolation. Shadings are looked up and paint nothing.
#include "filters/FilterPipeline.h"
#include "graphics/PDFGraphics.h"
#include "pdf/token/PDFTokens.h"

#include <cmath>
#include <cstdint>
#include <vector>

struct FunctionValues {
    std::int32_t functionType = -1;
    std::vector<double> domain; // m inputs: its whole pairs
    std::vector<double> range;  // n outputs: its whole pairs
    std::vector<std::int64_t> sizes;
    std::vector<std::int64_t> encode; // integers: a fraction is cut off
    std::int32_t bitsPerSample = 0;
};

namespace {

using Tokens = PDFParserTokens;

// Inputs times outputs beyond which a sampled function is left alone, like one the system
// cannot evaluate. Real tint transforms have one input and a handful of outputs; without a
// bound, two arrays of a million numbers each would cost 10^12 steps per colour operator.
constexpr std::size_t kMaxSampledSteps = std::size_t{1} << 20;

// The value of `key`, resolved, when it is an array; else null.
const Tokens::PDFArray* ArrayOf(PDFParser& parser, const PDFToken* dict, const char* key) {
    PDFToken* value = nullptr;
    if (parser.Resolve(static_cast<const Tokens::PDFDict*>(dict)->Find(key), &value) != kPdfOk ||
        !value || !value->IsType(kPdfKindArray))
        return nullptr;
    return static_cast<const Tokens::PDFArray*>(value);
}

std::vector<double> Floats(PDFParser& parser, const PDFToken* dict, const char* key) {
    std::vector<double> values;
    if (const Tokens::PDFArray* array = ArrayOf(parser, dict, key))
        for (const PDFToken* item : array->items)
            values.push_back(item->GetFloat(0.0));
    return values;
}

std::vector<std::int64_t> Integers(PDFParser& parser, const PDFToken* dict, const char* key) {
    std::vector<std::int64_t> values;
    if (const Tokens::PDFArray* array = ArrayOf(parser, dict, key))
        for (const PDFToken* item : array->items)
            values.push_back(item->GetInteger(0));
    return values;
}

template <typename T> T At(const std::vector<T>& values, std::size_t index) {
    return index < values.size() ? values[index] : T{};
}

// Clamped to [low, high] as two comparisons, so that a reversed interval is defined too.
double Clamp(double value, double low, double high) {
    if (value < low)
        value = low;
    if (value > high)
        value = high;
    return value;
}

// 2^bits - 1 in 32 bits: widths of 32 and more give all ones, widths below 1 give 0.
double MaxSampleValue(std::int32_t bits) {
    if (bits <= 0)
        return 0.0;
    if (bits >= 32)
        return 4294967295.0;
    return static_cast<double>((std::uint32_t{1} << bits) - 1u);
}

} // namespace

void PDFGraphics::EvaluateTintTransform(PDFToken* function, PDFToken* alternate,
                                        std::uint8_t which) {
    // Neither stream nor dictionary: nothing to evaluate, colour and operands stay.
    if (!function)
        return;
    const bool isStream = function->IsType(kPdfKindStream);
    PDFToken* dict = nullptr;
    if (isStream)
        dict = static_cast<PDFStream*>(function)->dict;
    else if (function->IsType(kPdfKindDict))
        dict = function;
    if (!dict)
        return;

    FunctionValues values;
    if (const PDFToken* type = static_cast<PDFDict*>(dict)->Find("FunctionType"))
        values.functionType = type->GetInteger(-1);
    values.domain = Floats(*this, dict, "Domain");
    values.range = Floats(*this, dict, "Range");
    if (isStream) {
        values.sizes = Integers(*this, dict, "Size");
        values.encode = Integers(*this, dict, "Encode");
        if (const PDFToken* bits = static_cast<PDFDict*>(dict)->Find("BitsPerSample"))
            values.bitsPerSample = bits->GetInteger(0);
        // /Decode is read by nothing: outputs are decoded by /Range alone. The samples of
        // the last function are kept, so a page of many tints of one space decodes them
        // once; a failure leaves what was decoded.
        if (tintSamplesOf != function) {
            tintSamples.clear();
            (void)DecodeStream(*static_cast<PDFStream*>(function), tintSamples);
            tintSamplesOf = function;
        }
        if (values.functionType == 0) {
            EvaluateSampled(values, tintSamples, alternate, which);
            return;
        }
    }
    if (values.functionType == 2) {
        EvaluateExponential(values, dict, alternate, which);
        return;
    }
    // Stitching and calculator functions in streams, and dictionaries without a type, are
    // not evaluated.
    if (values.functionType >= 0 && !isStream)
        EvaluateSingleInput(values, dict, alternate, which);
}

void PDFGraphics::EvaluateSampled(const FunctionValues& values, const std::string& data,
                                  PDFToken* alternate, std::uint8_t which) {
    const std::size_t inputs = values.domain.size() / 2;
    const std::size_t outputs = values.range.size() / 2;
    if (inputs * outputs > kMaxSampledSteps || inputs > kMaxSampledSteps ||
        outputs > kMaxSampledSteps)
        return;

    // Missing /Encode pairs are 0 and Size - 1.
    std::vector<std::int64_t> encode = values.encode;
    if (encode.size() < 2 * values.sizes.size()) {
        encode.resize(encode.size() / 2 * 2);
        for (std::size_t i = encode.size() / 2; i < values.sizes.size(); ++i) {
            encode.push_back(0);
            encode.push_back(values.sizes[i] - 1);
        }
    }

    // The last operand is x[0]: with several inputs, the reverse of the /Domain order.
    std::vector<double> e(inputs);
    for (std::size_t i = 0; i < inputs; ++i) {
        const double d0 = values.domain[2 * i], d1 = values.domain[2 * i + 1];
        const double e0 = static_cast<double>(At(encode, 2 * i));
        const double e1 = static_cast<double>(At(encode, 2 * i + 1));
        const double x = Clamp(PopFloat(0.0), d0, d1);
        const double size = static_cast<double>(At(values.sizes, i));
        e[i] = Clamp((e1 - e0) * (x - d0) / (d1 - d0) + e0, 0.0, size - 1.0);
    }

    const std::int32_t bits = values.bitsPerSample;
    const double maxValue = MaxSampleValue(bits);
    std::vector<double> out(outputs);
    double base = 0.0;
    for (std::size_t j = 0; j < outputs; ++j) {
        // Each output's samples form a plane of their own, behind those of the one before.
        double position = base;
        double stride = 1.0;
        for (std::size_t k = 0; k < inputs; ++k) {
            position += stride * e[k];
            stride *= static_cast<double>(At(values.sizes, k));
        }
        base += stride;
        // Only the sum is rounded, halves away from zero: the nearest sample, no blending.
        const double bit = std::round(position) * bits;
        if (!(bit >= 0.0) || bit / 8.0 >= static_cast<double>(data.size())) {
            readFailure = kPdfDataCorrupted;
            return;
        }
        const auto bitIndex = static_cast<std::uint64_t>(bit);
        std::size_t next = static_cast<std::size_t>(bitIndex / 8);
        const unsigned shift = static_cast<unsigned>(bitIndex % 8);
        // The sample is taken from the low end of the byte and the bits above it are not
        // masked: the usual values for widths of 8, 16 and 24, these steps' values for others.
        std::uint64_t v = static_cast<unsigned char>(data[next++]) >> shift;
        std::int64_t count = 8 - static_cast<std::int64_t>(shift);
        while (count < bits) {
            if (next >= data.size()) {
                readFailure = kPdfDataCorrupted;
                return;
            }
            v = (v << 8) | static_cast<unsigned char>(data[next++]);
            count += 8;
        }
        if (count > bits)
            v = count - bits >= 64 ? 0 : v >> (count - bits);
        const double r0 = values.range[2 * j], r1 = values.range[2 * j + 1];
        out[j] = Clamp((r1 - r0) * static_cast<double>(v) / maxValue + r0, r0, r1);
    }
    for (const double value : out)
        PushFloat(value);
    SetAlternateColour(alternate, which, outputs);
}

void PDFGraphics::EvaluateExponential(const FunctionValues& values, PDFToken* dict,
                                      PDFToken* alternate, std::uint8_t which) {
    std::vector<double> c0 = Floats(*this, dict, "C0");
    std::vector<double> c1 = Floats(*this, dict, "C1");
    double exponent = 0.0;
    if (const PDFToken* n = static_cast<PDFDict*>(dict)->Find("N"))
        exponent = n->GetFloat(0.0);
    std::size_t outputs = values.range.size() / 2;
    if (outputs == 0)
        outputs = c0.size();

    // Operand order: the last operand is the last input. Neither /Domain nor /Range clamps.
    const std::size_t inputs = values.domain.size() / 2;
    std::vector<double> x(inputs);
    for (std::size_t i = inputs; i-- > 0;)
        x[i] = PopFloat(0.0);
    // Only the first input's results are ever pushed, so the others are not computed.
    std::vector<double> out;
    if (inputs > 0) {
        if (c0.size() < outputs)
            c0.resize(outputs, 0.0);
        if (c1.size() < outputs)
            c1.resize(outputs, 1.0);
        const double t = std::pow(x[0], exponent);
        for (std::size_t j = 0; j < outputs; ++j)
            out.push_back(t * (c1[j] - c0[j]) + c0[j]);
    }
    if (outputs != 0 && out.size() + 1 >= outputs)
        for (std::size_t j = 0; j < outputs; ++j)
            PushFloat(At(out, j));
    SetAlternateColour(alternate, which, outputs);
}

void PDFGraphics::EvaluateSingleInput(const FunctionValues& values, PDFToken* dict,
                                      PDFToken* alternate, std::uint8_t which) {
    // Without /N (a stitching function, say) there is nothing to evaluate: colour and
    // operands stay.
    const PDFToken* n = static_cast<PDFDict*>(dict)->Find("N");
    if (!n)
        return;
    const Tokens::PDFArray* c0 = ArrayOf(*this, dict, "C0");
    const Tokens::PDFArray* c1 = ArrayOf(*this, dict, "C1");
    const double t = std::pow(PopFloat(0.0), n->GetFloat(0.0));
    if (!c0 || !c1 || c0->items.size() != c1->items.size())
        return;
    std::vector<double> out;
    for (std::size_t j = 0; j < c0->items.size(); ++j) {
        const double low = c0->items[j]->GetFloat(0.0);
        out.push_back((c1->items[j]->GetFloat(0.0) - low) * t + low);
    }

    if (!alternate)
        return;
    if (alternate->IsType(kPdfKindName)) {
        // Nothing is pushed: the alternate takes what the stack already holds.
        SetAlternateColour(alternate, which, 0);
        return;
    }
    if (alternate->IsType(kPdfKindArray))
        SetArrayAlternateColour(alternate, which, out, values.range.size() / 2);
}

void PDFGraphics::ShowShading() {
    const std::string name = PopString();
    if (!shadingDict)
        return;
    PDFToken* shading = nullptr;
    if (Resolve(static_cast<PDFDict*>(shadingDict)->Find(name), &shading) != kPdfOk || !shading)
        return;
    // The shading is recognised by its type and dropped: none of the seven kinds paints.
    const PDFToken* dict = nullptr;
    if (shading->IsType(kPdfKindStream))
        dict = static_cast<PDFStream*>(shading)->dict;
    else if (shading->IsType(kPdfKindDict))
        dict = shading;
    if (dict)
        (void)static_cast<const PDFDict*>(dict)->Find("ShadingType");
}
