#pragma once
// A document over a file written by PdfWriter, opened as the importer opens it.
#include "pdf/xref/PDFDocument.h"
#include "support/PdfWriter.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

namespace tarquil::test {

struct Opened {
    explicit Opened(const std::string& text) : in(text), doc(&in) {}
    std::istringstream in;
    PDFDocument doc;
};

// Ends the file with a classic table whose trailer names `rootNumber`, and opens it.
inline std::unique_ptr<Opened> OpenWritten(PdfWriter& writer, int rootNumber) {
    writer.ClassicXref("/Root " + std::to_string(rootNumber) + " 0 R");
    auto opened = std::make_unique<Opened>(writer.Text());
    EXPECT_EQ(opened->doc.Open(), kPdfOk);
    return opened;
}

} // namespace tarquil::test
