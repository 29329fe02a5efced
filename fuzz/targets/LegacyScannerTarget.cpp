// The legacy reader over arbitrary bytes: marker dispatch, first line, scan, and what the
// route then does to the curves.
#include "legacy/LineReader.h"
#include "legacy/PostScriptPathScanner.h"
#include "shell/FormatDispatch.h"

#include "host/ui/VmMessages.h"

#include <cstdint>
#include <cstdio>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    VmMessages().SetEcho(nullptr);
    std::vector<char> bytes(data, data + size);
    std::FILE* file = fmemopen(bytes.data(), bytes.size(), "rb");
    if (!file)
        return 0;
    (void)ScanForLegacyMarker(file);
    std::rewind(file);

    CVelmoDoc doc;
    ResetLegacyScanner(size % 2 == 0, GK_Color(1, 2, 3), L"Default", nullptr);
    char line[kScannerLineBuffer];
    (void)ReadScannerLine(file, line);
    GK_SimpleArray<GK_Curve*> curves;
    GK_SimpleArray<long> layers;
    (void)ScanPostScriptPaths(file, curves, layers, doc);
    std::fclose(file);

    GK_BoundingBox box;
    for (GK_Curve* c : curves) {
        if (c->IsValid())
            box.Union(c->BoundingBox());
        c->Scale(0.5);
        delete c;
    }
    return 0;
}
