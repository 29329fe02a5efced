#include "shell/FormatDispatch.h"

#include "shell/CQuillonPlugIn.h"
#include "shell/PdfErrorReport.h"

#include "host/base/VmFile.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmDialogs.h"
#include "pdf/token/PDFError.h"

#include <exception>
#include <new>

namespace {

constexpr long kMaxMarkerPasses = 2000000;

inline int NextByte(std::FILE* file) {
    return getc_unlocked(file);
}

} // namespace

bool ScanForLegacyMarker(std::FILE* file) {
    static const char kRest[] = "ENDSETUP";
    long passes = 0;
    for (;;) {
        if (std::feof(file) || passes >= kMaxMarkerPasses)
            return false;
        ++passes;
        if (NextByte(file) != '%')
            continue;
        if (NextByte(file) != '%')
            continue;
        bool matched = true;
        for (const char* p = kRest; *p && matched; ++p) {
            const int c = NextByte(file);
            matched = c == *p || c == *p + ('a' - 'A');
        }
        if (matched)
            return true;
    }
}

int CQuillonPlugIn::ImportFile(const wchar_t* path, int formatIndex, CVelmoDoc& doc,
                               const CVelmoFileReadOptions& options) {
    currentFormatIndex = formatIndex;
    try {
        std::FILE* file = VmOpenFile(path, "rb");
        if (!file) {
            VelmoMessageBox(L"PDF File Read Error", L"PDF File Read Error", 48);
            return 0;
        }
        const bool legacy = ScanForLegacyMarker(file);
        std::fclose(file);
        return legacy ? ReadLegacyRoute(path, doc, options) : ReadPdfRoute(path, doc, options);
    } catch (const std::bad_alloc&) {
        // The read has unwound and given its memory back; what it gathered went with it.
        const bool interactive = !VelmoApp().IsHeadless() && !doc.IsHeadless() &&
                                 options.OptionsDictionary().Count() == 0;
        ReportPdfError(kPdfOutOfMemory, path, interactive);
    } catch (const std::exception& e) {
        VelmoMessageBox(GK_wString(e.what()), L"File Read Error", 48);
    }
    return 0;
}
