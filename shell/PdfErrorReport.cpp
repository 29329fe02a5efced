#include "shell/PdfErrorReport.h"

#include "shell/Resources.h"

#include "host/base/GK_String.h"
#include "host/base/VmResources.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmDialogs.h"

namespace {
constexpr int kOldAiFile = 10037;
constexpr int kCanceled = 10039;
} // namespace

void ReportPdfError(int code, const wchar_t* path, bool interactive) {
    GK_wString text, title;
    if (code == kOldAiFile) {
        text.Format(VmLocalizeString(L"Velmo cannot read %ls. It may be too old or written in an "
                                     L"incompatible format.",
                                     39889),
                    path);
        title = GK_wString(VmLocalizeString(L"AI File Read Error", 39890));
    } else {
        GK_wString reason;
        if (code == kCanceled) {
            reason = GK_wString(VmLocalizeString(L"Command was canceled", 44274));
        } else if (!reason.LoadResourceString(QuillonModuleInstance(),
                                              static_cast<unsigned>(code))) {
            // Codes without a text (-1 and the like) still say which failure it was.
            reason.Format(L"error %d", code);
        }
        text.Format(VmLocalizeString(L"Error reading file %ls -- %ls.", 1825), path,
                    reason.Array());
        title = GK_wString(VmLocalizeString(L"PDF File Read Error", 1826));
    }
    if (interactive)
        VelmoMessageBox(text, title, 48);
    else
        VelmoApp().Print(L"%s\n", text.Array());
}
