#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "config/ConnectConfig.h"
#include "uicore/NForm.h"

// What a protocol asks for when it logs on.
enum class NLogon { kNone, kUsername, kUsernameAndPassword };

// The rows the protocol pages open with; null where the protocol asks for
// none.
struct NConnectionRows {
  NFormControl* host = nullptr;
  NFormControl* port = nullptr;
  NFormControl* username = nullptr;
  NFormControl* password = nullptr;
};

// Adds "Hostname", "Port" (bound to the protocol's own port field) and, as
// the protocol logs on, "Username" and "Password", which the
// administrator's policy may lock.
NConnectionRows NAddConnectionRows(NForm& form, ConnectConfig& connect, NProfileInt& port, NLogon logon);

// Choice items that store integers.
std::vector<NChoiceItem> NNumberChoices(std::initializer_list<std::pair<std::u16string_view, std::int64_t>> items);
