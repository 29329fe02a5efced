#include "cli/JsonText.h"

namespace {

using json = nlohmann::ordered_json;

std::string Scalar(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

bool IsFlat(const json& value) {
    for (const json& element : value)
        if (element.is_structured())
            return false;
    return true;
}

void Write(const json& value, int indent, int depth, std::string& out) {
    const std::string inner(static_cast<std::size_t>(indent) * (depth + 1), ' ');
    const std::string outer(static_cast<std::size_t>(indent) * depth, ' ');
    if (value.is_object()) {
        if (value.empty()) {
            out += "{}";
            return;
        }
        out += "{\n";
        bool first = true;
        for (const auto& [key, element] : value.items()) {
            if (!first)
                out += ",\n";
            first = false;
            out += inner + Scalar(json(key)) + ": ";
            Write(element, indent, depth + 1, out);
        }
        out += "\n" + outer + "}";
    } else if (value.is_array()) {
        if (value.empty()) {
            out += "[]";
        } else if (IsFlat(value)) {
            out += "[";
            bool first = true;
            for (const json& element : value) {
                out += first ? "" : ", ";
                first = false;
                out += Scalar(element);
            }
            out += "]";
        } else {
            out += "[\n";
            bool first = true;
            for (const json& element : value) {
                if (!first)
                    out += ",\n";
                first = false;
                out += inner;
                Write(element, indent, depth + 1, out);
            }
            out += "\n" + outer + "]";
        }
    } else {
        out += Scalar(value);
    }
}

} // namespace

std::string JsonText(const json& value, int indent) {
    std::string out;
    Write(value, indent, 0, out);
    return out + "\n";
}
