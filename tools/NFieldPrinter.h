#pragma once

#include <string>
#include <vector>

class NProfileData;

// A record's fields as the tool prints them: "value name=value" lines in
// order (booleans true/false, numbers in decimal, strings as they are,
// string lists as a JSON array, bytes in lower-case hex), or one JSON
// object keyed by the value names.
std::string NFormatFields(const std::vector<NProfileData*>& fields, bool json);
