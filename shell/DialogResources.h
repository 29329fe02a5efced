#pragma once
// The plug-in's dialog templates: the page selection (1001) and the import options (6000).
#include "host/ui/CVelmoDialog.h"

constexpr unsigned int kPdfSelectPageDialogId = 1001;
constexpr unsigned int kPdfImportOptionsDialogId = 6000;

// The plug-in's module instance with its dialog templates registered (once).
void* QuillonDialogModule();

// The templates as registered, for whoever needs to read them.
const VmDialogTemplate* QuillonDialogTemplates(int& count);
