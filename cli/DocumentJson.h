#pragma once
// The document after an import as JSON: the record scripts and tests read. The key names
// and shapes are a published format; extend it, never rename.
//
// Everything is written straight to a JsonWriter, object by object, so a report costs time in
// proportion to its text and no copy of the document. Each table is one function and each kind
// of object one case of WriteObjectJson, which is where a new table or kind joins.
#include "cli/JsonWriter.h"
#include "host/doc/CVelmoDoc.h"
#include "host/ui/VmMessages.h"

#include <vector>

// `result` is what the importer returned; `messages` what it showed the user, in order.
void WriteDocumentJson(JsonWriter& out, const CVelmoDoc& doc, int result,
                       const std::vector<VmMessage>& messages);

// The parts, for callers that want one of them alone.
void WriteCurveJson(JsonWriter& out, const GK_Curve& curve);
void WriteObjectJson(JsonWriter& out, const CVelmoObject& object);
void WriteMessageJson(JsonWriter& out, const VmMessage& message);
