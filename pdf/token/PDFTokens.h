#pragma once
// The concrete token classes. They are nested here and reached through PDFParser, which
// derives from this holder, as PDFParser::PDFString and so on.
#include "pdf/token/PDFToken.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class PDFParserTokens {
public:
    class PDFNull : public PDFToken {
    public:
        std::string ToString() const override { return {}; }
        bool IsType(int kind) const override { return kind == kPdfKindNull; }
    };

    class PDFString : public PDFToken {
    public:
        explicit PDFString(std::string v) : value(std::move(v)) {}
        std::string ToString() const override;
        bool IsType(int kind) const override { return kind == kPdfKindString; }
        std::string GetString() const override { return value; }

        const std::string value; // any bytes, NUL included
    };

    class PDFName : public PDFToken {
    public:
        explicit PDFName(std::string v) : value(std::move(v)) {}
        std::string ToString() const override;
        bool IsType(int kind) const override { return kind == kPdfKindName; }
        std::string GetString() const override { return value; }

        const std::string value; // decoded, without the slash
    };

    class PDFBool : public PDFToken {
    public:
        explicit PDFBool(bool v) : value(v ? 1 : 0) {}
        std::string ToString() const override { return value ? "true" : "false"; }
        bool IsType(int kind) const override { return kind == kPdfKindBool; }
        std::int32_t GetInteger(std::int32_t) const override { return value ? 1 : 0; }

        const std::uint8_t value;
    };

    class PDFInteger : public PDFToken {
    public:
        explicit PDFInteger(std::int32_t v) : value(v) {}
        std::string ToString() const override;
        bool IsType(int kind) const override {
            return kind == kPdfKindInteger || kind == kPdfKindNumber;
        }
        std::int32_t GetInteger(std::int32_t) const override { return value; }
        double GetFloat(double) const override { return value; }

        const std::int32_t value;
    };

    class PDFFloat : public PDFToken {
    public:
        explicit PDFFloat(double v) : value(v) {}
        std::string ToString() const override;
        bool IsType(int kind) const override {
            return kind == kPdfKindReal || kind == kPdfKindNumber;
        }
        // Truncated toward zero; values out of the 32-bit range saturate.
        std::int32_t GetInteger(std::int32_t) const override;
        double GetFloat(double) const override { return value; }

        const double value;
    };

    class PDFArray : public PDFToken {
    public:
        PDFArray() = default;
        ~PDFArray() override;
        std::string ToString() const override;
        bool IsType(int kind) const override { return kind == kPdfKindArray; }
        int Size() const { return static_cast<int>(items.size()); }
        // Stores the token, its reference moving into the array.
        void Append(PDFToken* owned) { items.push_back(owned); }

        std::vector<PDFToken*> items; // each owned
    };

    class PDFDict : public PDFToken {
    public:
        PDFDict() = default;
        ~PDFDict() override;
        std::string ToString() const override;
        bool IsType(int kind) const override { return kind == kPdfKindDict; }
        // The value under `key`, borrowed, or null. References are not followed.
        PDFToken* Find(const std::string& key) const;
        // Find-or-insert: the slot of `key`, null when new. Storing over an occupied slot
        // does not release the old value.
        PDFToken*& operator[](const std::string& key) { return entries[key]; }

        // Ordered by unsigned bytes, the shorter key first on a common prefix.
        std::map<std::string, PDFToken*> entries; // each value owned
    };

    class PDFRef : public PDFToken {
    public:
        PDFRef(std::int32_t number, std::int32_t gen) : objectNumber(number), generation(gen) {}
        PDFToken* Clone() const override { return new PDFRef(objectNumber, generation); }
        std::string ToString() const override;
        bool IsType(int kind) const override { return kind == kPdfKindRef; }

        const std::int32_t objectNumber;
        const std::int32_t generation;
    };

    class PDFStream : public PDFToken {
    public:
        // Takes over the dictionary's reference.
        PDFStream(std::string raw, PDFToken* ownedDict) : data(std::move(raw)), dict(ownedDict) {}
        ~PDFStream() override;
        std::string ToString() const override;
        bool IsType(int kind) const override { return kind == kPdfKindStream; }

        const std::string data; // raw bytes between "stream" and "endstream", undecoded
        PDFToken* const dict;   // owned; the stream's PDFDict
    };

    class PDFMark : public PDFToken {
    public:
        explicit PDFMark(std::string opener) : text(std::move(opener)) {}
        std::string ToString() const override { return "-mark-"; }
        bool IsType(int kind) const override { return kind == kPdfKindMark; }

        const std::string text; // "<<" or "["
    };
};
