#include "dialogs/session/SessionAnsiColorPage.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace {

// In the palette's order: the eight colours, then their bold forms.
constexpr const char16_t* kColourNames[16] = {u"Black",      u"Red",          u"Green",      u"Yellow",
                                              u"Blue",       u"Magenta",      u"Cyan",       u"White",
                                              u"Bold black", u"Bold red",     u"Bold green", u"Bold yellow",
                                              u"Bold blue",  u"Bold magenta", u"Bold cyan",  u"Bold white"};

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

bool Unticked(const NFormControl& checkBox) {
  const bool* ticked = std::get_if<bool>(&checkBox.Value());
  return ticked && !*ticked;
}

}  // namespace

SessionAnsiColorPage::SessionAnsiColorPage(ISessionConfig& session, GlobalConfig& global)
    : NPropertyTreePage(u"ANSI Color"), m_global(global) {
  TerminalConfig& terminal = session.Config().m_terminal;
  NForm& form = Form();
  NFormControl& useGlobal = form.CheckBox(u"Use global ANSI colours", terminal.m_useGlobalAnsiColors);
  const auto own = [&useGlobal] { return Unticked(useGlobal); };
  form.Group(u"Session palette").EnabledWhen(own);
  for (std::size_t i = 0; i < m_colours.size(); ++i) {
    m_colours[i] = &form.Bound(NControlKind::kColor, kColourNames[i],
                               std::make_unique<NColorTableEntryBinding>(terminal.m_ansiColorRgb, i));
  }
  form.Button(u"Use the global colours", [this] { ShowGlobalColours(); });
  form.EndGroup();
}

void SessionAnsiColorPage::ShowGlobalColours() {
  const NColorTable& palette = m_global.m_ansiColorRgb.Get();
  for (std::size_t i = 0; i < m_colours.size(); ++i) m_colours[i]->SetValue(static_cast<std::int64_t>(palette[i]));
}
