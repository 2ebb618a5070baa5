#include "uicore/qt/NQtDialogBackend.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <limits>

#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"
#include "uicore/NProgressDialog.h"
#include "uicore/NPropertyTreeDialog.h"
#include "uicore/qt/NQtPropertyTreeWindow.h"
#include "uicore/qt/NQtText.h"

namespace {

constexpr int kProgressPollMs = 50;
constexpr int kProgressScale = 10000;  // QProgressDialog counts in int

// Runs `run` on the GUI thread, waiting for it from any other thread.
template <typename Function>
void OnGuiThread(Function run) {
  QCoreApplication* app = QCoreApplication::instance();
  if (!app || QThread::currentThread() == app->thread()) {
    run();
    return;
  }
  QMetaObject::invokeMethod(app, run, Qt::BlockingQueuedConnection);
}

QWidget* ParentWidget(void* parent) {
  if (parent) return static_cast<QWidget*>(parent);
  QWidget* modal = QApplication::activeModalWidget();
  return modal ? modal : QApplication::activeWindow();
}

QMessageBox::StandardButtons ButtonsOf(unsigned style) {
  switch (style & kMessageBoxButtonsMask) {
    case kMessageBoxOkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case kMessageBoxYesNo:
      return QMessageBox::Yes | QMessageBox::No;
    default:
      return QMessageBox::Ok;
  }
}

QMessageBox::Icon IconOf(unsigned style) {
  // Warning's bits are Error's and Question's together: compare, not mask.
  switch (style & kMessageBoxIconMask) {
    case kMessageBoxIconError:
      return QMessageBox::Critical;
    case kMessageBoxIconQuestion:
      return QMessageBox::Question;
    case kMessageBoxIconWarning:
      return QMessageBox::Warning;
    case kMessageBoxIconInformation:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

int IdOf(int pressed, unsigned style) {
  switch (pressed) {
    case QMessageBox::Ok:
      return kMessageBoxIdOk;
    case QMessageBox::Cancel:
      return kMessageBoxIdCancel;
    case QMessageBox::Yes:
      return kMessageBoxIdYes;
    case QMessageBox::No:
      return kMessageBoxIdNo;
    default:
      return (style & kMessageBoxButtonsMask) == kMessageBoxYesNo ? kMessageBoxIdYes : kMessageBoxIdOk;
  }
}

// `ticked` non-null: with the "do not display this message again" box.
int ShowMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style, bool* ticked) {
  int result = 0;
  OnGuiThread([&] {
    const QString title = caption.empty() ? NToQString(NGetAppName()) : NToQString(caption);
    QMessageBox box(IconOf(style), title, NToQString(text), ButtonsOf(style), ParentWidget(parent));
    box.setDefaultButton((style & kMessageBoxButtonsMask) == kMessageBoxYesNo ? QMessageBox::Yes : QMessageBox::Ok);
    if (ticked) box.setCheckBox(new QCheckBox(QStringLiteral("Do not display this message again")));
    result = IdOf(box.exec(), style);
    if (ticked) *ticked = box.checkBox()->isChecked();
  });
  return result;
}

void ShowProgress(QProgressDialog& box, const NProgressDialog& dialog) {
  const std::uint64_t total = dialog.Total();
  const std::uint64_t done = std::min(dialog.Done(), total);
  const bool scaled = total > static_cast<std::uint64_t>(std::numeric_limits<int>::max());
  const int maximum = scaled ? kProgressScale : static_cast<int>(total);
  const int value = scaled ? static_cast<int>(done * static_cast<double>(kProgressScale) / static_cast<double>(total))
                           : static_cast<int>(done);
  const QString text = NToQString(dialog.Text());
  if (box.labelText() != text) box.setLabelText(text);
  if (box.maximum() != maximum) box.setRange(0, maximum);  // 0 of 0: busy
  // A modal box's setValue processes events: only when it moved.
  if (box.value() != value) box.setValue(value);
}

}  // namespace

std::intptr_t NQtDialogBackend::RunPropertyTree(NPropertyTreeDialog& dialog, void* parent) {
  NQtPropertyTreeWindow window(dialog, static_cast<QWidget*>(parent));
  dialog.SetView(&window);
  window.exec();
  dialog.SetView(nullptr);
  return dialog.Result();
}

int NQtDialogBackend::MessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style) {
  return ShowMessageBox(parent, text, caption, style, nullptr);
}

int NQtDialogBackend::OptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption,
                                         unsigned style, bool* dontShowAgain) {
  bool ticked = false;
  const int result = ShowMessageBox(parent, text, caption, style, &ticked);
  if (dontShowAgain) *dontShowAgain = ticked;
  return result;
}

int NQtDialogBackend::Choose(void* parent, std::u16string_view caption, std::u16string_view text,
                             std::u16string_view note, const std::vector<NUnicodeString>& choices) {
  int result = -1;
  OnGuiThread([&] {
    const QString title = caption.empty() ? NToQString(NGetAppName()) : NToQString(caption);
    QMessageBox box(QMessageBox::Question, title, NToQString(text), QMessageBox::NoButton, ParentWidget(parent));
    box.setInformativeText(NToQString(note));
    std::vector<QAbstractButton*> buttons;
    for (const NUnicodeString& choice : choices) {
      buttons.push_back(box.addButton(NToQString(choice), QMessageBox::AcceptRole));
    }
    if (!buttons.empty()) box.setDefaultButton(static_cast<QPushButton*>(buttons.front()));
    box.exec();
    const auto chosen = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    if (chosen != buttons.end()) result = static_cast<int>(chosen - buttons.begin());
  });
  return result;
}

void NQtDialogBackend::RunProgress(NProgressDialog& dialog, void* parent) {
  OnGuiThread([&] {
    if (dialog.IsClosePosted()) return;
    QProgressDialog box(ParentWidget(parent));
    box.setWindowTitle(NToQString(NGetAppName()));
    box.setWindowModality(Qt::ApplicationModal);
    box.setCancelButton(nullptr);
    box.setAutoClose(false);
    box.setAutoReset(false);
    box.setMinimumDuration(0);
    box.setRange(0, 0);
    ShowProgress(box, dialog);
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &box, [&] {
      if (dialog.IsClosePosted()) {
        box.done(QDialog::Accepted);
        return;
      }
      ShowProgress(box, dialog);
    });
    poll.start(kProgressPollMs);
    // Only the worker ends it: a person's Escape shows it again.
    while (!dialog.IsClosePosted()) box.exec();
  });
}

std::optional<NUnicodeString> NQtDialogBackend::PickFolder(void* parent, std::u16string_view prompt,
                                                           std::u16string_view initial) {
  QString folder;
  OnGuiThread([&] {
    folder = QFileDialog::getExistingDirectory(ParentWidget(parent), NToQString(prompt), NToQString(initial));
  });
  if (folder.isEmpty()) return std::nullopt;
  return NFromQString(folder);
}

std::optional<NUnicodeString> NQtDialogBackend::PickFile(void* parent, std::u16string_view title,
                                                         std::u16string_view initial, std::u16string_view filter) {
  QString file;
  OnGuiThread([&] {
    file =
        QFileDialog::getOpenFileName(ParentWidget(parent), NToQString(title), NToQString(initial), NToQString(filter));
  });
  if (file.isEmpty()) return std::nullopt;
  return NFromQString(file);
}
