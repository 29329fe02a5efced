// The PDF route. The reader itself is not built yet: until it is, every file without the
// legacy marker ends in the route's ordinary error report.
#include "shell/CQuillonPlugIn.h"
#include "shell/PdfErrorReport.h"

#include "host/ui/CVelmoApp.h"

namespace {
constexpr int kInternalError = 10001;
}

int CQuillonPlugIn::ReadPdfRoute(const wchar_t* path, CVelmoDoc& doc,
                                 const CVelmoFileReadOptions& options) {
    CVelmoWaitCursor waitCursor;
    const bool hasDictionary = options.OptionsDictionary().Count() > 0;
    const bool interactive = !VelmoApp().IsHeadless() && !doc.IsHeadless() && !hasDictionary;
    ReportPdfError(kInternalError, path, interactive);
    return 0;
}
