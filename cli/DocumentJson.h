#pragma once
// The document after an import as JSON: the record scripts and tests read. The key names
// and shapes are a published format; extend it, never rename.
#include "host/doc/CVelmoDoc.h"
#include "host/ui/VmMessages.h"

#include <nlohmann/json.hpp>

#include <vector>

// `result` is what the importer returned; `messages` what it showed the user, in order.
nlohmann::ordered_json DocumentToJson(const CVelmoDoc& doc, int result,
                                      const std::vector<VmMessage>& messages);

// The parts, for callers that want one of them alone.
nlohmann::ordered_json CurveToJson(const GK_Curve& curve);
nlohmann::ordered_json ObjectToJson(const CVelmoObject& object);
nlohmann::ordered_json MessageToJson(const VmMessage& message);
