#pragma once

#include <string>

// Sets which companion applications count as installed from a
// comma-separated subset of "skeldon,quenn,parrow", in place of what the
// detection found. False, with the reason, for any other name.
bool NSetToolInstallation(const std::string& list, std::string* error);
