#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "uicore/NFormControl.h"

// A page's form: its controls in order, each declared in one line and bound
// to a field of a record.
//
//   m_form.CheckBox(u"Show toolbar", global.m_showToolbar);
//   m_form.Number(u"Filter delay (ms)", global.m_sessionFilterDelay, 0, 5000)
//       .EnabledWhenChecked(filter);
//
// The form loads its fields into the controls when its page is first
// shown, stores only the controls that changed on OK or Apply, and drops
// the edits on Cancel. A group box takes in the controls declared after it,
// up to EndGroup or the next group box. Fields must outlive the form. UI
// thread only.
class NForm {
 public:
  NForm() = default;
  NForm(const NForm&) = delete;
  NForm& operator=(const NForm&) = delete;

  // ---- Declaration
  template <typename Field>
  NFormControl& CheckBox(NUnicodeString label, Field& field) {
    return Add(NControlKind::kCheckBox, std::move(label), NBind(field));
  }
  template <typename Field>
  NFormControl& Number(NUnicodeString label, Field& field, std::int64_t minimum, std::int64_t maximum) {
    return Add(NControlKind::kNumber, std::move(label), NBind(field)).Range(minimum, maximum);
  }
  template <typename Field>
  NFormControl& Text(NUnicodeString label, Field& field) {
    return Add(NControlKind::kText, std::move(label), NBind(field));
  }
  template <typename Field>
  NFormControl& Password(NUnicodeString label, Field& field) {
    return Add(NControlKind::kPassword, std::move(label), NBind(field));
  }
  template <typename Field>
  NFormControl& Choice(NUnicodeString label, Field& field, std::vector<NChoiceItem> items) {
    return Add(NControlKind::kChoice, std::move(label), NBind(field)).Items(std::move(items));
  }
  template <typename Field>
  NFormControl& Radio(NUnicodeString label, Field& field, std::vector<NChoiceItem> items) {
    return Add(NControlKind::kRadioGroup, std::move(label), NBind(field)).Items(std::move(items));
  }
  template <typename Field>
  NFormControl& Color(NUnicodeString label, Field& field) {
    return Add(NControlKind::kColor, std::move(label), NBind(field));
  }
  template <typename Field>
  NFormControl& Font(NUnicodeString label, Field& field) {
    return Add(NControlKind::kFont, std::move(label), NBind(field));
  }
  template <typename Field>
  NFormControl& File(NUnicodeString label, Field& field, NUnicodeString filter = {}) {
    return Add(NControlKind::kFile, std::move(label), NBind(field)).Filter(std::move(filter));
  }
  template <typename Field>
  NFormControl& Folder(NUnicodeString label, Field& field) {
    return Add(NControlKind::kFolder, std::move(label), NBind(field));
  }
  template <typename Field>
  NFormControl& StringList(NUnicodeString label, Field& field) {
    return Add(NControlKind::kStringList, std::move(label), NBind(field));
  }
  // A control bound through a binding of the caller's (a field's part, as
  // one entry of a colour table).
  NFormControl& Bound(NControlKind kind, NUnicodeString label, std::unique_ptr<NFieldBinding> binding) {
    return Add(kind, std::move(label), std::move(binding));
  }
  NFormControl& Button(NUnicodeString label, std::function<void()> action);
  NFormControl& Group(NUnicodeString label);
  void EndGroup() { m_group = nullptr; }
  NFormControl& Label(NUnicodeString text);
  NFormControl& SampleTabs(NUnicodeString label, std::function<std::vector<NSampleTab>()> samples);

  const std::vector<std::unique_ptr<NFormControl>>& Controls() const { return m_controls; }
  // The first control with `label` (exactly), or null.
  NFormControl* Find(std::u16string_view label) const;

  // ---- Binding
  // Shows every field's value; later calls reload only unchanged controls.
  void Load();
  bool IsLoaded() const { return m_loaded; }
  // Any control shows a value other than the one loaded.
  bool IsChanged() const;
  // The first control whose check refuses its value, with the message.
  NFormControl* FirstInvalid(NUnicodeString* message) const;
  // Writes every changed, unlocked control to its field; false when a field
  // refused a value (the others are still written).
  bool Store();
  // Drops every edit: the controls show the loaded values again.
  void Discard();
  // Shows the defaults in every control a policy does not lock.
  void ResetToDefaults();

  // ---- Search
  // Whether any control's label or item matches `folded` (NFoldText).
  bool Matches(std::u16string_view folded) const;
  // Highlights the controls that match `folded`; empty clears every mark.
  void Highlight(std::u16string_view folded);

  // A read-only form shows its values with every control disabled.
  void SetReadOnly(bool readOnly) { m_readOnly = readOnly; }
  bool IsReadOnly() const { return m_readOnly; }

  // Called after every change of a control's value; a backend shows it.
  void SetListener(std::function<void(NFormControl&)> listener) { m_listener = std::move(listener); }
  void Changed(NFormControl& control) const {
    if (m_listener) m_listener(control);
  }

 private:
  NFormControl& Add(NControlKind kind, NUnicodeString label, std::unique_ptr<NFieldBinding> binding);

  std::vector<std::unique_ptr<NFormControl>> m_controls;
  NFormControl* m_group = nullptr;
  std::function<void(NFormControl&)> m_listener;
  bool m_loaded = false;
  bool m_readOnly = false;
};

// `text` with case folded, for searching without case.
NUnicodeString NFoldText(std::u16string_view text);
