#include "dialogs/global/GlobalColorSchemesPage.h"

#include <memory>
#include <string>

#include "dialogs/NColorTableEntryBinding.h"

GlobalColorSchemesPage::GlobalColorSchemesPage(GlobalConfig& global) : NPropertyTreePage(u"Advanced") {
  NForm& form = Form();
  form.Group(u"Custom colours");
  for (std::size_t i = 0; i < 16; ++i) {
    form.Bound(NControlKind::kColor, NUnicodeString::FromUtf8("Custom colour " + std::to_string(i + 1)),
               std::make_unique<NColorTableEntryBinding>(global.m_customColors, i));
  }
  form.EndGroup();
}
