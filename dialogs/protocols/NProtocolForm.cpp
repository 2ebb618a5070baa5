#include "dialogs/protocols/NProtocolForm.h"

#include "config/NControlCodecs.h"
#include "dialogs/NPolicyLocks.h"

NConnectionRows NAddConnectionRows(NForm& form, ConnectConfig& connect, NProfileInt& port, NLogon logon) {
  NConnectionRows rows;
  rows.host = &form.Text(u"Hostname", connect.m_hostname);
  rows.port = &form.Number(u"Port", port, 1, 65535);
  if (logon == NLogon::kNone) return rows;
  const NPolicy policy = NReadPolicy();
  rows.username = &form.Text(u"Username", connect.m_username).LockedWhen(NSaveUsernamesLock(policy));
  if (logon == NLogon::kUsernameAndPassword) {
    rows.password = &form.Password(u"Password", connect.m_password).LockedWhen(NSavePasswordsLock(policy));
  }
  return rows;
}

std::vector<NChoiceItem> NNumberChoices(std::initializer_list<std::pair<std::u16string_view, std::int64_t>> items) {
  std::vector<NChoiceItem> choices;
  choices.reserve(items.size());
  for (const auto& [label, value] : items) choices.push_back({NUnicodeString(label), value});
  return choices;
}
