#include "uicore/qt/NQtFormWidget.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFontDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>

#include "uicore/IDialogBackend.h"
#include "uicore/qt/NQtText.h"

namespace {

QColor FromBgr(std::uint32_t bgr) { return QColor(bgr & 0xff, (bgr >> 8) & 0xff, (bgr >> 16) & 0xff); }

// A strip of sample tabs, drawn from what its control says at each paint:
// a repaint after any edit shows the colours being edited.
class NQtSampleTabs final : public QWidget {
 public:
  explicit NQtSampleTabs(const NFormControl& control) : m_control(control) {
    setMinimumHeight(fontMetrics().height() * 2 + 8);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const std::vector<NSampleTab> tabs = m_control.SampleTabs();
    if (tabs.empty()) return;
    const int gap = 4;
    const qreal width = (this->width() - gap * (static_cast<int>(tabs.size()) - 1)) / static_cast<qreal>(tabs.size());
    const qreal height = this->height() - 2;
    qreal left = 0;
    for (const NSampleTab& tab : tabs) {
      const QRectF box(left, 1, width, height);
      painter.setPen(palette().color(QPalette::Mid));
      painter.setBrush(tab.barIndicator ? FromBgr(tab.background) : FromBgr(tab.indicator));
      painter.drawRoundedRect(box, 4, 4);
      if (tab.barIndicator) {
        const qreal bar = std::max(1, tab.indicatorWidth);
        painter.fillRect(QRectF(box.left() + 3, box.bottom() - bar - 2, box.width() - 6, bar), FromBgr(tab.indicator));
      }
      painter.setPen(palette().color(QPalette::WindowText));
      painter.drawText(box.adjusted(4, 0, -4, -2), Qt::AlignCenter, NToQString(tab.caption));
      left += width + gap;
    }
  }

