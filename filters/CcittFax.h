#pragma once
// "CCITTFaxDecode": Group 4 (two-dimensional) data and a simple one-dimensional decoder.
#include "filters/FilterFunction.h"

// The filter function: K < 0 reads Group 4 data, anything else one-dimensional codes;
// unless /BlackIs1, the bytes are inverted afterwards.
PDFStatus CCITTFaxDecode(const std::string& input, std::string& output, PDFToken* parms);

// Runs of alternating colour, white first, as one continuous bit string (1 is black);
// returns 0, -2 (invalid code) or -3 (input ends inside a code).
int DecodeFax1D(const std::string& input, std::string& output, int columns);

// Two-dimensional decoding against a reference line, one packed line of `columns` bits
// per coded line (1 is black); returns 0, -1, -2 or -3.
int DecodeFax2D(const std::string& input, std::string& output, int columns);
