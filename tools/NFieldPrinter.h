#pragma once

#include <string>
#include <string_view>
#include <vector>

class NProfileData;

// A record's fields as the tool prints them: "value name=value" lines in
// order (booleans true/false, numbers in decimal, strings as they are,
// string lists as a JSON array, bytes in lower-case hex), or one JSON
// object keyed by the value names. An encrypted value that is not empty is
// "(encrypted)", or with `showSecrets` its plain text as opened for its
// place under `keyPath` (the record's key); one that does not open stays
// "(encrypted)", and why goes to stderr.
std::string NFormatFields(const std::vector<NProfileData*>& fields, bool json, std::u16string_view keyPath = {},
                          bool showSecrets = false);
