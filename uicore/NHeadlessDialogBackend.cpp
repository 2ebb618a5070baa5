#include "uicore/NHeadlessDialogBackend.h"

#include <atomic>
#include <string>

#include "uicore/NMessageBox.h"
#include "uicore/NProgressDialog.h"
#include "uicore/NPropertyTreeDialog.h"

namespace {

NHeadlessDialogBackend& Headless() {
  static NHeadlessDialogBackend backend;
  return backend;
}

std::atomic<IDialogBackend*> g_backend{nullptr};

}  // namespace

IDialogBackend& NDialogBackend() {
  IDialogBackend* backend = g_backend.load();
  return backend ? *backend : Headless();
}

IDialogBackend* NSetDialogBackend(IDialogBackend* backend) { return g_backend.exchange(backend); }

std::intptr_t NHeadlessDialogBackend::RunPropertyTree(NPropertyTreeDialog& dialog, void*) {
  m_log.push_back(u"dialog " + dialog.Title());
  for (const NPropertyTreeDialog::Row& row : dialog.VisibleRows()) {
    m_log.push_back(u"page " + NUnicodeString::FromUtf8(std::to_string(row.depth)) + u" " + row.page->Title());
  }
  if (m_script) m_script(dialog);
  return dialog.Result();
}

int NHeadlessDialogBackend::MessageBox(void*, std::u16string_view text, std::u16string_view caption, unsigned style) {
  return NAskMessageBoxHandler(text, caption, style);
}

int NHeadlessDialogBackend::OptionalMessageBox(void*, std::u16string_view text, std::u16string_view caption,
                                               unsigned style, bool* dontShowAgain) {
  *dontShowAgain = m_tickOptional;
  return NAskMessageBoxHandler(text, caption, style);
}

int NHeadlessDialogBackend::Choose(void*, std::u16string_view caption, std::u16string_view, std::u16string_view,
                                   const std::vector<NUnicodeString>& choices) {
  m_log.push_back(u"choose " + NUnicodeString(caption));
  if (m_choices.empty()) return choices.empty() ? -1 : 0;
  const int answer = m_choices.front();
  m_choices.pop_front();
  return answer;
}

void NHeadlessDialogBackend::RunProgress(NProgressDialog& dialog, void*) { dialog.WaitForClose(); }

std::optional<NUnicodeString> NHeadlessDialogBackend::NextPick(std::u16string_view prompt) {
  m_log.push_back(u"pick " + NUnicodeString(prompt));
  if (m_picks.empty()) return std::nullopt;
  std::optional<NUnicodeString> answer = std::move(m_picks.front());
  m_picks.pop_front();
  return answer;
}

std::optional<NUnicodeString> NHeadlessDialogBackend::PickFolder(void*, std::u16string_view prompt,
                                                                 std::u16string_view) {
  return NextPick(prompt);
}

std::optional<NUnicodeString> NHeadlessDialogBackend::PickFile(void*, std::u16string_view title, std::u16string_view,
                                                               std::u16string_view) {
  return NextPick(title);
}
