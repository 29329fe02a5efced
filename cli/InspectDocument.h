#pragma once
// `tarquil inspect info|object|stream`: how a PDF file opens and what its objects read as.
#include "cli/InspectCommand.h"

// Adds info, object and stream under `inspect`; the other members stay null.
InspectCommands AddInspectDocumentCommands(CLI::App& inspect, InspectArguments& args);

int RunInspectInfo(const InspectArguments& args);
int RunInspectObject(const InspectArguments& args);
int RunInspectStream(const InspectArguments& args);
