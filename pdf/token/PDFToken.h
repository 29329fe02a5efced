#pragma once
// The reference-counted base of every PDF object and operand.
//
// Ownership: a token made by `new` carries one reference, which belongs to whoever made it.
// Pushing it on an operand stack or storing it in an array, a dictionary or a stream's dict
// moves that reference. Find, Peek, item reads and loaded objects are borrowed: no count is
// taken, and the token lives as long as its container (or its document).
#include <cstdint>
#include <string>

// Kinds asked of IsType.
enum PDFTokenKind : int {
    kPdfKindString = 1,
    kPdfKindName = 2,
    kPdfKindArray = 3,
    kPdfKindDict = 4,
    kPdfKindBool = 5,
    kPdfKindInteger = 6,
    kPdfKindReal = 7,
    kPdfKindNumber = 8, // integer or real
    kPdfKindMark = 9,
    kPdfKindRef = 10,
    kPdfKindStream = 11,
    kPdfKindNull = 12,
};

class PDFToken {
public:
    PDFToken() = default;
    PDFToken(const PDFToken&) = delete;
    PDFToken& operator=(const PDFToken&) = delete;
    virtual ~PDFToken() = default;

    // A new token with one reference, or null: only references can be cloned.
    virtual PDFToken* Clone() const { return nullptr; }
    // The token's PDF text, numbers in the classic locale.
    virtual std::string ToString() const = 0;
    virtual bool IsType(int kind) const = 0;
    virtual std::string GetString() const { return {}; }
    virtual std::int32_t GetInteger(std::int32_t defaultValue) const { return defaultValue; }
    virtual double GetFloat(double defaultValue) const { return defaultValue; }

    void AddRef() { ++refCount; }
    // Drops one reference; the last one deletes the token.
    void Release() {
        if (refCount-- == 1)
            Destroy(this);
    }

    std::uint32_t refCount = 1; // plain and not atomic: tokens belong to one thread

private:
    // Deletes through the virtual destructor. Containers freed while another is being
    // freed wait in a queue, so that nesting of any depth never deepens the call stack.
    static void Destroy(PDFToken* token);
};

// Owns one reference to a token for a scope. Null is allowed.
class PDFTokenRef {
public:
    PDFTokenRef() = default;
    // Takes over the reference the caller holds.
    explicit PDFTokenRef(PDFToken* owned) : m_token(owned) {}
    PDFTokenRef(const PDFTokenRef&) = delete;
    PDFTokenRef& operator=(const PDFTokenRef&) = delete;
    PDFTokenRef(PDFTokenRef&& other) noexcept : m_token(other.Take()) {}
    PDFTokenRef& operator=(PDFTokenRef&& other) noexcept {
        Reset(other.Take());
        return *this;
    }
    ~PDFTokenRef() { Reset(); }

    PDFToken* Get() const { return m_token; }
    PDFToken* operator->() const { return m_token; }
    explicit operator bool() const { return m_token != nullptr; }
    // Gives the reference away.
    [[nodiscard]] PDFToken* Take() {
        PDFToken* t = m_token;
        m_token = nullptr;
        return t;
    }
    void Reset(PDFToken* owned = nullptr) {
        if (m_token)
            m_token->Release();
        m_token = owned;
    }

private:
    PDFToken* m_token = nullptr;
};
