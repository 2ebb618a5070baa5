#include "dialogs/global/GlobalAnsiColorPage.h"

#include <memory>

#include "dialogs/NColorTableEntryBinding.h"

GlobalAnsiColorPage::GlobalAnsiColorPage(GlobalConfig& global) : NPropertyTreePage(u"ANSI Color") {
  NForm& form = Form();
  form.Group(u"Palette");
  for (std::size_t i = 0; i < std::size(kAnsiColourNames); ++i) {
    form.Bound(NControlKind::kColor, kAnsiColourNames[i],
               std::make_unique<NColorTableEntryBinding>(global.m_ansiColorRgb, i));
  }
  form.EndGroup();
}
