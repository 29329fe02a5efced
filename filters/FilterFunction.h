#pragma once
// The form of every stream filter: the whole input in, the whole output out.
#include "pdf/token/PDFError.h"
#include "pdf/token/PDFToken.h"

#include <string>

// Replaces what `output` held with the filtered `input`. `parms` is a PDFDict or null,
// borrowed. Returns 0 or a status: mostly a PDFError code, and -1, -2, -3 from the fax
// decoder.
using FilterFunction = PDFStatus (*)(const std::string& input, std::string& output,
                                     PDFToken* parms);
