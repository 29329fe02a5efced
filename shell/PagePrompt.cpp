#include "shell/PagePrompt.h"

#include "shell/PDFSelectPage.h"

#include "host/base/GK_String.h"
#include "host/base/VmResources.h"
#include "host/ui/CVelmoGet.h"

std::set<int> PromptForPages(int pageCount, bool batchMode) {
    // The dialog object carries the parser, so the command line makes one as well.
    PDFSelectPage dialog(pageCount);

    if (!batchMode) {
        if (dialog.DoModal() != IDOK)
            return {};
        return {dialog.selectedPages.begin(), dialog.selectedPages.end()};
    }

    GK_wString prompt;
    prompt.Format(VmLocalizeString(L"Page numbers to import. Press Enter for all. <1-%i>", 55864),
                  pageCount);
    CVelmoGetString get;
    get.SetCommandPrompt(prompt);
    get.AcceptNothing(true);
    GK_wString list;
    switch (get.GetString()) {
    case CVelmoGet::nothing:
        list.Format(L"1-%d", pageCount);
        break;
    case CVelmoGet::string:
        list = get.String();
        break;
    default:
        return {};
    }
    dialog.ParsePageList(list.str());
    return {dialog.selectedPages.begin(), dialog.selectedPages.end()};
}
