#include "uicore/NFormControl.h"

#include <algorithm>

#include "uicore/IDialogBackend.h"
#include "uicore/NForm.h"

void NOfferStoredChoice(std::vector<NChoiceItem>& items, const NUnicodeString& stored) {
  const NControlValue value(stored);
  if (std::none_of(items.begin(), items.end(), [&](const NChoiceItem& item) { return item.value == value; })) {
    items.push_back({stored, stored});
  }
}

NFormControl::NFormControl(NForm* form, NControlKind kind, NUnicodeString label, std::unique_ptr<NFieldBinding> binding)
    : m_form(form), m_kind(kind), m_label(std::move(label)), m_binding(std::move(binding)) {}

NFormControl& NFormControl::Range(std::int64_t minimum, std::int64_t maximum) {
  m_minimum = minimum;
  m_maximum = maximum;
  return *this;
}

NFormControl& NFormControl::Items(std::vector<NChoiceItem> items) {
  m_items = std::move(items);
  return *this;
}

NFormControl& NFormControl::Filter(NUnicodeString filter) {
  m_filter = std::move(filter);
  return *this;
}

NFormControl& NFormControl::Prompt(NUnicodeString prompt) {
  m_prompt = std::move(prompt);
  return *this;
}

NFormControl& NFormControl::Samples(std::function<std::vector<NSampleTab>()> samples) {
  m_samples = std::move(samples);
  return *this;
}

NFormControl& NFormControl::EnabledWhen(std::function<bool()> rule) {
  m_rules.push_back(std::move(rule));
  return *this;
}

NFormControl& NFormControl::EnabledWhenChecked(const NFormControl& checkBox) {
  return EnabledWhen([&checkBox] {
    const bool* ticked = std::get_if<bool>(&checkBox.Value());
    return ticked && *ticked && checkBox.IsEnabled();
  });
}

NFormControl& NFormControl::EnabledWhenUnchecked(const NFormControl& checkBox) {
  return EnabledWhen([&checkBox] {
    const bool* ticked = std::get_if<bool>(&checkBox.Value());
    return ticked && !*ticked;
  });
}

NFormControl& NFormControl::LockedWhen(std::function<std::optional<NUnicodeString>()> reason) {
  m_lock = std::move(reason);
  return *this;
}

NFormControl& NFormControl::Action(std::function<void()> action) {
  m_action = std::move(action);
  return *this;
}

NFormControl& NFormControl::Validate(std::function<std::optional<NUnicodeString>(const NControlValue&)> check) {
  m_check = std::move(check);
  return *this;
}

NFormControl& NFormControl::Tip(NUnicodeString tip) {
  m_tip = std::move(tip);
  return *this;
}

NFormControl& NFormControl::OnChange(std::function<void(NFormControl&)> handler) {
  m_onChange = std::move(handler);
  return *this;
}

NControlValue NFormControl::DefaultValue() const { return m_binding ? m_binding->Default() : NControlValue(); }

bool NFormControl::IsModifiedFromDefault() const { return m_binding && m_loaded && !(m_value == DefaultValue()); }

std::optional<NUnicodeString> NFormControl::LockReason() const {
  if (m_lock) return m_lock();
  return std::nullopt;
}

bool NFormControl::IsEnabled() const {
  if (m_form->IsReadOnly()) return false;
  if (m_group && !m_group->IsEnabled()) return false;
  if (LockReason()) return false;
  return std::all_of(m_rules.begin(), m_rules.end(), [](const auto& rule) { return rule(); });
}

NEditResult NFormControl::SetValue(NControlValue value) {
  if (!m_binding) return NEditResult::kNoValue;
  if (!m_loaded) Load();
  if (LockReason()) return NEditResult::kLocked;
  if (!IsEnabled()) return NEditResult::kDisabled;
  if (value.index() != m_loadedValue.index()) return NEditResult::kWrongKind;
  if (m_kind == NControlKind::kNumber) {
    const std::int64_t n = std::get<std::int64_t>(value);
    if (n < m_minimum || n > m_maximum) return NEditResult::kOutOfRange;
  }
  if (!m_items.empty() &&
      std::none_of(m_items.begin(), m_items.end(), [&](const NChoiceItem& item) { return item.value == value; })) {
    return NEditResult::kNotAChoice;
  }
  return Show(std::move(value));
}

NEditResult NFormControl::Show(NControlValue value) {
  if (!m_loaded) Load();
  if (value == m_value) return NEditResult::kUnchanged;
  m_value = std::move(value);
  m_form->Changed(*this);
  if (m_onChange) m_onChange(*this);
  return NEditResult::kDone;
}

NEditResult NFormControl::ResetToDefault() { return SetValue(DefaultValue()); }

bool NFormControl::Press() {
  if (m_kind != NControlKind::kButton || !m_action || !IsEnabled()) return false;
  m_action();
  return true;
}

NEditResult NFormControl::Browse(void* parent) {
  if (m_kind != NControlKind::kFile && m_kind != NControlKind::kFolder) return NEditResult::kWrongKind;
  if (!IsEnabled()) return LockReason() ? NEditResult::kLocked : NEditResult::kDisabled;
  const NUnicodeString* current = std::get_if<NUnicodeString>(&m_value);
  const std::u16string_view initial = current ? std::u16string_view(*current) : std::u16string_view();
  const std::optional<NUnicodeString> path = m_kind == NControlKind::kFile
                                                 ? NDialogBackend().PickFile(parent, PickerPrompt(), initial, m_filter)
                                                 : NDialogBackend().PickFolder(parent, PickerPrompt(), initial);
  return path ? SetValue(*path) : NEditResult::kNoValue;
}

std::optional<NUnicodeString> NFormControl::Check() const {
  if (!m_check || !m_loaded || !IsEnabled()) return std::nullopt;
  return m_check(m_value);
}

void NFormControl::Load() {
  if (!m_binding || IsChanged()) return;
  NControlValue current = m_binding->Current();
  const bool shownChanges = m_loaded && !(current == m_value);
  m_value = current;
  m_loadedValue = std::move(current);
  m_loaded = true;
  if (!shownChanges) return;
  m_form->Changed(*this);
  if (m_onChange) m_onChange(*this);
}

bool NFormControl::Store() {
  // A locked control is never written, whatever it shows.
  if (!IsChanged() || LockReason()) return true;
  if (!m_binding->Store(m_value)) return false;
  m_loadedValue = m_value;
  return true;
}

void NFormControl::Discard() {
  if (!m_loaded) return;
  m_value = m_loadedValue;
}
