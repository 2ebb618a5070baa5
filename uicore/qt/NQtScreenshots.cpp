#include "uicore/qt/NQtScreenshots.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>

#include "uicore/NHeadlessDialogBackend.h"
#include "uicore/NPropertyTreeDialog.h"
#include "uicore/qt/NQtPropertyTreeWindow.h"
#include "uicore/qt/NQtText.h"

namespace {

// Lets layouts and paints that a page change queued take place.
void Settle() {
  for (int i = 0; i < 3; ++i) {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
  }
}

QString FileName(int position, const NUnicodeString& title) {
  QString name = NToQString(title);
  name.replace(QLatin1Char(' '), QLatin1Char('-')).replace(QLatin1Char('/'), QLatin1Char('-'));
  return QStringLiteral("%1-%2.png").arg(QString::number(position).rightJustified(2, QLatin1Char('0')), name);
}

// Photographs the dialog instead of running it; anything else the dialog
// asks for goes to the backend that was installed.
class ScreenshotBackend final : public IDialogBackend {
 public:
  ScreenshotBackend(IDialogBackend& other, QString folder) : m_other(other), m_folder(std::move(folder)) {}

  const std::string& Error() const { return m_error; }

  std::intptr_t RunPropertyTree(NPropertyTreeDialog& dialog, void* parent) override {
    NQtPropertyTreeWindow window(dialog, static_cast<QWidget*>(parent));
    dialog.SetView(&window);
    window.show();
    Settle();
    const std::vector<NPropertyTreeDialog::Row> rows = dialog.VisibleRows();
    if (rows.empty()) Fail("the dialog shows no page");
    int position = 0;
    for (const NPropertyTreeDialog::Row& row : rows) {
      ++position;
      if (!dialog.SelectPage(row.page)) {
        Fail("the page \"" + row.page->Title().ToUtf8() + "\" refused to be shown");
        continue;
      }
      Settle();
      const QString path = QDir(m_folder).filePath(FileName(position, row.page->Title()));
      if (!window.grab().save(path, "PNG")) Fail("cannot write " + path.toStdString());
    }
    dialog.PressCancel();
    dialog.SetView(nullptr);
    return dialog.Result();
  }
  int MessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style) override {
    return m_other.MessageBox(parent, text, caption, style);
  }
  int OptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style,
                         bool* dontShowAgain) override {
    return m_other.OptionalMessageBox(parent, text, caption, style, dontShowAgain);
  }
  int Choose(void* parent, std::u16string_view caption, std::u16string_view text, std::u16string_view note,
             const std::vector<NUnicodeString>& choices) override {
    return m_other.Choose(parent, caption, text, note, choices);
  }
  void RunProgress(NProgressDialog& dialog, void* parent) override { m_other.RunProgress(dialog, parent); }
  std::optional<NUnicodeString> PickFolder(void* parent, std::u16string_view prompt,
                                           std::u16string_view initial) override {
    return m_other.PickFolder(parent, prompt, initial);
  }
  std::optional<NUnicodeString> PickFile(void* parent, std::u16string_view title, std::u16string_view initial,
                                         std::u16string_view filter) override {
    return m_other.PickFile(parent, title, initial, filter);
  }

 private:
  void Fail(std::string message) {
    if (m_error.empty()) m_error = std::move(message);
  }

  IDialogBackend& m_other;
  QString m_folder;
  std::string m_error;
};

}  // namespace

bool NQtSaveScreenshots(NPropertyTreeDialog& dialog, const std::string& folder, std::string* error) {
  const QString dir = QString::fromStdString(folder);
  if (!QDir().mkpath(dir)) {
    if (error) *error = "cannot make the folder " + folder;
    return false;
  }
  ScreenshotBackend backend(NDialogBackend(), dir);
  {
    NScopedDialogBackend installed(backend);
    dialog.DoModal();
  }
  if (error) *error = backend.Error();
  return backend.Error().empty();
}
