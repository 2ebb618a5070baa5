#include "uicore/NForm.h"

#include <algorithm>

#include "platform/NUnicode.h"

NUnicodeString NFoldText(std::u16string_view text) {
  NUnicodeString folded(text.size(), u'\0');
  std::transform(text.begin(), text.end(), folded.begin(), NFoldCase);
  return folded;
}

namespace {

bool Contains(std::u16string_view text, std::u16string_view folded) {
  return NFoldText(text).find(folded) != NUnicodeString::npos;
}

bool ControlMatches(const NFormControl& control, std::u16string_view folded) {
  if (Contains(control.Label(), folded)) return true;
  return std::any_of(control.ChoiceItems().begin(), control.ChoiceItems().end(),
                     [&](const NChoiceItem& item) { return Contains(item.label, folded); });
}

}  // namespace

NFormControl& NForm::Add(NControlKind kind, NUnicodeString label, std::unique_ptr<NFieldBinding> binding) {
  auto control = std::make_unique<NFormControl>(this, kind, std::move(label), std::move(binding));
  control->m_group = m_group;
  m_controls.push_back(std::move(control));
  return *m_controls.back();
}

NFormControl& NForm::Button(NUnicodeString label, std::function<void()> action) {
  return Add(NControlKind::kButton, std::move(label), nullptr).Action(std::move(action));
}

NFormControl& NForm::SampleTabs(NUnicodeString label, std::function<std::vector<NSampleTab>()> samples) {
  return Add(NControlKind::kSampleTabs, std::move(label), nullptr).Samples(std::move(samples));
}

NFormControl& NForm::Group(NUnicodeString label) {
  m_group = nullptr;
  NFormControl& group = Add(NControlKind::kGroupBox, std::move(label), nullptr);
  m_group = &group;
  return group;
}

NFormControl& NForm::Label(NUnicodeString text) { return Add(NControlKind::kLabel, std::move(text), nullptr); }

NFormControl* NForm::Find(std::u16string_view label) const {
  for (const auto& control : m_controls) {
    if (control->Label() == label) return control.get();
  }
  return nullptr;
}

void NForm::Load() {
  for (const auto& control : m_controls) control->Load();
  m_loaded = true;
}

bool NForm::IsChanged() const {
  return std::any_of(m_controls.begin(), m_controls.end(), [](const auto& control) { return control->IsChanged(); });
}

NFormControl* NForm::FirstInvalid(NUnicodeString* message) const {
  for (const auto& control : m_controls) {
    if (auto refused = control->Check()) {
      *message = std::move(*refused);
      return control.get();
    }
  }
  return nullptr;
}

bool NForm::Store() {
  bool stored = true;
  for (const auto& control : m_controls) stored = control->Store() && stored;
  return stored;
}

void NForm::Discard() {
  for (const auto& control : m_controls) control->Discard();
}

void NForm::ResetToDefaults() {
  // Every control, whatever the rules say as the others change back: a
  // page's reset leaves nothing of the person's edits but what is locked.
  for (const auto& control : m_controls) {
    if (control->HasValue() && !control->LockReason()) control->Show(control->DefaultValue());
  }
}

bool NForm::Matches(std::u16string_view folded) const {
  return std::any_of(m_controls.begin(), m_controls.end(),
                     [&](const auto& control) { return ControlMatches(*control, folded); });
}

void NForm::Highlight(std::u16string_view folded) {
  for (const auto& control : m_controls) control->m_highlighted = !folded.empty() && ControlMatches(*control, folded);
}
