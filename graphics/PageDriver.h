#pragma once
// The walk over a PDF's pages: open the file, ask which pages to read, and run each selected
// page's content streams and annotation appearances through the interpreter into `sink`.
#include "graphics/PDFGraphicsState.h"
#include "pdf/token/PDFError.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <set>

class PDFDocument;
class PDFGraphics;
class PDFToken;

// Asks the user which pages to read, page numbers from 0; an empty set means cancel. The
// import shell supplies it (its page dialog or command-line prompt), so this layer does not
// depend on the shell.
using PagePrompt = std::function<std::set<int>(int pageCount, bool batchMode)>;

// For a second page written without a /MediaBox: the height and centre (e, f) of the box
// around what has been drawn so far, enlarged by its own size. Only the output sink knows
// what it has gathered, so the import shell supplies this; without it such a page has no
// size.
using PendingPageBox = std::function<void(double& size, double& e, double& f)>;

// Makes the interpreter of one page. Tools that watch the interpreter itself (the colour
// spaces it meets, say) supply a derived one; by default it is a plain PDFGraphics.
using InterpreterFactory = std::function<std::unique_ptr<PDFGraphics>(
    PDFDocument* document, PDFGraphicsState* state, PDFToken* page)>;

// Takes over `file` (which may be null) and closes it. Returns 0 or a status.
[[nodiscard]] PDFStatus ReadDocument(std::FILE* file, PDFGraphicsState& sink, bool batchMode,
                                     const PagePrompt& prompt,
                                     const PendingPageBox& pendingBox = {},
                                     const InterpreterFactory& makeInterpreter = {});
