#pragma once

#include <QDialog>
#include <map>

#include "uicore/IDialogBackend.h"
#include "uicore/NPropertyTreeDialog.h"

class QDialogButtonBox;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;
class NQtFormWidget;

// The window of a property-tree dialog: a search box over the page tree on
// the left, the current page's title and form on the right, OK, Cancel and
// Apply below. It draws the dialog's logic and passes every action of a
// person to the logic's driving operations; the logic tells it what changed
// through IPropertyTreeView, once the window is made the dialog's view
// (NPropertyTreeDialog::SetView, the caller's job). A page's widgets are
// built the first time it becomes current, and dropped when it leaves the
// dialog. Closing the window cancels.
//
// The page widgets are named after their page titles, the value widgets
// after their control labels. Owned by whoever runs it; the dialog and its
// pages must outlive it. GUI thread only.
class NQtPropertyTreeWindow final : public QDialog, public IPropertyTreeView {
 public:
  explicit NQtPropertyTreeWindow(NPropertyTreeDialog& dialog, QWidget* parent = nullptr);
  ~NQtPropertyTreeWindow() override;
  NQtPropertyTreeWindow(const NQtPropertyTreeWindow&) = delete;
  NQtPropertyTreeWindow& operator=(const NQtPropertyTreeWindow&) = delete;

  // ---- IPropertyTreeView
  void TreeChanged() override;
  void CurrentPageChanged() override;
  void ButtonsChanged() override;
  void EndDialog(int result) override;

  // The widget built for `page`, or null while it has never been current.
  QWidget* PageWidget(const NPropertyTreePage* page) const;

  // Escape and the title bar's close button end here: Cancel.
  void reject() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  struct BuiltPage {
    QWidget* widget;
    NQtFormWidget* form;
    QPushButton* reset;
  };

  void RebuildTree();
  void SelectCurrentInTree();
  void ShowCurrentPage();
  BuiltPage& Build(NPropertyTreePage* page);
  void OnTreeItem(QTreeWidgetItem* item);
  void UpdateButtons();

  NPropertyTreeDialog& m_dialog;
  QLineEdit* m_search;
  QTreeWidget* m_tree;
  QStackedWidget* m_stack;
  QWidget* m_noPage;
  QDialogButtonBox* m_buttons;
  std::map<const NPropertyTreePage*, BuiltPage> m_pages;
  bool m_fillingTree = false;  // tree changes made here are no person's choice
};
