#include "shell/RouteEnd.h"

#include <vector>

void FitViewsAndRedraw(CVelmoDoc& doc, const CVelmoFileReadOptions& options) {
    if (options.Mode(CVelmoFileReadOptions::FitViewsFlag)) {
        std::vector<CVelmoView*> views;
        doc.GetViewList(views, 1); // model views
        for (CVelmoView* view : views)
            VelmoDollyExtents(view, true);
    }
    doc.Redraw();
}