 private:
  const NFormControl& m_control;
};

const QColor kHighlight(0xff, 0xe8, 0x80);
constexpr int kStringListLines = 5;

QFormLayout* NewFormLayout(QWidget* parent) {
  auto* layout = new QFormLayout(parent);
  layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  layout->setRowWrapPolicy(QFormLayout::DontWrapRows);
  layout->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  return layout;
}

int ClampToInt(std::int64_t n) {
  return static_cast<int>(
      std::clamp<std::int64_t>(n, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// Drawn rather than taken from a font: emoji fonts are often missing.
QPixmap LockPixmap(int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const qreal s = size;
  painter.setPen(QPen(QColor(0x7a, 0x5c, 0x00), s / 8));
  const QRectF shackle(s * 0.3, s * 0.1, s * 0.4, s * 0.45);
  painter.drawArc(shackle, 0, 180 * 16);
  painter.drawLine(QPointF(shackle.left(), shackle.center().y()), QPointF(shackle.left(), s * 0.5));
  painter.drawLine(QPointF(shackle.right(), shackle.center().y()), QPointF(shackle.right(), s * 0.5));
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0xc8, 0x96, 0x00));
  painter.drawRoundedRect(QRectF(s * 0.18, s * 0.45, s * 0.64, s * 0.5), s * 0.08, s * 0.08);
  return pixmap;
}

void SetBold(QWidget* widget, bool bold) {
  QFont font = widget->font();
  if (font.bold() == bold) return;
  font.setBold(bold);
  widget->setFont(font);
}

void SetHighlighted(QWidget* widget, bool on) {
  if (auto* box = qobject_cast<QGroupBox*>(widget)) {
    // Filling the whole box would hide the marks of the controls inside.
    box->setStyleSheet(on ? QStringLiteral("QGroupBox::title { background-color: %1; }").arg(kHighlight.name())
                          : QString());
    return;
  }
  if (widget->autoFillBackground() == on) return;
  widget->setAutoFillBackground(on);
  if (on) {
    QPalette palette = widget->palette();
    palette.setColor(widget->backgroundRole(), kHighlight);  // Button for check boxes
    widget->setPalette(palette);
  } else {
    widget->setPalette(QPalette());  // back to the inherited palette
  }
}

// Colours are stored 0x00BBGGRR.
QColor ColorOf(const NControlValue& value) {
  const std::int64_t* bgr = std::get_if<std::int64_t>(&value);
  if (!bgr) return QColor();
  return QColor(static_cast<int>(*bgr & 0xFF), static_cast<int>((*bgr >> 8) & 0xFF),
                static_cast<int>((*bgr >> 16) & 0xFF));
}

std::int64_t BgrOf(const QColor& color) {
  return static_cast<std::int64_t>(color.red()) | (static_cast<std::int64_t>(color.green()) << 8) |
         (static_cast<std::int64_t>(color.blue()) << 16);
}

QPixmap Swatch(const QColor& color, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(color);
  QPainter painter(&pixmap);
  painter.setPen(Qt::darkGray);
  painter.drawRect(0, 0, size - 1, size - 1);
  return pixmap;
}

// A record's font height is negative for a character height in pixels.
QFont QFontOf(const NControlFont& font, const QFont& base) {
  QFont qfont = base;
  if (!font.face.empty()) qfont.setFamily(NToQString(font.face));
  if (font.height != 0) qfont.setPixelSize(std::abs(font.height));
  qfont.setWeight(font.weight <= 0 ? QFont::Normal : static_cast<QFont::Weight>(std::clamp(font.weight, 100, 900)));
  qfont.setItalic(font.italic);
  return qfont;
}

NControlFont NFontOf(const QFont& qfont, int dpi) {
  int pixels = qfont.pixelSize();
  if (pixels <= 0) pixels = qRound(qfont.pointSizeF() * dpi / 72.0);
  return {NFromQString(qfont.family()), -pixels, static_cast<std::int32_t>(qfont.weight()), qfont.italic()};
}

QString DescribeFont(const NControlFont& font) {
  QString text = font.face.empty() ? QStringLiteral("Default") : NToQString(font.face);
  if (font.height != 0) text += QStringLiteral(", %1 px").arg(std::abs(font.height));
  if (font.weight >= 600) text += QStringLiteral(", bold");
  if (font.italic) text += QStringLiteral(", italic");
  return text;
}

NStringArray LinesOf(const QString& text) {
  NStringArray lines;
  for (const QString& line : text.split(QLatin1Char('\n'))) {
    if (!line.isEmpty()) lines.Add(NFromQString(line));
  }
  return lines;
}

}  // namespace

NQtFormWidget::NQtFormWidget(NForm& form, std::function<void()> changed, QWidget* parent)
    : QWidget(parent), m_form(form), m_changed(std::move(changed)) {
  Build();
  for (Entry& entry : m_entries) Show(entry);
  RefreshStates();
  m_form.SetListener([this](NFormControl& control) { OnControlChanged(control); });
}

NQtFormWidget::~NQtFormWidget() {
  if (!m_detached) m_form.SetListener(nullptr);
}

void NQtFormWidget::Detach() {
  m_form.SetListener(nullptr);
  m_detached = true;
}

void NQtFormWidget::Build() {
  auto* outer = new QVBoxLayout(this);
  QFormLayout* top = NewFormLayout(nullptr);
  outer->addLayout(top);
  outer->addStretch(1);

  std::map<const NFormControl*, QFormLayout*> groups;
  const auto& controls = m_form.Controls();
  // Sized once: the connections below find their entry by index.
  m_entries.resize(controls.size());
  for (std::size_t i = 0; i < controls.size(); ++i) {
    NFormControl& control = *controls[i];
    Entry& entry = m_entries[i];
    entry.control = &control;
    const auto group = groups.find(control.Group());
    QFormLayout* layout = group == groups.end() ? top : group->second;
    const QString label = NToQString(control.Label());
    switch (control.Kind()) {
      case NControlKind::kGroupBox: {
        auto* box = new QGroupBox(label);
        box->setObjectName(label);
        groups[&control] = NewFormLayout(box);
        entry.caption = entry.editor = box;
        layout->addRow(box);
        break;
      }
      case NControlKind::kLabel: {
        auto* text = new QLabel(label);
        text->setObjectName(label);
        text->setWordWrap(true);
        entry.caption = entry.editor = text;
        layout->addRow(text);
        break;
      }
      case NControlKind::kSampleTabs: {
        auto* strip = new NQtSampleTabs(control);
        strip->setObjectName(label);
        entry.caption = entry.editor = strip;
        layout->addRow(strip);
        break;
      }
      case NControlKind::kCheckBox:
      case NControlKind::kButton:
        AddRow(layout, i, nullptr, MakeEditor(i), false);  // the widget shows its own label
        break;
      default: {
        auto* caption = new QLabel(label);
        const NControlKind kind = control.Kind();
        const bool wide = kind == NControlKind::kText || kind == NControlKind::kPassword ||
                          kind == NControlKind::kFile || kind == NControlKind::kFolder ||
                          kind == NControlKind::kStringList;
        AddRow(layout, i, caption, MakeEditor(i), wide);
        AttachResetMenu(caption, i);
        break;
      }
    }
  }
}

void NQtFormWidget::AddRow(QFormLayout* layout, std::size_t index, QLabel* caption, QWidget* editor, bool wide) {
  Entry& entry = m_entries[index];
  entry.editor = editor;
  entry.caption = caption ? static_cast<QWidget*>(caption) : editor;

  auto* field = new QWidget;
  auto* column = new QVBoxLayout(field);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  auto* line = new QHBoxLayout;
  line->setContentsMargins(0, 0, 0, 0);
  line->addWidget(editor, wide ? 1 : 0);
  entry.lockIcon = new QLabel;
  entry.lockIcon->setPixmap(LockPixmap(fontMetrics().height()));
  entry.lockIcon->hide();
  line->addWidget(entry.lockIcon);
  if (!wide) line->addStretch(1);
  column->addLayout(line);

  entry.lockNote = new QLabel;
  entry.lockNote->setWordWrap(true);
  QFont small = entry.lockNote->font();
  small.setPointSizeF(small.pointSizeF() * 0.9);
  small.setItalic(true);
  entry.lockNote->setFont(small);
  entry.lockNote->setForegroundRole(QPalette::PlaceholderText);
  entry.lockNote->hide();
  column->addWidget(entry.lockNote);

  if (caption) {
    caption->setBuddy(editor);
    layout->addRow(caption, field);
  } else {
    layout->setWidget(layout->rowCount(), QFormLayout::FieldRole, field);
  }
}

QWidget* NQtFormWidget::MakeEditor(std::size_t index) {
  Entry& entry = m_entries[index];
  NFormControl& control = *entry.control;
  const QString label = NToQString(control.Label());
  QWidget* named = nullptr;  // the widget a test or a person finds by the label
  QWidget* editor = nullptr;

  switch (control.Kind()) {
    case NControlKind::kCheckBox: {
      auto* box = new QCheckBox(label);
      connect(box, &QCheckBox::toggled, this, [this, index](bool on) { Edit(index, on); });
      entry.show = [box, &control] {
        if (const bool* on = std::get_if<bool>(&control.Value())) box->setChecked(*on);
      };
      AttachResetMenu(box, index);
      named = editor = box;
      break;
    }
    case NControlKind::kNumber: {
      auto* spin = new QSpinBox;
      spin->setRange(ClampToInt(control.Minimum()), ClampToInt(control.Maximum()));
      connect(spin, &QSpinBox::valueChanged, this,
              [this, index](int value) { Edit(index, static_cast<std::int64_t>(value)); });
      entry.show = [spin, &control] {
        if (const std::int64_t* n = std::get_if<std::int64_t>(&control.Value())) spin->setValue(ClampToInt(*n));
      };
      AttachResetMenu(spin, index);
      named = editor = spin;
      break;
    }
    case NControlKind::kText:
    case NControlKind::kPassword:
    case NControlKind::kFile:
    case NControlKind::kFolder: {
      auto* edit = new QLineEdit;
      if (control.Kind() == NControlKind::kPassword) edit->setEchoMode(QLineEdit::Password);
      connect(edit, &QLineEdit::textChanged, this,
              [this, index](const QString& text) { Edit(index, NFromQString(text)); });
      entry.show = [edit, &control] {
        const NUnicodeString* text = std::get_if<NUnicodeString>(&control.Value());
        const QString shown = text ? NToQString(*text) : QString();
        if (edit->text() != shown) edit->setText(shown);
      };
      AttachResetMenu(edit, index, [edit] { return edit->createStandardContextMenu(); });
      named = editor = edit;
      if (control.Kind() == NControlKind::kText || control.Kind() == NControlKind::kPassword) break;

      editor = new QWidget;
      auto* row = new QHBoxLayout(editor);
      row->setContentsMargins(0, 0, 0, 0);
      row->addWidget(edit, 1);
      auto* browse = new QPushButton(QStringLiteral("Browse..."));
      row->addWidget(browse);
      connect(browse, &QPushButton::clicked, this, [this, index] {
        m_entries[index].control->Browse(window());
      });
      break;
    }
    case NControlKind::kChoice: {
      auto* combo = new QComboBox;
      for (const NChoiceItem& item : control.ChoiceItems()) combo->addItem(NToQString(item.label));
      connect(combo, &QComboBox::currentIndexChanged, this, [this, index](int at) {
        const auto& items = m_entries[index].control->ChoiceItems();
        if (at >= 0 && static_cast<std::size_t>(at) < items.size())
          Edit(index, items[static_cast<std::size_t>(at)].value);
      });
      entry.show = [combo, &control] {
        const auto& items = control.ChoiceItems();
        const auto it = std::find_if(items.begin(), items.end(),
                                     [&](const NChoiceItem& item) { return item.value == control.Value(); });
        combo->setCurrentIndex(it == items.end() ? -1 : static_cast<int>(it - items.begin()));
      };
      AttachResetMenu(combo, index);
      named = editor = combo;
      break;
    }
    case NControlKind::kRadioGroup: {
      auto* box = new QWidget;
      auto* column = new QVBoxLayout(box);
      column->setContentsMargins(0, 0, 0, 0);
      auto* group = new QButtonGroup(box);
      const auto& items = control.ChoiceItems();
      for (std::size_t i = 0; i < items.size(); ++i) {
        auto* button = new QRadioButton(NToQString(items[i].label));
        group->addButton(button, static_cast<int>(i));
        column->addWidget(button);
        connect(button, &QRadioButton::toggled, this, [this, index, i](bool on) {
          if (on) Edit(index, m_entries[index].control->ChoiceItems()[i].value);
        });
      }
      entry.show = [group, &control] {
        const auto& choices = control.ChoiceItems();
        const auto it = std::find_if(choices.begin(), choices.end(),
                                     [&](const NChoiceItem& item) { return item.value == control.Value(); });
        if (it != choices.end()) {
          group->button(static_cast<int>(it - choices.begin()))->setChecked(true);
          return;
        }
        // No item holds the value: no button may stay ticked.
        group->setExclusive(false);
        for (QAbstractButton* button : group->buttons()) button->setChecked(false);
        group->setExclusive(true);
      };
      AttachResetMenu(box, index);
      named = editor = box;
      break;
    }
    case NControlKind::kColor: {
      auto* button = new QPushButton;
      const int size = fontMetrics().height();
      button->setIconSize(QSize(size, size));
      connect(button, &QPushButton::clicked, this, [this, index] {
        NFormControl& picked = *m_entries[index].control;
        const QColor color = QColorDialog::getColor(ColorOf(picked.Value()), window(), NToQString(picked.Label()));
        if (color.isValid()) Edit(index, BgrOf(color), false);
      });
      entry.show = [button, size, &control] {
        const QColor color = ColorOf(control.Value());
        button->setIcon(QIcon(Swatch(color.isValid() ? color : QColor(Qt::transparent), size)));
        button->setText(color.isValid() ? color.name().toUpper() : QString());
      };
      AttachResetMenu(button, index);
      named = editor = button;
      break;
    }
    case NControlKind::kFont: {
      auto* button = new QPushButton;
      connect(button, &QPushButton::clicked, this, [this, index] {
        NFormControl& picked = *m_entries[index].control;
        const NControlFont* current = std::get_if<NControlFont>(&picked.Value());
        bool ok = false;
        const QFont chosen = QFontDialog::getFont(&ok, QFontOf(current ? *current : NControlFont{}, font()), window(),
                                                  NToQString(picked.Label()));
        if (ok) Edit(index, NFontOf(chosen, logicalDpiY()), false);
      });
      entry.show = [button, &control] {
        const NControlFont* font = std::get_if<NControlFont>(&control.Value());
        button->setText(font ? DescribeFont(*font) : QString());
      };
      AttachResetMenu(button, index);
      named = editor = button;
      break;
    }
    case NControlKind::kStringList: {
      auto* edit = new QPlainTextEdit;
      edit->setTabChangesFocus(true);
      edit->setLineWrapMode(QPlainTextEdit::NoWrap);
      const QMargins margins = edit->contentsMargins();
      edit->setFixedHeight(edit->fontMetrics().lineSpacing() * kStringListLines + margins.top() + margins.bottom() +
                           2 * static_cast<int>(edit->document()->documentMargin()));
      connect(edit, &QPlainTextEdit::textChanged, this,
              [this, index, edit] { Edit(index, LinesOf(edit->toPlainText())); });
      entry.show = [edit, &control] {
        const NStringArray* lines = std::get_if<NStringArray>(&control.Value());
        const NStringArray shownLines = lines ? *lines : NStringArray();
        if (LinesOf(edit->toPlainText()) == shownLines) return;
        QStringList text;
        for (const NUnicodeString& item : shownLines) text.append(NToQString(item));
        edit->setPlainText(text.join(QLatin1Char('\n')));
      };
      AttachResetMenu(edit, index, [edit] { return edit->createStandardContextMenu(); });
      named = editor = edit;
      break;
    }
    case NControlKind::kButton: {
      auto* button = new QPushButton(label);
      connect(button, &QPushButton::clicked, this, [this, index] {
        // The action may change what other controls depend on.
        if (m_entries[index].control->Press()) {
          RefreshStates();
          if (m_changed) m_changed();
        }
      });
      named = editor = button;
      break;
    }
    case NControlKind::kGroupBox:
    case NControlKind::kLabel:
    case NControlKind::kSampleTabs:
      break;  // made by Build: they have no value
  }
  if (named) named->setObjectName(label);
  return editor;
}

void NQtFormWidget::AttachResetMenu(QWidget* widget, std::size_t index, std::function<QMenu*()> standardMenu) {
  widget->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(widget, &QWidget::customContextMenuRequested, this,
          [this, widget, index, standardMenu = std::move(standardMenu)](const QPoint& at) {
            NFormControl& control = *m_entries[index].control;
            QMenu* menu = standardMenu ? standardMenu() : new QMenu(widget);
            menu->setAttribute(Qt::WA_DeleteOnClose);
            if (!menu->isEmpty()) menu->addSeparator();
            QAction* reset = menu->addAction(QStringLiteral("Reset to default"));
            reset->setEnabled(control.IsEnabled() && control.IsModifiedFromDefault());
            connect(reset, &QAction::triggered, this, [this, index] { m_entries[index].control->ResetToDefault(); });
            menu->popup(widget->mapToGlobal(at));
          });
}

void NQtFormWidget::Edit(std::size_t index, NControlValue value, bool shown) {
  if (m_showing) return;
  Entry& entry = m_entries[index];
  m_editing = shown ? entry.control : nullptr;
  const NEditResult result = entry.control->SetValue(std::move(value));
  m_editing = nullptr;
  if (result != NEditResult::kDone && result != NEditResult::kUnchanged) Show(entry);
}

void NQtFormWidget::Show(Entry& entry) {
  if (!entry.show) return;
  m_showing = true;
  entry.show();
  m_showing = false;
}

void NQtFormWidget::OnControlChanged(NFormControl& control) {
  for (Entry& entry : m_entries) {
    if (entry.control == &control && &control != m_editing) Show(entry);
  }
  RefreshStates();
  if (m_changed) m_changed();
}

void NQtFormWidget::RefreshStates() {
  for (Entry& entry : m_entries) {
    const NFormControl& control = *entry.control;
    const std::optional<NUnicodeString> lock = control.LockReason();
    const bool enabled = control.IsEnabled();
    entry.editor->setEnabled(enabled);
    if (entry.caption != entry.editor) entry.caption->setEnabled(enabled);
    const QString tip = NToQString(lock ? *lock : control.TipText());
    entry.editor->setToolTip(tip);
    entry.caption->setToolTip(tip);
    if (entry.lockIcon) {
      entry.lockIcon->setVisible(lock.has_value());
      entry.lockIcon->setToolTip(tip);
    }
    if (entry.lockNote) {
      entry.lockNote->setText(lock ? NToQString(*lock) : QString());
      entry.lockNote->setVisible(lock.has_value());
    }
    if (control.Kind() == NControlKind::kSampleTabs) entry.editor->update();
    if (control.HasValue()) SetBold(entry.caption, control.IsModifiedFromDefault());
    SetHighlighted(entry.caption, control.IsHighlighted());
  }
}

bool NQtFormWidget::HasResettable() const {
  return std::any_of(m_entries.begin(), m_entries.end(), [](const Entry& entry) {
    return entry.control->HasValue() && entry.control->IsEnabled() && entry.control->IsModifiedFromDefault();
  });
}
