// The PDF route: read every selected page into the sink, report a failure in one message,
// ask for the options once all is read, place and commit.
#include "shell/CQuillonPlugIn.h"
#include "shell/PagePrompt.h"
#include "shell/PdfErrorReport.h"
#include "shell/PdfPlacement.h"
#include "shell/RouteEnd.h"

#include "graphics/PageDriver.h"
#include "output/PDFToVelmo.h"

#include "host/base/VmFile.h"
#include "host/base/VmResources.h"
#include "host/geometry/GK_4dRect.h"
#include "host/ui/CVelmoApp.h"
#include "host/ui/VmDialogs.h"

#include <exception>
#include <vector>

int CQuillonPlugIn::ReadPdfRoute(const wchar_t* path, CVelmoDoc& doc,
                                 const CVelmoFileReadOptions& options) {
    CVelmoWaitCursor waitCursor;
    PDFToVelmo sink(&doc, &options);
    // A failure thrown out of the read (memory running out) takes what was gathered with it,
    // as a failed read does.
    struct DiscardOnThrow {
        PDFToVelmo& sink;
        int pending = std::uncaught_exceptions();
        ~DiscardOnThrow() {
            if (std::uncaught_exceptions() > pending)
                sink.DiscardPendingObjects();
        }
    } discardOnThrow{sink};

    const bool batchMode = options.Mode(CVelmoFileReadOptions::BatchModeFlag);
    // A second page without a /MediaBox of its own goes below what the first page drew: the
    // box of that drawing, grown by its own width and height on every side, is its size.
    const PendingPageBox drawnBox = [&sink](double& size, double& e, double& f) {
        double minX, minY, maxX, maxY;
        sink.GetPendingExtents(minX, minY, maxX, maxY);
        GK_4dRect box(minX, minY, maxX, maxY);
        box.InflateRect(box.Width(), box.Height());
        size = box.Height();
        e = box.CenterX();
        f = box.CenterY();
    };
    const PDFStatus status =
        ReadDocument(VmOpenFile(path, "rb"), sink, batchMode, PromptForPages, drawnBox);

    const GK_ArchivableDictionary& dictionary = options.OptionsDictionary();
    const bool hasDictionary = dictionary.Count() > 0;
    const bool interactive = !VelmoApp().IsHeadless() && !doc.IsHeadless() && !hasDictionary;

    if (status != kPdfOk) {
        ReportPdfError(status, path, interactive);
        sink.DiscardPendingObjects(); // what was gathered goes with the failed read
        return 0;
    }

    const std::size_t gathered =
        sink.pendingObjects.size() + sink.textRecords.size() + sink.images.size();
    if (gathered == 0) {
        GK_wString text;
        text.Format(VmLocalizeString(L"There are no objects to load in the file %s.", 1827), path);
        // This test looks at NoUserInterfaceQuestions, unlike the error report above.
        if (options.NoUserInterfaceQuestions())
            VelmoApp().Print(L"%s\n", text.Array());
        else
            VelmoMessageBox(text, VmLocalizeString(L"PDF File Read Error", 1828), 48);
        return 0;
    }

    int index = currentFormatIndex;
    if (interactive) {
        if (index == ImportFormatAi)
            index = ImportFormatAiPdf;
        if (PromptForOptions(!batchMode, index, false) != 0) {
            sink.DiscardPendingObjects();
            return 0;
        }
    } else if (hasDictionary) {
        // Whatever the format, the keys go to the PDF record; placement below still reads the
        // record of the index, so for a PDF-based .ai they do not count on this read.
        dictionary.TryGetBool(L"PreserveModelScale", pdfOptions.preserveUnits);
        dictionary.TryGetDouble(L"VelmoScale", pdfOptions.velmoScale);
        dictionary.TryGetInt32(L"PdfUnits", pdfOptions.importUnit);
        dictionary.TryGetDouble(L"PDFScale", pdfOptions.importScale);
        bool hatches = false;
        if (dictionary.TryGetBool(L"ImportFillsAsHatches", hatches))
            pdfOptions.boundaryCurves = !hatches;
        dictionary.TryGetBool(L"LoadText", pdfOptions.loadText);
    }

    const Placement placement = ComputePlacement(RecordFor(index), sink);
    sink.CommitToDocument(placement.scale, placement.offset, placement.loadText,
                          placement.boundaryCurves, placement.importLineWeights,
                          showMissingFontsDialog);

    FitViewsAndRedraw(doc, options);
    return 1;
}
