#pragma once
// JSON text for people and diff tools: objects one key a line, but a list of plain values
// (a point, a colour, knots) on one line, so that a drawing's points stay readable.
#include <nlohmann/json.hpp>

#include <string>

// Numbers as nlohmann writes them (round-trip exact; non-finite ones as null), strings as
// UTF-8 with invalid bytes replaced. Ends with a newline.
std::string JsonText(const nlohmann::ordered_json& value, int indent = 2);
