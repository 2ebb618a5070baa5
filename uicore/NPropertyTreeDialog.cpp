#include "uicore/NPropertyTreeDialog.h"

#include <algorithm>

#include "uicore/NMessageBox.h"

bool NIsReadOnly(int mode) { return mode == 2; }

NPropertyTreeDialog::NPropertyTreeDialog(NUnicodeString title, int resourceId, NPropertyPageStateMap* stateMap,
                                         void* parent)
    : m_title(std::move(title)), m_resourceId(resourceId), m_stateMap(stateMap), m_parent(parent) {}

NPropertyTreeDialog::~NPropertyTreeDialog() {
  for (Node& node : m_nodes) node.page->m_dialog = nullptr;
}

NPropertyTreeDialog::Node* NPropertyTreeDialog::NodeOf(const NPropertyTreePage* page) {
  auto it = std::find_if(m_nodes.begin(), m_nodes.end(), [page](const Node& node) { return node.page == page; });
  return it == m_nodes.end() ? nullptr : &*it;
}

const NPropertyTreeDialog::Node* NPropertyTreeDialog::NodeOf(const NPropertyTreePage* page) const {
  return const_cast<NPropertyTreeDialog*>(this)->NodeOf(page);
}

NPropertyTreePage* NPropertyTreeDialog::ParentOf(const NPropertyTreePage* page) const {
  const Node* node = NodeOf(page);
  return node ? node->parent : nullptr;
}

bool NPropertyTreeDialog::IsOwnSubtree(const NPropertyTreePage* page, const NPropertyTreePage* root) const {
  for (const NPropertyTreePage* p = page; p; p = ParentOf(p)) {
    if (p == root) return true;
  }
  return false;
}

void NPropertyTreeDialog::AddPage(NPropertyTreePage* page, NPropertyTreePage* parent) {
  if (!page || NodeOf(page) || (parent && !NodeOf(parent))) return;
  m_nodes.push_back({page, parent, true});
  page->m_dialog = this;
  NotifyTree();
}

void NPropertyTreeDialog::ShowPage(NPropertyTreePage* page) { SetShown(page, true); }

void NPropertyTreeDialog::HidePage(NPropertyTreePage* page) { SetShown(page, false); }

void NPropertyTreeDialog::SetShown(NPropertyTreePage* page, bool shown) {
  Node* node = NodeOf(page);
  if (!node || node->shown == shown) return;
  node->shown = shown;
  page->OnShow(shown);
  NotifyTree();
  EnsureCurrentVisible();
}

void NPropertyTreeDialog::Unlink(NPropertyTreePage* page) {
  // Which pages go is decided on the whole tree before any node moves: the
  // walk up to `page` reads the nodes.
  std::vector<NPropertyTreePage*> gone;
  for (const Node& node : m_nodes) {
    if (IsOwnSubtree(node.page, page)) gone.push_back(node.page);
  }
  std::erase_if(m_nodes,
                [&](const Node& node) { return std::find(gone.begin(), gone.end(), node.page) != gone.end(); });
  for (NPropertyTreePage* removed : gone) {
    removed->m_dialog = nullptr;
    if (removed == m_current) m_current = nullptr;
  }
}

void NPropertyTreeDialog::RemovePage(NPropertyTreePage* page) {
  if (!NodeOf(page)) return;
  Unlink(page);
  NotifyTree();
  EnsureCurrentVisible();
}

void NPropertyTreeDialog::Forget(NPropertyTreePage* page) { Unlink(page); }

void NPropertyTreeDialog::SuspendRedraw() { ++m_redrawSuspended; }

void NPropertyTreeDialog::ResumeRedraw() {
  if (m_redrawSuspended == 0 || --m_redrawSuspended > 0) return;
  if (m_treeChangedWhileSuspended) {
    m_treeChangedWhileSuspended = false;
    NotifyTree();
  }
}

void NPropertyTreeDialog::SetModified(bool modified) {
  m_modified = modified;
  NotifyButtons();
}

void NPropertyTreeDialog::DisableOkButton(bool disable) {
  m_okDisabled = disable;
  NotifyButtons();
}

bool NPropertyTreeDialog::IsApplyEnabled() const {
  return m_modified ||
         std::any_of(m_nodes.begin(), m_nodes.end(), [](const Node& node) { return node.page->Form().IsChanged(); });
}

bool NPropertyTreeDialog::IsPageShown(const NPropertyTreePage* page) const {
  const Node* node = NodeOf(page);
  for (; node; node = node->parent ? NodeOf(node->parent) : nullptr) {
    if (!node->shown) return false;
    if (!node->parent) return true;
  }
  return false;
}

NPropertyTreePage* NPropertyTreeDialog::FindPage(std::u16string_view title) const {
  for (const Node& node : m_nodes) {
    if (node.page->Title() == title) return node.page;
  }
  return nullptr;
}

bool NPropertyTreeDialog::MatchesSearch(const NPropertyTreePage* page) const {
  return NFoldText(page->Title()).find(m_foldedSearch) != NUnicodeString::npos || page->Form().Matches(m_foldedSearch);
}

