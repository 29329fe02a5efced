#pragma once
// How both routes end a good read: the views fitted when the host asked for it, a redraw.
#include "host/doc/CVelmoDoc.h"
#include "host/doc/CVelmoFileReadOptions.h"

void FitViewsAndRedraw(CVelmoDoc& doc, const CVelmoFileReadOptions& options);
