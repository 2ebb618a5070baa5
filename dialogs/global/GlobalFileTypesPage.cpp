#include "dialogs/global/GlobalFileTypesPage.h"

#include <set>

#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"

namespace {

// "EXT=PROGRAM" lines by extension, without case.
std::set<NUnicodeString> Extensions(const NStringArray& lines) {
  std::set<NUnicodeString> extensions;
  for (const NUnicodeString& line : lines) extensions.insert(NFoldText(line.substr(0, line.find(u'='))));
  return extensions;
}

}  // namespace

GlobalFileTypesPage::GlobalFileTypesPage(GlobalConfig& global, NFileTypeManager& types, NIconManager& icons,
                                         bool* changed)
    : NPropertyTreePage(u"File Types"), m_types(types), m_icons(icons), m_changed(changed) {
  m_associations.value = types.Associations();
  NForm& form = Form();
  form.StringList(NUnicodeString(kTypesLabel), m_associations)
      .Validate([](const NControlValue& value) -> std::optional<NUnicodeString> {
        const NStringArray* lines = std::get_if<NStringArray>(&value);
        if (!lines) return std::nullopt;
        for (const NUnicodeString& line : *lines) {
          const std::size_t equals = line.find(u'=');
          if (equals == 0 || equals == NUnicodeString::npos || equals + 1 == line.size()) {
            return u"'" + line + u"' is not EXTENSION=PROGRAM.";
          }
        }
        return std::nullopt;
      });
  form.CheckBox(u"Open with the program of the transfer type", global.m_openWithTransferType);
  form.Text(u"Open-with program's title", global.m_openWithProgramTitle);
}

bool GlobalFileTypesPage::OnOK() {
  const NFormControl& list = *Form().Find(kTypesLabel);
  const bool listChanged = list.IsChanged();
  const NStringArray before = m_associations.value;
  if (!NPropertyTreePage::OnOK()) return false;
  if (!listChanged) return true;
  if (!m_types.SetAssociations(m_associations.value)) {
    NMessageBox(nullptr, u"The file types could not be saved.", NGetAppName(), kMessageBoxOk | kMessageBoxIconError);
    m_associations.value = before;
    return false;
  }
  // Every extension added, dropped or given another program.
  std::set<NUnicodeString> touched = Extensions(before);
  touched.merge(Extensions(m_associations.value));
  for (const NUnicodeString& extension : touched) m_icons.Invalidate(extension);
  if (m_changed) *m_changed = true;
  return true;
}
