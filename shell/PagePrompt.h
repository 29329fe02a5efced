#pragma once
// Which pages of a many-page PDF to read: the dialog, or in batch mode the command line.
#include <set>

// Page numbers from 0; the empty set means the user cancelled.
std::set<int> PromptForPages(int pageCount, bool batchMode);
