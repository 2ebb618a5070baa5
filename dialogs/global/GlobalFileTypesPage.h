#pragma once

#include "config/GlobalConfig.h"
#include "dialogs/global/NFileTypeManager.h"
#include "dialogs/global/NIconManager.h"
#include "uicore/NFieldBinding.h"
#include "uicore/NPropertyTreePage.h"

// "File Types": the program that opens a downloaded file of each extension,
// kept in the host's file-type register.
class GlobalFileTypesPage final : public NPropertyTreePage {
 public:
  static constexpr std::u16string_view kTypesLabel = u"File types (EXTENSION=PROGRAM, one a line)";

  // `changed` (may be null) is set when OK changed the register.
  GlobalFileTypesPage(GlobalConfig& global, NFileTypeManager& types, NIconManager& icons, bool* changed);

  bool OnOK() override;

 private:
  NFileTypeManager& m_types;
  NIconManager& m_icons;
  bool* m_changed;
  NPlainField<NStringArray> m_associations;
};
