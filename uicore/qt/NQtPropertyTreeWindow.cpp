#include "uicore/qt/NQtPropertyTreeWindow.h"

#include <QDialogButtonBox>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

#include "uicore/qt/NQtFormWidget.h"
#include "uicore/qt/NQtText.h"

namespace {

constexpr int kDefaultWidth = 760;
constexpr int kDefaultHeight = 520;
constexpr int kTreeWidth = 200;

NPropertyTreePage* PageOf(const QTreeWidgetItem* item) {
  return reinterpret_cast<NPropertyTreePage*>(item->data(0, Qt::UserRole).value<quintptr>());
}

}  // namespace

NQtPropertyTreeWindow::NQtPropertyTreeWindow(NPropertyTreeDialog& dialog, QWidget* parent)
    : QDialog(parent), m_dialog(dialog) {
  setWindowTitle(NToQString(dialog.Title()));
  setSizeGripEnabled(true);

  m_search = new QLineEdit;
  m_search->setObjectName(QStringLiteral("search"));
  m_search->setPlaceholderText(QStringLiteral("Search"));
  m_search->setClearButtonEnabled(true);
  m_tree = new QTreeWidget;
  m_tree->setObjectName(QStringLiteral("pageTree"));
  m_tree->setHeaderHidden(true);
  m_tree->setUniformRowHeights(true);
  auto* left = new QWidget;
  auto* leftColumn = new QVBoxLayout(left);
  leftColumn->setContentsMargins(0, 0, 0, 0);
  leftColumn->addWidget(m_search);
  leftColumn->addWidget(m_tree, 1);

  m_stack = new QStackedWidget;
  m_noPage = new QWidget;
  m_stack->addWidget(m_noPage);

  auto* splitter = new QSplitter;
  splitter->addWidget(left);
  splitter->addWidget(m_stack);
  splitter->setChildrenCollapsible(false);
  splitter->setStretchFactor(0, 0);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({kTreeWidth, kDefaultWidth - kTreeWidth});

  m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply);
  auto* column = new QVBoxLayout(this);
  column->addWidget(splitter, 1);
  column->addWidget(m_buttons);

  connect(m_search, &QLineEdit::textChanged, this,
          [this](const QString& text) { m_dialog.SetSearch(NFromQString(text)); });
  connect(m_tree, &QTreeWidget::currentItemChanged, this,
          [this](QTreeWidgetItem* item, QTreeWidgetItem*) { OnTreeItem(item); });
  connect(m_buttons, &QDialogButtonBox::clicked, this, [this](QAbstractButton* button) {
    switch (m_buttons->standardButton(button)) {
      case QDialogButtonBox::Ok:
        m_dialog.PressOk();  // the logic ends the dialog through EndDialog
        break;
      case QDialogButtonBox::Apply:
        m_dialog.PressApply();
        break;
      default:
        reject();
        break;
    }
  });

  resize(kDefaultWidth, kDefaultHeight);
  RebuildTree();
  ShowCurrentPage();
}

NQtPropertyTreeWindow::~NQtPropertyTreeWindow() = default;

void NQtPropertyTreeWindow::TreeChanged() {
  // A removed page may be destroyed once out of the tree: drop its widgets
  // now, deleted later, as this may run in one of their own signals.
  for (auto it = m_pages.begin(); it != m_pages.end();) {
    if (it->first->Dialog() == &m_dialog) {
      ++it;
      continue;
    }
    it->second.form->Detach();
    it->second.widget->deleteLater();
    it = m_pages.erase(it);
  }
  RebuildTree();
  // A search changes the highlighted controls without changing a value.
  for (auto& [page, built] : m_pages) built.form->RefreshStates();
}

void NQtPropertyTreeWindow::CurrentPageChanged() { ShowCurrentPage(); }

void NQtPropertyTreeWindow::ButtonsChanged() { UpdateButtons(); }

void NQtPropertyTreeWindow::EndDialog(int result) { done(result); }

QWidget* NQtPropertyTreeWindow::PageWidget(const NPropertyTreePage* page) const {
  const auto it = m_pages.find(page);
  return it == m_pages.end() ? nullptr : it->second.widget;
}

void NQtPropertyTreeWindow::reject() {
  if (m_dialog.Result() == 0) m_dialog.PressCancel();
  // Not the dialog's view, or already ended: the logic cannot close it.
  if (isVisible()) done(m_dialog.Result() != 0 ? static_cast<int>(m_dialog.Result()) : IModalDialog::kCancel);
}

