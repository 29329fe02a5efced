#pragma once
// `tarquil inspect trace`: every call the interpreter makes on the graphics state.
#include "cli/InspectCommand.h"

// Adds "trace" under `inspect` and returns it.
CLI::App* AddInspectTraceCommand(CLI::App& inspect, InspectArguments& args);

// Reads the document in batch mode (the page list, when given, answers the page prompt) and
// prints the trace; the read status goes to standard error. Exit 0 when the read succeeded.
int RunInspectTrace(const InspectArguments& args);
