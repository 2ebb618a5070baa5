#include "config/GlobalConfig.h"

#include <algorithm>
#include <cstring>

GlobalConfig::GlobalConfig(int productId) : NProfileRecord(288), m_productId(productId) {}

GlobalConfig::~GlobalConfig() = default;

std::uint32_t GlobalConfig::AddRef() { return ++m_references; }

std::uint32_t GlobalConfig::Release() {
  const std::uint32_t left = --m_references;
  if (left == 0) delete this;
  return left;
}

void GlobalConfig::Lock() { m_lock.lock(); }

void GlobalConfig::Unlock() { m_lock.unlock(); }

NUnicodeString GlobalConfig::ConvertTabState(std::u16string_view old, std::u16string_view defaultV2) {
  // The older form is the pane layout alone ("1,1,0"); the new one adds,
  // after a ";", the state of the tabs, which starts as in the default.
  NUnicodeString converted(old);
  if (old.find(u';') != std::u16string_view::npos) return converted;
  const std::size_t tail = defaultV2.find(u';');
  converted += tail == std::u16string_view::npos ? std::u16string_view(u";") : defaultV2.substr(tail);
  return converted;
}

void GlobalConfig::Load(const NProfileKey& global, const NProfileKey* quickSync) {
  ReadFields(global);
  if (quickSync) m_quickSync.ReadFields(*quickSync);
  // The versioned fields: an older value is converted only when the new
  // name is absent, and is never written again under its old name.
  auto migrateTabState = [&](NProfileString& field, std::u16string_view oldName) {
    NUnicodeString old;
    if (field.Found() || NHasValue(global, field.Name()) || !global.GetStringValue(oldName, &old)) return;
    field.Set(ConvertTabState(old, field.Default()));
    field.Touch();
  };
  migrateTabState(m_skeldonTabState, u"Skeldon Tab State");
  migrateTabState(m_parrowTabState, u"Parrow Tab State");
  if (!IsTransferProduct() && !m_rememberedSessions.Found() && !NHasValue(global, m_rememberedSessions.Name()) &&
      NHasValue(global, u"Remembered Sessions List")) {
    // Older versions kept the list as a multi-string already or as one
    // string of session paths separated by ";".
    m_rememberedSessions.Set(NReadListValue(global, u"Remembered Sessions List"));
    m_rememberedSessions.Touch();
  }
}

void GlobalConfig::Merge(const NProfileKey& key) {
  const NEncryptedString passphrase = m_configPassphrase.Get();
  const NEncryptedString loadedPassphrase = m_configPassphrase.Loaded();
  const std::uint8_t flag = m_stateFlag;
  Load(key, nullptr);
  m_configPassphrase.Load(loadedPassphrase);
  m_configPassphrase = passphrase;
  m_stateFlag = flag;
}

std::vector<NProfileData*> GlobalConfig::EarlyFields() const {
  // What must never be lost to a failed save of the rest: the format
  // version, the passphrase, and the markers of one-time migrations.
  return {const_cast<NProfileString*>(&m_version),           const_cast<NProfileEncrypted*>(&m_configPassphrase),
          const_cast<NProfileBool*>(&m_changeConfigPassphrase), const_cast<NProfileBool*>(&m_skldFirewallMigrated),
          const_cast<NProfileBool*>(&m_quennXmlFileFixed),     const_cast<NProfileBool*>(&m_skeldonXmlFileFixed),
          const_cast<NProfileBool*>(&m_parrowXmlFileFixed)};
}

bool GlobalConfig::Save(NProfileKey& root, NProfileKey& global, bool all, NReportMessageParams& params) {
  const NUnicodeString& version = m_version.Get();
  const bool current = std::any_of(std::begin(kFormatIdentifiers), std::end(kFormatIdentifiers),
                                   [&](std::u16string_view id) { return version.starts_with(id); });
  if (!current) m_version = NUnicodeString(kFormatIdentifiers[0]);

  const std::vector<NProfileData*> early = EarlyFields();
  bool ok = true;
  for (NProfileData* field : early) ok = field->Write(global, all) && ok;
  if (m_quickSync.IsModified()) {
    std::unique_ptr<NProfileKey> quickSync = root.OpenSubKey(u"QuickSync", params);
    if (!quickSync) return false;
    if (!m_quickSync.WriteFields(*quickSync, all) || !quickSync->Flush(params)) return false;
  }
  for (NProfileData* field : Fields()) {
    if (std::find(early.begin(), early.end(), field) == early.end()) ok = field->Write(global, all) && ok;
  }
  if (!global.Flush(params)) return false;
  return ok;
}

NWindowPlacement GlobalConfig::DefaultPlacement(int window) {
  // Staggered, so that the application's windows do not open on top of
  // each other on a first start.
  NWindowPlacement placement;
  const std::int32_t offset = 40 * window;
  placement.normalPosition = NRect{100 + offset, 100 + offset, 1060 + offset, 780 + offset};
  return placement;
}

NColorTable GlobalConfig::DefaultCustomColors() {
  NColorTable colors;
  colors.fill(0xFFFFFF);  // white, as a colour chooser starts
  return colors;
}

NBytes GlobalConfig::DefaultColorSchemes() {
  // Two built-in schemes: light and dark, on the default palette.
  auto make = [](std::u16string_view name, NColor foreground, NColor bold, NColor background) {
    NColorScheme scheme;
    std::copy_n(name.begin(), std::min(name.size(), scheme.name.size() - 1), scheme.name.begin());
    scheme.palette = NDefaultAnsiColors();
    scheme.foreground = foreground;
    scheme.boldForeground = bold;
    scheme.background = background;
    return scheme;
  };
  const NColorScheme schemes[] = {make(u"Light", 0x000000, 0x000000, 0xFFFFFF),
                                  make(u"Dark", 0xC0C0C0, 0xFFFFFF, 0x000000)};
  NBytes bytes(sizeof schemes, '\0');
  std::memcpy(bytes.data(), schemes, sizeof schemes);
  return bytes;
}
