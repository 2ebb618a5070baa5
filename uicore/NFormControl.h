#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/NUnicodeString.h"
#include "uicore/NControlValue.h"
#include "uicore/NFieldBinding.h"

class NForm;

enum class NControlKind {
  kCheckBox,    // boolean
  kNumber,      // integer within its range
  kText,        // string
  kPassword,    // string shown masked
  kChoice,      // one of its items, in a drop-down list
  kRadioGroup,  // one of its items, as radio buttons
  kColor,       // 0x00BBGGRR
  kFont,        // NControlFont
  kFile,        // a file's path, with a picker
  kFolder,      // a folder's path, with a picker
  kStringList,  // a list of strings
  kButton,      // an action, no value
  kGroupBox,    // a caption over the controls that follow it, no value
  kLabel,       // a line of text, no value
  kSampleTabs,  // a strip of sample tabs drawn from the other controls, no value
};

// One tab of a sample tab strip, in the colours (0x00BBGGRR) it is drawn in.
struct NSampleTab {
  NUnicodeString caption;
  std::uint32_t indicator = 0;   // the status indicator's colour
  std::uint32_t background = 0;  // the tab's own colour
  bool barIndicator = true;      // a bar along the tab; false: the whole tab is coloured
  int indicatorWidth = 2;        // the bar's thickness in pixels
};

// One item of a choice list or radio group: what it shows, what it stores.
struct NChoiceItem {
  NUnicodeString label;
  NControlValue value;
};

// Appends `stored` to `items` when no item holds it: a value the list does
// not spell the same way is kept until a person picks another.
void NOfferStoredChoice(std::vector<NChoiceItem>& items, const NUnicodeString& stored);

// What became of a person's edit.
enum class NEditResult {
  kDone,
  kUnchanged,   // the control already showed that value
  kLocked,      // a policy forbids the setting
  kDisabled,    // a rule disables the control now
  kWrongKind,   // a value of another kind than the control's
  kOutOfRange,  // a number outside the control's range
  kNotAChoice,  // not one of the control's items
  kNoValue,     // buttons, group boxes and labels hold nothing
};

// A control of a form: its declaration (kind, label, binding, range,
// items, rules) and its state while a dialog is open (the value it shows).
// The value lives in the control until OK or Apply stores it: the record
// is untouched by edits, and Cancel simply drops them.
//
// Declared once, when the page is made, by the form's builders; the
// chained setters below finish the declaration. Owned by its form. UI
// thread only.
class NFormControl {
 public:
  NFormControl(NForm* form, NControlKind kind, NUnicodeString label, std::unique_ptr<NFieldBinding> binding);
  NFormControl(const NFormControl&) = delete;
  NFormControl& operator=(const NFormControl&) = delete;

  // ---- Declaration
  NFormControl& Range(std::int64_t minimum, std::int64_t maximum);
  NFormControl& Items(std::vector<NChoiceItem> items);
  // A file picker's filter, as "Sound files (*.wav)".
  NFormControl& Filter(NUnicodeString filter);
  // What a file or folder picker asks (its title); without one, the label.
  NFormControl& Prompt(NUnicodeString prompt);
  // What a sample tab strip draws, asked again whenever it is repainted.
  NFormControl& Samples(std::function<std::vector<NSampleTab>()> samples);
  // Enabled only while `rule` holds; rules combine with "and".
  NFormControl& EnabledWhen(std::function<bool()> rule);
  // Enabled only while `checkBox` shows a tick.
  NFormControl& EnabledWhenChecked(const NFormControl& checkBox);
  // Enabled only while `checkBox` shows no tick (once its form is loaded).
  NFormControl& EnabledWhenUnchecked(const NFormControl& checkBox);
  // Locked while `reason` gives one: shown disabled with the reason, and
  // never written to its field.
  NFormControl& LockedWhen(std::function<std::optional<NUnicodeString>()> reason);
  // A button's action.
  NFormControl& Action(std::function<void()> action);
  // Checked on OK and Apply: a message refuses the value.
  NFormControl& Validate(std::function<std::optional<NUnicodeString>(const NControlValue&)> check);
  NFormControl& Tip(NUnicodeString tip);
  // Called after the value shown changed, by a person or a reload: what a
  // page does beyond the form when a control changes.
  NFormControl& OnChange(std::function<void(NFormControl&)> handler);

  NControlKind Kind() const { return m_kind; }
  const NUnicodeString& Label() const { return m_label; }
  const NUnicodeString& TipText() const { return m_tip; }
  bool HasValue() const { return m_binding != nullptr; }
  std::int64_t Minimum() const { return m_minimum; }
  std::int64_t Maximum() const { return m_maximum; }
  const std::vector<NChoiceItem>& ChoiceItems() const { return m_items; }
  const NUnicodeString& FileFilter() const { return m_filter; }
  const NUnicodeString& PickerPrompt() const { return m_prompt.empty() ? m_label : m_prompt; }
  std::vector<NSampleTab> SampleTabs() const { return m_samples ? m_samples() : std::vector<NSampleTab>(); }
  // The group box this control sits in, or null.
  const NFormControl* Group() const { return m_group; }

  // ---- State
  // What the control shows: the field's value once the form is loaded.
  const NControlValue& Value() const { return m_value; }
  NControlValue DefaultValue() const;
  // The shown value differs from the one loaded from the field.
  bool IsChanged() const { return m_loaded && !(m_value == m_loadedValue); }
  // The shown value differs from the field's default: the control is marked.
  bool IsModifiedFromDefault() const;
  // Rules (its own and its group's) allow it and no policy locks it.
  bool IsEnabled() const;
  // Why a policy locks the control, or nothing.
  std::optional<NUnicodeString> LockReason() const;
  bool IsHighlighted() const { return m_highlighted; }

  // ---- What a person does
  NEditResult SetValue(NControlValue value);
  // Shows the field's default again (stored on OK like any edit).
  NEditResult ResetToDefault();
  // Runs a button's action; false when there is none or it is disabled.
  bool Press();
  // A file or folder control's picker, with its prompt, in the installed
  // dialog backend; the path picked becomes the value. kNoValue when the
  // picker was cancelled.
  NEditResult Browse(void* parent);
  // The check applied on OK and Apply: the message, or nothing.
  std::optional<NUnicodeString> Check() const;

 private:
  friend class NForm;
  void Load();
  // Shows `value`, of the control's kind, without asking the rules.
  NEditResult Show(NControlValue value);
  // Writes a changed value to its field; false when the field refused it.
  bool Store();
  void Discard();

  NForm* m_form;
  NControlKind m_kind;
  NUnicodeString m_label;
  NUnicodeString m_tip;
  std::unique_ptr<NFieldBinding> m_binding;
  std::int64_t m_minimum = INT32_MIN;
  std::int64_t m_maximum = INT32_MAX;
  std::vector<NChoiceItem> m_items;
  NUnicodeString m_filter;
  NUnicodeString m_prompt;
  std::function<std::vector<NSampleTab>()> m_samples;
  std::vector<std::function<bool()>> m_rules;
  std::function<std::optional<NUnicodeString>()> m_lock;
  std::function<void()> m_action;
  std::function<std::optional<NUnicodeString>(const NControlValue&)> m_check;
  std::function<void(NFormControl&)> m_onChange;
  const NFormControl* m_group = nullptr;

  NControlValue m_value;
  NControlValue m_loadedValue;
  bool m_loaded = false;
  bool m_highlighted = false;
};
