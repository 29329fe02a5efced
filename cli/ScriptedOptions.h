#pragma once
// `--option KEY=VALUE` arguments: entries of the options dictionary a script hands to the
// importer. The importer reads each key with one type and ignores a value of another, so
// the type of every entry matters as much as its value.
#include "host/doc/CVelmoFileReadOptions.h"

#include <string>
#include <string_view>
#include <vector>

struct ScriptedOption {
    std::wstring key;
    GK_ArchivableDictionary::Value value;
};

enum class ScriptedType { Bool, Int, Double, String };

// The type the importer reads `key` with, for the keys it knows; false for any other key.
bool KnownOptionType(std::wstring_view key, ScriptedType& type);

// Parses "KEY=VALUE" or "KEY:TYPE=VALUE" (TYPE one of bool, int, double, string). A forced
// type wins; otherwise a known key has its own type, and any other value is inferred:
// true/false a bool, an integer an int, another number a double, anything else a string.
// Throws UsageError for a malformed argument or a value that does not parse as its type.
ScriptedOption ParseScriptedOption(std::string_view argument);

// Parses every argument and stores it in the dictionary; a later key replaces an earlier.
void ApplyScriptedOptions(const std::vector<std::string>& arguments,
                          GK_ArchivableDictionary& dictionary);
