#include "config/TerminalConfig.h"

const NStringArray& TerminalConfig::EmulationNames() {
  static const NStringArray names = [] {
    NStringArray list;
    for (const char16_t* name : {u"VT100", u"VT102", u"VT220", u"VT320", u"ANSI", u"SCOANSI", u"SCO-ANSI", u"Linux",
                                 u"Xterm", u"Hollet", u"WYSE50", u"WYSE60", u"TN3270", u"Dumb"}) {
      list.Add(NUnicodeString(name));
    }
    return list;
  }();
  return names;
}

const NStringArray& TerminalConfig::Tn3270TerminalTypes() {
  static const NStringArray types = [] {
    NStringArray list;
    for (const char16_t* type : {u"IBM-3278-2", u"IBM-3278-3", u"IBM-3278-4", u"IBM-3278-5"}) {
      list.Add(NUnicodeString(type));
    }
    return list;
  }();
  return types;
}

NUnicodeString TerminalConfig::CanonicalEmulation(std::u16string_view name) {
  if (NUnicodeString::CompareIgnoreCase(name, u"SCO-ANSI") == 0) return NUnicodeString(u"SCOANSI");
  return NUnicodeString(name);
}

bool TerminalConfig::SupportsColumnSwitching(std::u16string_view emulation) {
  for (std::u16string_view name : {u"VT100", u"VT102", u"VT220", u"VT320", u"Xterm"}) {
    if (emulation.size() == name.size() && NUnicodeString::CompareIgnoreCase(emulation, name) == 0) return true;
  }
  return false;
}

TerminalConfig::TerminalConfig() : NProfileRecord(104) {}

void TerminalConfig::Load(const NProfileKey& key) {
  constexpr std::u16string_view kOldColumnSwitching = u"Enable 80/132 Column Switching";
  ReadFields(key);
  // Present under another kind counts too: such a value is not replaced.
  const bool hasKeymap = m_keymap.Found() || NHasValue(key, m_keymap.Name());
  const bool hasColumnSwitching = m_enableColumnSwitching.Found() || NHasValue(key, m_enableColumnSwitching.Name());
  m_emulation.Load(CanonicalEmulation(m_emulation.Get()));

  // Older keymaps: "Keymap v2", else "Keymap", each a list of mappings.
  if (!hasKeymap) {
    for (std::u16string_view old : {u"Keymap v2", u"Keymap"}) {
      if (!NHasValue(key, old)) continue;
      m_keymap.Set(NReadListValue(key, old));
      m_keymap.Touch();
      break;
    }
  }
  std::uint32_t oldSwitching;
  if (!hasColumnSwitching && key.GetDwordValue(kOldColumnSwitching, &oldSwitching)) {
    m_enableColumnSwitching.Set(oldSwitching != 0);
    m_enableColumnSwitching.Touch();
  } else if (!hasColumnSwitching) {
    m_enableColumnSwitching.Load(SupportsColumnSwitching(m_emulation.Get()));
  }
}