void NQtPropertyTreeWindow::keyPressEvent(QKeyEvent* event) {
  // Enter in the search box would press OK, the default button.
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && focusWidget() == m_search) {
    event->accept();
    return;
  }
  QDialog::keyPressEvent(event);
}

void NQtPropertyTreeWindow::RebuildTree() {
  m_fillingTree = true;
  m_tree->clear();
  std::vector<QTreeWidgetItem*> parents;  // the latest item at each depth
  for (const NPropertyTreeDialog::Row& row : m_dialog.VisibleRows()) {
    const std::size_t depth = std::min(static_cast<std::size_t>(std::max(row.depth, 0)), parents.size());
    parents.resize(depth);
    auto* item = depth == 0 ? new QTreeWidgetItem(m_tree) : new QTreeWidgetItem(parents.back());
    item->setText(0, NToQString(row.page->Title()));
    item->setData(0, Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(row.page)));
    parents.push_back(item);
  }
  m_tree->expandAll();
  m_fillingTree = false;
  SelectCurrentInTree();
}

void NQtPropertyTreeWindow::SelectCurrentInTree() {
  m_fillingTree = true;
  QTreeWidgetItem* current = nullptr;
  for (QTreeWidgetItemIterator it(m_tree); *it && !current; ++it) {
    if (PageOf(*it) == m_dialog.CurrentPage()) current = *it;
  }
  m_tree->setCurrentItem(current);
  if (current) {
    m_tree->scrollToItem(current);
  } else {
    m_tree->clearSelection();
  }
  m_fillingTree = false;
}

void NQtPropertyTreeWindow::OnTreeItem(QTreeWidgetItem* item) {
  if (m_fillingTree || !item) return;
  NPropertyTreePage* page = PageOf(item);
  if (page == m_dialog.CurrentPage()) return;
  // Accepted, the logic calls CurrentPageChanged. Refused, the click still
  // goes on to select the item: put the selection back after it.
  if (!m_dialog.SelectPage(page)) QTimer::singleShot(0, this, [this] { SelectCurrentInTree(); });
}

void NQtPropertyTreeWindow::ShowCurrentPage() {
  NPropertyTreePage* page = m_dialog.CurrentPage();
  m_stack->setCurrentWidget(page ? Build(page).widget : m_noPage);
  SelectCurrentInTree();
  UpdateButtons();
}

NQtPropertyTreeWindow::BuiltPage& NQtPropertyTreeWindow::Build(NPropertyTreePage* page) {
  const auto found = m_pages.find(page);
  if (found != m_pages.end()) return found->second;

  const QString title = NToQString(page->Title());
  auto* widget = new QWidget;
  widget->setObjectName(title);
  auto* column = new QVBoxLayout(widget);
  column->setContentsMargins(6, 0, 0, 0);

  auto* header = new QHBoxLayout;
  auto* heading = new QLabel(title);
  QFont font = heading->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.25);
  heading->setFont(font);
  header->addWidget(heading, 1);
  auto* reset = new QPushButton(QStringLiteral("Reset Page to Defaults"));
  const auto& controls = page->Form().Controls();
  reset->setVisible(std::any_of(controls.begin(), controls.end(), [](const auto& c) { return c->HasValue(); }));
  connect(reset, &QPushButton::clicked, this, [page] { page->Form().ResetToDefaults(); });
  header->addWidget(reset);
  column->addLayout(header);

  auto* rule = new QFrame;
  rule->setFrameShape(QFrame::HLine);
  rule->setFrameShadow(QFrame::Sunken);
  column->addWidget(rule);

  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  auto* form = new NQtFormWidget(page->Form(), [this] { UpdateButtons(); });
  scroll->setWidget(form);
  column->addWidget(scroll, 1);

  m_stack->addWidget(widget);
  BuiltPage& built = m_pages.emplace(page, BuiltPage{widget, form, reset}).first->second;
  reset->setEnabled(form->HasResettable());
  return built;
}

void NQtPropertyTreeWindow::UpdateButtons() {
  m_buttons->button(QDialogButtonBox::Ok)->setEnabled(m_dialog.IsOkEnabled());
  m_buttons->button(QDialogButtonBox::Apply)->setEnabled(m_dialog.IsApplyEnabled());
  for (auto& [page, built] : m_pages) built.reset->setEnabled(built.form->HasResettable());
}
