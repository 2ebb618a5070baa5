#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "uicore/IDialogBackend.h"

// The backend without windows, which tests and the command-line tool
// drive. A property-tree dialog runs the script given (which acts as a
// person would, through the dialog's driving operations) and is cancelled
// if the script leaves it open. Message boxes go to the handler installed
// with NSetMessageBoxHandler, or take their default button; optional ones
// take the answer set here. Pickers answer from a queue. What was shown is
// kept in Log(). UI thread only.
class NHeadlessDialogBackend final : public IDialogBackend {
 public:
  using Script = std::function<void(NPropertyTreeDialog&)>;

  void SetScript(Script script) { m_script = std::move(script); }
  // Whether optional message boxes have their check box ticked.
  void SetTickOptional(bool tick) { m_tickOptional = tick; }
  void QueuePick(std::optional<NUnicodeString> answer) { m_picks.push_back(std::move(answer)); }
  // The answers of the next choice boxes; without one, the first choice.
  void QueueChoice(int answer) { m_choices.push_back(answer); }
  // One line per dialog opened, page drawn at its opening, and picker:
  // "dialog <title>", "page <depth> <title>", "pick <prompt>",
  // "choose <caption>".
  const std::vector<NUnicodeString>& Log() const { return m_log; }

  std::intptr_t RunPropertyTree(NPropertyTreeDialog& dialog, void* parent) override;
  int MessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style) override;
  int OptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style,
                         bool* dontShowAgain) override;
  int Choose(void* parent, std::u16string_view caption, std::u16string_view text, std::u16string_view note,
             const std::vector<NUnicodeString>& choices) override;
  void RunProgress(NProgressDialog& dialog, void* parent) override;
  std::optional<NUnicodeString> PickFolder(void* parent, std::u16string_view prompt,
                                           std::u16string_view initial) override;
  std::optional<NUnicodeString> PickFile(void* parent, std::u16string_view title, std::u16string_view initial,
                                         std::u16string_view filter) override;

 private:
  std::optional<NUnicodeString> NextPick(std::u16string_view prompt);

  Script m_script;
  bool m_tickOptional = false;
  std::deque<std::optional<NUnicodeString>> m_picks;
  std::deque<int> m_choices;
  std::vector<NUnicodeString> m_log;
};

// Installs a backend for the life of a scope and puts the previous one back.
class NScopedDialogBackend {
 public:
  explicit NScopedDialogBackend(IDialogBackend& backend) : m_previous(NSetDialogBackend(&backend)) {}
  ~NScopedDialogBackend() { NSetDialogBackend(m_previous); }
  NScopedDialogBackend(const NScopedDialogBackend&) = delete;
  NScopedDialogBackend& operator=(const NScopedDialogBackend&) = delete;

 private:
  IDialogBackend* m_previous;
};
