#pragma once
// The one message a failed PDF read shows.

// Shows the message for a PDF-layer status code: in a box (flags 48) when `interactive`,
// else on the command line.
void ReportPdfError(int code, const wchar_t* path, bool interactive);
