#pragma once
// A sink over a fresh document, with helpers to write its path and take what it made.
#include "SinkDump.h"
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"
#include "output/PDFToVelmo.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tarquil::test {

class SinkFixture : public ::testing::Test {
protected:
    using Texts = std::vector<std::string>;

    void SetUp() override {
        ResetHost();
        sink = std::make_unique<PDFToVelmo>(&doc, &options);
    }
    void TearDown() override { sink->DiscardPendingObjects(); }

    void Add(double x, double y, char kind) { sink->pathElements.push_back({x, y, kind}); }
    // A subpath of one cubic Bézier.
    void Bezier(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                double y3) {
        Add(x0, y0, 'm');
        Add(x1, y1, 'a');
        Add(x2, y2, 'b');
        Add(x3, y3, 'c');
    }
    // What the sink has pending, as text; the pending list and the path are emptied.
    Texts Take() {
        sink->pathElements.clear();
        Texts texts = PendingTexts(*sink);
        sink->DiscardPendingObjects();
        sink->pendingObjects.clear();
        return texts;
    }

    CVelmoDoc doc;
    CVelmoFileReadOptions options;
    std::unique_ptr<PDFToVelmo> sink;
};

} // namespace tarquil::test