void NPropertyTreeDialog::AppendRows(const NPropertyTreePage* parent, int depth, bool searched, std::vector<Row>& rows,
                                     bool hidden) const {
  for (const Node& node : m_nodes) {
    if (node.parent != parent || (!node.shown && !hidden)) continue;
    const std::size_t at = rows.size();
    rows.push_back({node.page, depth});
    AppendRows(node.page, depth + 1, searched, rows, hidden);
    // While searching, a page stays for its own match or to hold a match.
    const bool keep = !searched || m_foldedSearch.empty() || rows.size() > at + 1 || MatchesSearch(node.page);
    if (!keep) rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(at));
  }
}

std::vector<NPropertyTreeDialog::Row> NPropertyTreeDialog::VisibleRows() const {
  std::vector<Row> rows;
  AppendRows(nullptr, 0, true, rows);
  return rows;
}

std::vector<NPropertyTreeDialog::Row> NPropertyTreeDialog::AllRows() const {
  std::vector<Row> rows;
  AppendRows(nullptr, 0, false, rows, true);
  return rows;
}

bool NPropertyTreeDialog::SelectPage(NPropertyTreePage* page) {
  if (page == m_current) return true;
  if (!IsPageShown(page)) return false;
  if (m_current && !m_current->OnKillActive()) return false;
  if (!page->OnSetActive()) return false;
  m_current = page;
  NotifyCurrent();
  return true;
}

void NPropertyTreeDialog::EnsureCurrentVisible() {
  const std::vector<Row> rows = VisibleRows();
  const bool visible = std::any_of(rows.begin(), rows.end(), [this](const Row& row) { return row.page == m_current; });
  if (visible || (!m_current && m_result != 0)) return;
  // The current page left the tree: the first one drawn takes its place,
  // with no say for the page that went.
  m_current = nullptr;
  for (const Row& row : rows) {
    if (row.page->OnSetActive()) {
      m_current = row.page;
      break;
    }
  }
  NotifyCurrent();
}

void NPropertyTreeDialog::SelectInitialPage() {
  if (m_stateMap && !m_clearSelected && !m_stateMap->LastPage().empty()) {
    for (const Row& row : VisibleRows()) {
      if (row.page->GetStateMapName() == m_stateMap->LastPage() && SelectPage(row.page)) return;
    }
  }
  EnsureCurrentVisible();
}

void NPropertyTreeDialog::SetSearch(std::u16string_view text) {
  m_search = NUnicodeString(text);
  m_foldedSearch = NFoldText(text);
  for (Node& node : m_nodes) node.page->Form().Highlight(m_foldedSearch);
  NotifyTree();
  EnsureCurrentVisible();
}

void NPropertyTreeDialog::Fail(NPropertyTreePage* page, const NPageFailure& failure) {
  if (page && page != m_current && IsPageShown(page) && page->OnSetActive()) {
    m_current = page;
    NotifyCurrent();
  }
  NMessageBox(m_parent, failure.code, failure.text, m_title, failure.style);
}

bool NPropertyTreeDialog::ApplyPages() {
  if (m_current && !m_current->OnKillActive()) return false;
  // Every shown page, searched for or not, in tree order: the first
  // failure is the first a person meets.
  std::vector<Row> order;
  AppendRows(nullptr, 0, false, order);
  for (const Row& row : order) {
    NPageFailure failure;
    if (!row.page->OnValidate(failure)) {
      Fail(row.page, failure);
      return false;
    }
  }
  for (const Row& row : order) {
    if (!row.page->OnOK()) {
      NPageFailure failure;
      failure.text = u"The settings on the page \"" + row.page->Title() + u"\" could not be stored.";
      failure.style = kMessageBoxOk | kMessageBoxIconError;
      Fail(row.page, failure);
      return false;
    }
  }
  NPageFailure failure;
  if (!OnApplied(failure)) {
    Fail(nullptr, failure);
    return false;
  }
  m_modified = false;
  NotifyButtons();
  return true;
}

bool NPropertyTreeDialog::PressOk() {
  if (m_okDisabled || m_result != 0 || !ApplyPages()) return false;
  End(IModalDialog::kOk);
  return true;
}

bool NPropertyTreeDialog::PressApply() { return m_result == 0 && ApplyPages(); }

void NPropertyTreeDialog::PressCancel() {
  if (m_result != 0) return;
  for (Node& node : m_nodes) node.page->OnCancel();
  End(IModalDialog::kCancel);
}

void NPropertyTreeDialog::End(std::intptr_t result) {
  m_result = result;
  if (m_stateMap && m_current) m_stateMap->SetLastPage(m_current->GetStateMapName());
  if (m_view) m_view->EndDialog(static_cast<int>(result));
}

void NPropertyTreeDialog::Open() {
  m_result = 0;
  m_current = nullptr;
  OnInitDialog();
  SelectInitialPage();
}

std::intptr_t NPropertyTreeDialog::DoModal() {
  Open();
  NDialogBackend().RunPropertyTree(*this, m_parent);
  if (m_result == 0) PressCancel();  // the window went without OK or Cancel
  return m_result;
}

void NPropertyTreeDialog::NotifyTree() {
  if (m_redrawSuspended > 0) {
    m_treeChangedWhileSuspended = true;
  } else if (m_view) {
    m_view->TreeChanged();
  }
}

void NPropertyTreeDialog::NotifyCurrent() {
  if (m_view) m_view->CurrentPageChanged();
}

void NPropertyTreeDialog::NotifyButtons() {
  if (m_view) m_view->ButtonsChanged();
}
