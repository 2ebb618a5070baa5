#pragma once

#include <cstdint>
#include <vector>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "uicore/IDialogBackend.h"
#include "uicore/IPropertyTreeDialog.h"
#include "uicore/NPropertyPageStateMap.h"
#include "uicore/NPropertyTreePage.h"

// Whether a dialog opened in `mode` may not save: the session is locked by
// another of its users (mode 2).
CFGDECK_API bool NIsReadOnly(int mode);

// A dialog of pages in a tree: the page tree on the left, with a search box
// above it, the current page's form on the right, OK, Cancel and Apply.
// This is its logic; the backend (IDialogBackend) draws it and feeds it a
// person's actions through the operations under "Driving", which the tests
// call directly.
//
// OK and Apply ask every shown page, in tree order, to validate, then every
// one to store; the first refusal selects its page, shows its message and
// keeps the dialog open, with nothing stored. Cancel drops every edit. The
// pages' records are written by the pages; saving a record to its store is
// the caller's, after OK (or in OnApplied).
//
// Derived dialogs add their pages in their constructor and pick what to
// show in OnInitDialog. UI thread only.
class NPropertyTreeDialog : public IPropertyTreeDialog {
 public:
  // One line of the tree as drawn: a page and its depth.
  struct Row {
    NPropertyTreePage* page;
    int depth;
  };

  NPropertyTreeDialog(NUnicodeString title, int resourceId, NPropertyPageStateMap* stateMap, void* parent);
  ~NPropertyTreeDialog() override;

  // ---- IPropertyTreeDialog
  void AddPage(NPropertyTreePage* page, NPropertyTreePage* parent = nullptr) override;
  void ShowPage(NPropertyTreePage* page) override;
  void HidePage(NPropertyTreePage* page) override;
  void RemovePage(NPropertyTreePage* page) override;
  void SuspendRedraw() override;
  void ResumeRedraw() override;
  void SetModified(bool modified) override;
  void SetClearSelected(bool clear) override { m_clearSelected = clear; }
  void SetNewSession(bool newSession) override { m_newSession = newSession; }
  void DisableOkButton(bool disable) override;
  NPropertyPageStateMap* GetPageStateMap() const override { return m_stateMap; }

  // Runs the dialog in the installed backend; IModalDialog::kOk for OK.
  std::intptr_t DoModal();
  // What DoModal does before the backend runs: OnInitDialog, then the
  // first page is selected (the remembered one, when shown). A window that
  // shows the dialog without a modal run (a screenshot) calls it first.
  void Open();

  const NUnicodeString& Title() const { return m_title; }
  int ResourceId() const { return m_resourceId; }
  bool IsNewSession() const { return m_newSession; }
  bool IsClearSelected() const { return m_clearSelected; }
  bool IsOkEnabled() const { return !m_okDisabled; }
  // Something may be applied: a page's form changed, or SetModified.
  bool IsApplyEnabled() const;
  bool IsRedrawSuspended() const { return m_redrawSuspended > 0; }

  // ---- The tree
  // The pages drawn, in order: shown pages whose ancestors are shown, and,
  // while a search is on, only those matching it and their ancestors.
  std::vector<Row> VisibleRows() const;
  // Every page in the tree, hidden ones too, depth first.
  std::vector<Row> AllRows() const;
  // In the tree and shown, with every ancestor.
  bool IsPageShown(const NPropertyTreePage* page) const;
  NPropertyTreePage* FindPage(std::u16string_view title) const;
  NPropertyTreePage* ParentOf(const NPropertyTreePage* page) const;
  NPropertyTreePage* CurrentPage() const { return m_current; }

  // ---- Driving
  // Makes `page` current: the current page's OnKillActive, then the new
  // one's OnSetActive. False when either refused or the page is not shown.
  bool SelectPage(NPropertyTreePage* page);
  // Narrows the tree to the pages whose title or controls match `text`,
  // without case, and highlights the matching controls; empty shows all.
  void SetSearch(std::u16string_view text);
  const NUnicodeString& Search() const { return m_search; }
  // OK: validate and store every shown page, then end with kOk. False
  // (dialog kept open) when OK is disabled or a page refused.
  bool PressOk();
  // As OK, without ending; the dialog stays open either way.
  bool PressApply();
  void PressCancel();
  // The result the dialog ended with, or 0 while it runs.
  std::intptr_t Result() const { return m_result; }

  // The window showing the dialog, while it runs (the backend sets it).
  void SetView(IPropertyTreeView* view) { m_view = view; }

 protected:
  // When the window is made, before the first page is selected.
  virtual void OnInitDialog() {}
  // After OK or Apply stored the pages: a dialog that saves its record does
  // so here. False with the failure keeps the dialog open.
  virtual bool OnApplied(NPageFailure&) { return true; }

 private:
  struct Node {
    NPropertyTreePage* page;
    NPropertyTreePage* parent;
    bool shown;
  };

  friend class NPropertyTreePage;
  // Drops `page` and the pages under it without a call to any page or to
  // the window: the page is being destroyed (a derived dialog's pages go
  // before the dialog does).
  void Forget(NPropertyTreePage* page);
  // Takes `page` and the pages under it out of m_nodes; the pages are told
  // they have no dialog.
  void Unlink(NPropertyTreePage* page);
  Node* NodeOf(const NPropertyTreePage* page);
  const Node* NodeOf(const NPropertyTreePage* page) const;
  bool IsOwnSubtree(const NPropertyTreePage* page, const NPropertyTreePage* root) const;
  void SetShown(NPropertyTreePage* page, bool shown);
  bool MatchesSearch(const NPropertyTreePage* page) const;
  // The pages under `parent`, depth first: the shown ones, and with
  // `hidden` the others too; `searched`: only those the search keeps.
  void AppendRows(const NPropertyTreePage* parent, int depth, bool searched, std::vector<Row>& rows,
                  bool hidden = false) const;
  void SelectInitialPage();
  void EnsureCurrentVisible();
  bool ApplyPages();
  void Fail(NPropertyTreePage* page, const NPageFailure& failure);
  void End(std::intptr_t result);
  void NotifyTree();
  void NotifyCurrent();
  void NotifyButtons();

  NUnicodeString m_title;
  int m_resourceId;
  NPropertyPageStateMap* m_stateMap;
  void* m_parent;
  std::vector<Node> m_nodes;  // tree order within each parent: insertion order
  NPropertyTreePage* m_current = nullptr;
  NUnicodeString m_search;
  NUnicodeString m_foldedSearch;
  IPropertyTreeView* m_view = nullptr;
  int m_redrawSuspended = 0;
  bool m_treeChangedWhileSuspended = false;
  bool m_modified = false;
  bool m_clearSelected = false;
  bool m_newSession = false;
  bool m_okDisabled = false;
  std::intptr_t m_result = 0;
};
