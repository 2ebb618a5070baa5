#pragma once

#include <QWidget>
#include <cstddef>
#include <functional>
#include <vector>

#include "uicore/NForm.h"

class QFormLayout;
class QLabel;
class QMenu;

// The widgets of one page's form, in a form layout: a widget per control,
// group boxes holding their controls. A person's edit goes to the control
// (NFormControl::SetValue), never to a record; a refused edit is put back.
// While it lives it is the form's listener, so values the logic changes
// (reset, refresh) show without being sent back as edits, and after every
// change each control's enabled, lock, modified and search marks are
// redrawn.
//
// Every value widget is named (QObject::objectName) after its control's
// label. Owned by its Qt parent; the form must outlive it. GUI thread only.
class NQtFormWidget final : public QWidget {
 public:
  // `changed` runs after every change of a control's value, whoever made it.
  NQtFormWidget(NForm& form, std::function<void()> changed, QWidget* parent = nullptr);
  ~NQtFormWidget() override;
  NQtFormWidget(const NQtFormWidget&) = delete;
  NQtFormWidget& operator=(const NQtFormWidget&) = delete;

  // Redraws every control's state; the search marks change without a
  // change of value, so the window calls this after a search.
  void RefreshStates();
  // Some enabled control shows a value other than its default.
  bool HasResettable() const;
  // Stops listening to the form, whose page is leaving the dialog and may
  // go before this widget does.
  void Detach();

 private:
  struct Entry {
    NFormControl* control = nullptr;
    QWidget* caption = nullptr;  // carries the label, the marks and the highlight
    QWidget* editor = nullptr;   // what is enabled with the control
    QLabel* lockIcon = nullptr;
    QLabel* lockNote = nullptr;
    std::function<void()> show;  // puts the control's value into the editor
  };

  void Build();
  void AddRow(QFormLayout* layout, std::size_t index, QLabel* caption, QWidget* editor, bool wide);
  QWidget* MakeEditor(std::size_t index);
  void AttachResetMenu(QWidget* widget, std::size_t index, std::function<QMenu*()> standardMenu = nullptr);
  // A person's edit of entry `index`; `shown`: its widget already shows it
  // (typing), else the widget is set from the value (a picker's choice).
  void Edit(std::size_t index, NControlValue value, bool shown = true);
  void Show(Entry& entry);
  void OnControlChanged(NFormControl& control);

  NForm& m_form;
  std::function<void()> m_changed;
  std::vector<Entry> m_entries;
  bool m_detached = false;
  const NFormControl* m_editing = nullptr;  // its widget already shows the edit
  bool m_showing = false;                   // widgets are being set from values: no edits
};
