#pragma once

#include <cstddef>
#include <cstdint>

#include "config/NProfile.h"
#include "uicore/NFieldBinding.h"

// One entry of a colour table. Each control writes back the whole table
// with only its entry changed, so that several edited entries all land.
class NColorTableEntryBinding final : public NFieldBinding {
 public:
  NColorTableEntryBinding(NProfileStruct<NColorTable>& table, std::size_t index) : m_table(table), m_index(index) {}
  NControlValue Current() const override { return static_cast<std::int64_t>(m_table.Get()[m_index]); }
  NControlValue Default() const override { return static_cast<std::int64_t>(m_table.Default()[m_index]); }
  bool Store(const NControlValue& value) override {
    const std::int64_t* colour = std::get_if<std::int64_t>(&value);
    if (!colour) return false;
    NColorTable table = m_table.Get();
    table[m_index] = static_cast<NColor>(*colour);
    m_table.Set(table);
    return true;
  }

 private:
  NProfileStruct<NColorTable>& m_table;
  std::size_t m_index;
};

// The names of the sixteen ANSI colours, in the palette's order: the eight
// colours, then their bold forms.
inline constexpr const char16_t* kAnsiColourNames[16] = {
    u"Black",      u"Red",      u"Green",      u"Yellow",      u"Blue",      u"Magenta",      u"Cyan",      u"White",
    u"Bold black", u"Bold red", u"Bold green", u"Bold yellow", u"Bold blue", u"Bold magenta", u"Bold cyan", u"Bold white"};
