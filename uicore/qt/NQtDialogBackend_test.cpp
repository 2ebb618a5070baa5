#include "uicore/qt/NQtDialogBackend.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <ostream>
#include <thread>

#include "config/NConfigEntry.h"
#include "config/NConfigTestFolder.h"
#include "dialogs/DemoOptionsDialog.h"
#include "dialogs/global/GlobalOptionsDialog.h"
#include "dialogs/session/SessionOptionsDialog.h"
#include "platform/testing/NTestFiles.h"
#include "uicore/NAppName.h"
#include "uicore/NHeadlessDialogBackend.h"
#include "uicore/NProgressDialog.h"
#include "uicore/NPropertyTreeDialog.h"
#include "uicore/qt/NQtScreenshots.h"
#include "uicore/qt/NQtText.h"
#include "uicore/testing/NTestField.h"

// Failures show Qt's strings as text, not as bytes.
QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
QT_END_NAMESPACE

namespace {

const QString kGeneral = QStringLiteral("General");
const QString kAppearance = QStringLiteral("Appearance");
const QString kSecurity = QStringLiteral("Security Options");
const QString kFiles = QStringLiteral("Files/Sounds");
const NUnicodeString kLockReason = u"Set by your administrator";

struct Settings {
  NTestField<bool> toolbar{false, true};  // starts away from its default
  NTestField<NUnicodeString> user{u"ann", u"ann"};
  NTestField<bool> filter;
  NTestField<int> delay{250, 250};
  NTestField<NUnicodeString> theme{u"light", u"light"};
  NTestField<std::int64_t> accent{0x0080FF, 0x0080FF};
  NTestField<int> tabs{0, 0};
  NTestField<NUnicodeString> password;
  NTestField<NUnicodeString> proxy{u"proxy.example:8080", u""};
  NTestField<bool> remember;
  NTestField<NUnicodeString> bell{u"/usr/share/sounds/bell.wav", u""};
  NTestField<NUnicodeString> downloads;
  NTestField<NStringArray> hosts;
};

// A page that can refuse to let another one become current.
class RefusingPage final : public NPropertyTreePage {
 public:
  using NPropertyTreePage::NPropertyTreePage;
  bool refuse = false;
  bool OnKillActive() override { return !refuse; }
};

// Four pages, one a child, with every kind of control but fonts.
struct TestDialog {
  Settings settings;
  std::optional<NUnicodeString> lock = kLockReason;
  int cleared = 0;
  NPropertyTreePage general{u"General"}, appearance{u"Appearance"}, files{u"Files/Sounds"};
  RefusingPage security{u"Security Options"};
  NPropertyTreeDialog dialog{u"Test settings", 0, nullptr, nullptr};

  TestDialog() {
    NForm& g = general.Form();
    g.CheckBox(u"Show toolbar", settings.toolbar);
    g.Text(u"User name", settings.user).Validate([](const NControlValue& value) -> std::optional<NUnicodeString> {
      if (std::get<NUnicodeString>(value).empty()) return u"Enter a user name.";
      return std::nullopt;
    });
    const NFormControl& filter = g.CheckBox(u"Filter sessions", settings.filter);
    g.Number(u"Filter delay (ms)", settings.delay, 0, 5000).EnabledWhenChecked(filter);
    g.Choice(u"Theme", settings.theme, {{u"Light", NUnicodeString(u"light")}, {u"Dark", NUnicodeString(u"dark")}});
    NForm& a = appearance.Form();
    a.Group(u"Colours and tabs");
    a.Color(u"Accent colour", settings.accent);
    a.Radio(u"Tab position", settings.tabs,
            {{u"Top", std::int64_t{0}}, {u"Left", std::int64_t{1}}, {u"Hidden", std::int64_t{2}}});
    a.EndGroup();
    a.Label(u"Changes apply to windows opened afterwards.");
    NForm& s = security.Form();
    s.Password(u"Password", settings.password);
    s.Text(u"Proxy", settings.proxy).LockedWhen([this] { return lock; });
    s.CheckBox(u"Remember password", settings.remember);
    NForm& f = files.Form();
    f.File(u"Bell sound", settings.bell, u"Sound files (*.wav)");
    f.Folder(u"Downloads", settings.downloads);
    f.StringList(u"Trusted hosts", settings.hosts);
    f.Button(u"Clear history", [this] { ++cleared; });
    dialog.AddPage(&general);
    dialog.AddPage(&appearance, &general);
    dialog.AddPage(&security);
    dialog.AddPage(&files);
  }
};

// Runs `dialog` modally; `drive` acts on its window as a person would. A
// window `drive` leaves open is cancelled, so a failed check cannot hang.
std::intptr_t RunDialog(NPropertyTreeDialog& dialog, const std::function<void(QDialog&)>& drive) {
  QTimer::singleShot(0, [&] {
    auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!window) {
      ADD_FAILURE() << "the dialog did not open modally";
      return;
    }
    drive(*window);
    if (window->isVisible()) window->reject();
  });
  return dialog.DoModal();
}

// Calls `act` on the next modal window of type T, from the event loop; a
// window that never comes leaves no poll behind to meet a later test's.
template <typename T>
void WhenModal(std::function<void(T&)> act) {
  auto* poll = new QTimer(qApp);
  QTimer::singleShot(5000, poll, [poll] { poll->deleteLater(); });
  QObject::connect(poll, &QTimer::timeout, [poll, act = std::move(act)] {
    T* window = qobject_cast<T*>(QApplication::activeModalWidget());
    if (!window || !window->isVisible()) return;
    poll->stop();
    poll->deleteLater();
    act(*window);
  });
  poll->start(10);
}

template <typename W>
W* Control(QDialog& window, const QString& page, const QString& label) {
  auto* pageWidget = window.findChild<QWidget*>(page);
  return pageWidget ? pageWidget->findChild<W*>(label) : nullptr;
}

// The first of `items` (widgets or actions) that shows `text`.
template <typename T>
T* WithText(const QList<T*>& items, const QString& text) {
  for (T* item : items) {
    if (item->text() == text) return item;
  }
  return nullptr;
}

QLabel* Caption(QDialog& window, const QString& page, const QString& text) {
  auto* pageWidget = window.findChild<QWidget*>(page);
  return pageWidget ? WithText(pageWidget->findChildren<QLabel*>(), text) : nullptr;
}

QStringList TreeTitles(QDialog& window) {
  QStringList titles;
  for (QTreeWidgetItemIterator it(window.findChild<QTreeWidget*>()); *it; ++it) titles << (*it)->text(0);
  return titles;
}

void ClickPage(QDialog& window, const QString& title) {
  auto* tree = window.findChild<QTreeWidget*>();
  const QList<QTreeWidgetItem*> items = tree->findItems(title, Qt::MatchExactly | Qt::MatchRecursive);
  ASSERT_EQ(items.size(), 1) << "tree item " << title.toStdString();
  QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(items[0]).center());
}

template <typename W>  // a line edit or a spin box
void TypeInto(W* edit, const QString& text) {
  edit->setFocus();
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

QPushButton* DialogButton(QDialog& window, QDialogButtonBox::StandardButton which) {
  return window.findChild<QDialogButtonBox*>()->button(which);
}

class NQtDialogBackendTest : public testing::Test {
 protected:
  NQtDialogBackend m_backend;
  NScopedDialogBackend m_installed{m_backend};
};

TEST_F(NQtDialogBackendTest, OkStoresWhatWasClickedAndTypedOnEachPage) {
  TestDialog t;
  const std::intptr_t result = RunDialog(t.dialog, [&](QDialog& window) {
    EXPECT_FALSE(DialogButton(window, QDialogButtonBox::Apply)->isEnabled()) << "Apply before any edit";
    auto* name = Control<QLineEdit>(window, kGeneral, "User name");
    auto* filter = Control<QCheckBox>(window, kGeneral, "Filter sessions");
    auto* delay = Control<QSpinBox>(window, kGeneral, "Filter delay (ms)");
    ASSERT_TRUE(name && filter && delay) << "General: User name, Filter sessions, Filter delay (ms)";
    // An empty name is refused with a message over the window, which stays open.
    name->clear();
    QString refusal;
    WhenModal<QMessageBox>([&](QMessageBox& box) {
      refusal = box.text();
      box.button(QMessageBox::Ok)->click();
    });
    QTest::mouseClick(DialogButton(window, QDialogButtonBox::Ok), Qt::LeftButton);
    EXPECT_EQ(refusal, "Enter a user name.") << "General/User name, empty";
    ASSERT_TRUE(window.isVisible()) << "General/User name, empty: OK closed the window";

    TypeInto(name, "bob");
    QPushButton* apply = DialogButton(window, QDialogButtonBox::Apply);
    EXPECT_TRUE(apply->isEnabled()) << "General/User name edited";
    QTest::mouseClick(apply, Qt::LeftButton);
    EXPECT_EQ(t.settings.user.value, u"bob") << "General/User name, applied";
    EXPECT_FALSE(apply->isEnabled()) << "Apply, with everything applied";
    EXPECT_FALSE(delay->isEnabled()) << "General/Filter delay (ms) before Filter sessions is ticked";
    QTest::mouseClick(filter, Qt::LeftButton);
    EXPECT_TRUE(delay->isEnabled()) << "General/Filter delay (ms) after Filter sessions is ticked";
    for (int i = 0; i < 3; ++i) QTest::keyClick(delay, Qt::Key_Up);

    ClickPage(window, kSecurity);
    auto* remember = Control<QCheckBox>(window, kSecurity, "Remember password");
    auto* password = Control<QLineEdit>(window, kSecurity, "Password");
    ASSERT_TRUE(remember && password) << "Security Options: Remember password, Password";
    QTest::mouseClick(remember, Qt::LeftButton);
    TypeInto(password, "s3cret");

    ClickPage(window, kFiles);
    auto* hosts = Control<QPlainTextEdit>(window, kFiles, "Trusted hosts");
    auto* clear = Control<QPushButton>(window, kFiles, "Clear history");
    auto* bell = Control<QLineEdit>(window, kFiles, "Bell sound");
    ASSERT_TRUE(hosts && clear && bell) << "Files/Sounds: Trusted hosts, Clear history, Bell sound";
    WhenModal<QFileDialog>([&](QFileDialog& box) {
      box.selectFile(QCoreApplication::applicationFilePath());
      QMetaObject::invokeMethod(&box, "accept");  // protected in QFileDialog
    });
    QTest::mouseClick(bell->parentWidget()->findChild<QPushButton*>(), Qt::LeftButton);
    EXPECT_EQ(bell->text(), QCoreApplication::applicationFilePath()) << "Files/Sounds/Bell sound, picked";
    QTest::keyClicks(hosts, "a.example");
    QTest::keyClick(hosts, Qt::Key_Return);
    QTest::keyClicks(hosts, "b.example");
    QTest::mouseClick(clear, Qt::LeftButton);
    QTest::mouseClick(DialogButton(window, QDialogButtonBox::Ok), Qt::LeftButton);
  });
  EXPECT_EQ(result, IModalDialog::kOk);
  EXPECT_EQ(t.settings.user.value, u"bob") << "General/User name";
  EXPECT_TRUE(t.settings.filter.value) << "General/Filter sessions";
  EXPECT_EQ(t.settings.delay.value, 253) << "General/Filter delay (ms)";
  EXPECT_TRUE(t.settings.remember.value) << "Security Options/Remember password";
  EXPECT_EQ(t.settings.password.value, u"s3cret") << "Security Options/Password";
  EXPECT_EQ(t.settings.hosts.value, (NStringArray{u"a.example", u"b.example"})) << "Files/Sounds/Trusted hosts";
  EXPECT_EQ(t.cleared, 1) << "Files/Sounds/Clear history";
  EXPECT_EQ(NToQString(t.settings.bell.value), QCoreApplication::applicationFilePath()) << "Files/Sounds/Bell sound";
  EXPECT_FALSE(t.settings.toolbar.value) << "General/Show toolbar was not touched";
}

TEST_F(NQtDialogBackendTest, EveryWayOfClosingWithoutOkKeepsTheRecords) {
  const struct {
    const char* name;
    std::function<void(QDialog&)> close;
  } closers[] = {
      {"Cancel button",
       [](QDialog& w) { QTest::mouseClick(DialogButton(w, QDialogButtonBox::Cancel), Qt::LeftButton); }},
      {"Escape key", [](QDialog& w) { QTest::keyClick(&w, Qt::Key_Escape); }},
      {"title-bar close", [](QDialog& w) { w.close(); }},
  };
  for (const auto& closer : closers) {
    SCOPED_TRACE(closer.name);
    TestDialog t;
    bool closed = false;
    const std::intptr_t result = RunDialog(t.dialog, [&](QDialog& window) {
      auto* name = Control<QLineEdit>(window, kGeneral, "User name");
      auto* toolbar = Control<QCheckBox>(window, kGeneral, "Show toolbar");
      ASSERT_TRUE(name && toolbar) << "General: User name, Show toolbar";
      TypeInto(name, "zed");
      QTest::mouseClick(toolbar, Qt::LeftButton);
      closer.close(window);
      closed = !window.isVisible();
    });
    EXPECT_TRUE(closed);
    EXPECT_EQ(result, IModalDialog::kCancel);
    EXPECT_EQ(t.settings.user.value, u"ann") << "General/User name";
    EXPECT_FALSE(t.settings.toolbar.value) << "General/Show toolbar";
  }
}

TEST_F(NQtDialogBackendTest, APageIsBuiltTheFirstTimeItIsShownAndKeptUntilItLeavesTheDialog) {
  TestDialog t;
  RunDialog(t.dialog, [&](QDialog& window) {
    EXPECT_NE(window.findChild<QWidget*>(kGeneral), nullptr) << "General, shown at the opening";
    EXPECT_EQ(window.findChild<QWidget*>(kSecurity), nullptr) << "Security Options, not shown yet";
    EXPECT_EQ(window.findChild<QLineEdit*>("Proxy"), nullptr) << "Security Options/Proxy, not shown yet";
    ClickPage(window, kSecurity);
    QWidget* built = window.findChild<QWidget*>(kSecurity);
    ASSERT_NE(built, nullptr) << "Security Options, after its click";
    EXPECT_TRUE(built->isVisible()) << "Security Options";
    EXPECT_EQ(window.findChild<QTreeWidget*>()->currentItem()->text(0), kSecurity);
    EXPECT_NE(Caption(window, kSecurity, kSecurity), nullptr) << "Security Options: its heading";
    ClickPage(window, kGeneral);
    EXPECT_FALSE(built->isVisible()) << "Security Options, after General was clicked";
    ClickPage(window, kSecurity);
    EXPECT_EQ(window.findChild<QWidget*>(kSecurity), built) << "Security Options was built again";

    t.security.refuse = true;
    ClickPage(window, kGeneral);
    QCoreApplication::processEvents();  // the selection is put back after the click
    EXPECT_EQ(window.findChild<QTreeWidget*>()->currentItem()->text(0), kSecurity)
        << "General was selected while Security Options refused to go";
    EXPECT_TRUE(window.findChild<QTreeWidget*>()->currentItem()->isSelected()) << "Security Options";
    EXPECT_TRUE(built->isVisible()) << "Security Options, refusing to go";

    t.security.refuse = false;
    t.dialog.RemovePage(&t.security);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.findChild<QWidget*>(kSecurity), nullptr) << "Security Options, removed";
    EXPECT_EQ(TreeTitles(window), QStringList({kGeneral, kAppearance, kFiles})) << "Security Options, removed";
    EXPECT_TRUE(window.findChild<QWidget*>(kGeneral)->isVisible()) << "General, after Security Options went";
  });
}

TEST_F(NQtDialogBackendTest, ALockedControlIsDisabledAndSaysWhyUntilTheLockGoes) {
  TestDialog t;
  RunDialog(t.dialog, [&](QDialog& window) {
    ClickPage(window, kSecurity);
    auto* proxy = Control<QLineEdit>(window, kSecurity, "Proxy");
    auto* remember = Control<QCheckBox>(window, kSecurity, "Remember password");
    ASSERT_TRUE(proxy && remember) << "Security Options: Proxy, Remember password";
    const QString reason = NToQString(kLockReason);
    EXPECT_FALSE(proxy->isEnabled()) << "Security Options/Proxy";
    EXPECT_EQ(proxy->toolTip(), reason) << "Security Options/Proxy";
    QLabel* note = Caption(window, kSecurity, reason);
    ASSERT_NE(note, nullptr) << "Security Options/Proxy: no label gives the reason";
    EXPECT_TRUE(note->isVisible()) << "Security Options/Proxy: the reason";
    TypeInto(proxy, "evil:1");
    EXPECT_EQ(proxy->text(), "proxy.example:8080") << "Security Options/Proxy took typing";

    t.lock.reset();
    QTest::mouseClick(remember, Qt::LeftButton);  // any change redraws every control's state
    EXPECT_TRUE(proxy->isEnabled()) << "Security Options/Proxy, unlocked";
    EXPECT_FALSE(note->isVisible()) << "Security Options/Proxy: the reason, unlocked";
    EXPECT_EQ(proxy->toolTip(), QString()) << "Security Options/Proxy, unlocked";
  });
}

TEST_F(NQtDialogBackendTest, SearchNarrowsTheTreeAndMarksTheMatchingControls) {
  const struct {
    const char* search;
    QStringList pages;
  } rows[] = {
      {"proxy", {kSecurity}},
      {"ACCENT", {kGeneral, kAppearance}},  // General stays to hold its child
      {"no such setting", {}},
      {"", {kGeneral, kAppearance, kSecurity, kFiles}},
  };
  TestDialog t;
  RunDialog(t.dialog, [&](QDialog& window) {
    auto* search = window.findChild<QLineEdit*>("search");
    ASSERT_NE(search, nullptr);
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string("search \"") + row.search + "\"");
      TypeInto(search, row.search);
      if (QString(row.search).isEmpty()) search->clear();
      EXPECT_EQ(TreeTitles(window), row.pages);
    }
    TypeInto(search, "proxy");
    QLabel* caption = Caption(window, kSecurity, "Proxy");
    ASSERT_NE(caption, nullptr) << "Security Options/Proxy: its label";
    EXPECT_TRUE(caption->autoFillBackground()) << "Security Options/Proxy: not highlighted";
    EXPECT_EQ(window.findChild<QTreeWidget*>()->currentItem()->text(0), kSecurity)
        << "the only page left is not the current one";
    search->clear();
    EXPECT_FALSE(caption->autoFillBackground()) << "Security Options/Proxy: still highlighted";
  });
}

TEST_F(NQtDialogBackendTest, ResetPageShowsTheDefaultsAndDropsTheModifiedMarks) {
  TestDialog t;
  const std::intptr_t result = RunDialog(t.dialog, [&](QDialog& window) {
    auto* toolbar = Control<QCheckBox>(window, kGeneral, "Show toolbar");
    auto* name = Control<QLineEdit>(window, kGeneral, "User name");
    ASSERT_TRUE(toolbar && name) << "General: Show toolbar, User name";
    EXPECT_TRUE(toolbar->font().bold()) << "General/Show toolbar starts away from its default";
    QLabel* nameCaption = Caption(window, kGeneral, "User name");
    ASSERT_NE(nameCaption, nullptr);
    EXPECT_FALSE(nameCaption->font().bold()) << "General/User name starts at its default";
    TypeInto(name, "bob");
    EXPECT_TRUE(nameCaption->font().bold()) << "General/User name, edited";
    emit name->customContextMenuRequested(QPoint(2, 2));
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr) << "General/User name: no context menu";
    QAction* resetOne = WithText(menu->actions(), "Reset to default");
    ASSERT_NE(resetOne, nullptr) << "General/User name: no Reset to default";
    resetOne->trigger();
    menu->close();
    EXPECT_EQ(name->text(), "ann") << "General/User name, reset alone";
    EXPECT_FALSE(toolbar->isChecked()) << "General/Show toolbar, reset with User name";
    TypeInto(name, "bob");

    QPushButton* reset =
        WithText(window.findChild<QWidget*>(kGeneral)->findChildren<QPushButton*>(), "Reset Page to Defaults");
    ASSERT_NE(reset, nullptr) << "General: Reset Page to Defaults";
    QTest::mouseClick(reset, Qt::LeftButton);
    EXPECT_EQ(name->text(), "ann") << "General/User name";
    EXPECT_TRUE(toolbar->isChecked()) << "General/Show toolbar";
    EXPECT_FALSE(toolbar->font().bold()) << "General/Show toolbar";
    EXPECT_FALSE(nameCaption->font().bold()) << "General/User name";
    EXPECT_FALSE(reset->isEnabled()) << "General: nothing left to reset";
    QTest::mouseClick(DialogButton(window, QDialogButtonBox::Ok), Qt::LeftButton);
  });
  EXPECT_EQ(result, IModalDialog::kOk);
  EXPECT_TRUE(t.settings.toolbar.value) << "General/Show toolbar";
  EXPECT_EQ(t.settings.user.value, u"ann") << "General/User name";
}

TEST_F(NQtDialogBackendTest, AMessageBoxShowsItsStyleAndAnswersWithTheButtonPressed) {
  const struct {
    unsigned style;
    const char16_t* caption;
    QMessageBox::StandardButton press;
    QMessageBox::Icon icon;
    int expected;
    bool fromWorker;
  } rows[] = {
      {kMessageBoxOk | kMessageBoxIconInformation, u"Saved", QMessageBox::Ok, QMessageBox::Information, kMessageBoxIdOk,
       false},
      {kMessageBoxOkCancel | kMessageBoxIconWarning, u"Copy", QMessageBox::Cancel, QMessageBox::Warning,
       kMessageBoxIdCancel, false},
      {kMessageBoxYesNo | kMessageBoxIconQuestion, u"", QMessageBox::No, QMessageBox::Question, kMessageBoxIdNo, true},
      {kMessageBoxYesNo | kMessageBoxIconError, u"Delete", QMessageBox::Yes, QMessageBox::Critical, kMessageBoxIdYes,
       true},
  };
  for (const auto& row : rows) {
    const std::u16string_view caption = row.caption;
    SCOPED_TRACE(testing::Message() << "style 0x" << std::hex << row.style << (row.fromWorker ? " from a worker" : ""));
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    WhenModal<QMessageBox>([&](QMessageBox& box) {
      title = box.windowTitle();
      icon = box.icon();
      QAbstractButton* button = box.button(row.press);
      if (button)
        button->click();
      else
        box.reject();
    });
    int answer = 0;
    if (row.fromWorker) {
      std::atomic<bool> done{false};
      std::thread worker([&] {
        answer = NMessageBox(nullptr, u"Go on?", caption, row.style);
        done = true;
      });
      EXPECT_TRUE(QTest::qWaitFor([&] { return done.load(); }, 10000));
      worker.join();
    } else {
      answer = NMessageBox(nullptr, u"Go on?", caption, row.style);
    }
    EXPECT_EQ(answer, row.expected);
    EXPECT_EQ(icon, row.icon);
    EXPECT_EQ(title, NToQString(caption.empty() ? NGetAppName() : NUnicodeString(caption)));
  }
}

TEST_F(NQtDialogBackendTest, AnOptionalMessageBoxStartsUntickedAndReportsTheTick) {
  for (const bool tick : {false, true}) {
    SCOPED_TRACE(tick ? "ticked" : "left unticked");
    bool startedTicked = true;
    WhenModal<QMessageBox>([&](QMessageBox& box) {
      startedTicked = box.checkBox() && box.checkBox()->isChecked();
      if (tick && box.checkBox()) QTest::mouseClick(box.checkBox(), Qt::LeftButton);
      box.button(QMessageBox::Ok)->click();
    });
    bool dontShowAgain = !tick;
    EXPECT_EQ(NShowOptionalMessageBox(nullptr, u"Printing starts.", u"Print", kMessageBoxOk, &dontShowAgain),
              kMessageBoxIdOk);
    EXPECT_FALSE(startedTicked);
    EXPECT_EQ(dontShowAgain, tick);
  }
}

TEST_F(NQtDialogBackendTest, AProgressDialogFollowsItsWorkerAndClosesWhenTheWorkerSaysSo) {
  NProgressDialog progress(u"Starting");
  std::atomic<bool> seen{false};
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    auto* box = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
    if (box && box->labelText() == "Copying files" && box->value() == 3 && box->maximum() == 10) seen = true;
  });
  watch.start(10);
  std::thread worker([&] {
    progress.SetText(u"Copying files");
    progress.SetProgress(3, 10);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!seen && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    progress.PostClose();
  });
  progress.Run(nullptr);
  worker.join();
  EXPECT_TRUE(seen) << "the box never showed \"Copying files\", 3 of 10";
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "the box stayed open";
}

TEST_F(NQtDialogBackendTest, ScreenshotsShowEveryPageInTreeOrder) {
  const QStringList names = {"01-General.png", "02-Appearance.png", "03-Security-Options.png", "04-Files-Sounds.png"};
  const QDir folder(QStringLiteral(CFGDECK_SCREENSHOT_DIR));
  for (const QString& name : names) QFile::remove(folder.filePath(name));
  TestDialog t;
  std::string error;
  EXPECT_TRUE(NQtSaveScreenshots(t.dialog, CFGDECK_SCREENSHOT_DIR, &error)) << error;
  EXPECT_EQ(t.dialog.Result(), IModalDialog::kCancel);
  QImage previous;
  for (const QString& name : names) {
    SCOPED_TRACE(name.toStdString());
    const QImage image(folder.filePath(name));
    ASSERT_FALSE(image.isNull());
    EXPECT_GE(image.width(), 700);
    EXPECT_GE(image.height(), 450);
    EXPECT_NE(image, previous) << "the same picture as the page before";
    previous = image;
  }
}

TEST_F(NQtDialogBackendTest, TheDemonstrationDialogSavesOnOkToTheKeyFileAndNothingOnCancel) {
  NConfigTestFolder folder;
  GlobalConfig* global = nullptr;
  GetGlobalConfig(global, 3);
  // Clicks Tabs/Show session tabs, types `sound` into Files/Connect sound
  // and closes the dialog with `button`.
  const auto run = [&](const QString& sound, QDialogButtonBox::StandardButton button) {
    DemoOptionsDialog dialog(*global, NPolicy{});
    return RunDialog(dialog, [&](QDialog& window) {
      ClickPage(window, "Tabs");
      auto* tabs = Control<QCheckBox>(window, "Tabs", "Show session tabs");
      ASSERT_NE(tabs, nullptr) << "Tabs/Show session tabs";
      QTest::mouseClick(tabs, Qt::LeftButton);
      ClickPage(window, "Files");
      auto* connectSound = Control<QLineEdit>(window, "Files", "Connect sound");
      ASSERT_NE(connectSound, nullptr) << "Files/Connect sound";
      TypeInto(connectSound, sound);
      QTest::mouseClick(DialogButton(window, button), Qt::LeftButton);
    });
  };
  EXPECT_EQ(run("ring.wav", QDialogButtonBox::Ok), IModalDialog::kOk);
  const std::string saved = NReadFileBytes(folder.Root() / "global.ini");
  EXPECT_NE(saved.find("D:\"Show Session Tabs\"=00000000\r\n"), std::string::npos) << "Tabs/Show session tabs";
  EXPECT_NE(saved.find("S:\"Connect Sound File\"=ring.wav\r\n"), std::string::npos) << "Files/Connect sound";
  EXPECT_EQ(run("bell.wav", QDialogButtonBox::Cancel), IModalDialog::kCancel);
  EXPECT_EQ(NReadFileBytes(folder.Root() / "global.ini"), saved) << "Cancel changed the key file";
  EXPECT_EQ(global->m_connectSoundFile.Get(), u"ring.wav") << "Cancel changed Files/Connect sound";
  {
    // Every page as it looks over a saved folder, for whoever reads a failure.
    DemoOptionsDialog dialog(*global, NPolicy{});
    std::string error;
    EXPECT_TRUE(NQtSaveScreenshots(dialog, CFGDECK_SCREENSHOT_DIR "/demo", &error)) << error;
  }
  FreeGlobalConfig();
}

TEST_F(NQtDialogBackendTest, TheSessionOptionsDialogWritesRowsAndHostToTheSessionsKeyFile) {
  NConfigTestFolder folder;
  SetSkeldonInstalled(true);
  SetParrowInstalled(true);
  GlobalConfig* global = nullptr;
  GetGlobalConfig(global, 3);
  folder.Write("Sessions\\router1", {{u"Is Session", 1}});
  NReportMessageParams params;
  ISessionConfig* session = NOpenSession(u"router1", false, params);
  ASSERT_NE(session, nullptr) << params.GetText().ToUtf8();
  bool fontsChanged = false;
  {
    SessionOptionsDialog dialog(global, session, 0, false, true, 0, false, 0, false, fontsChanged, nullptr);
    const std::intptr_t result = RunDialog(dialog, [&](QDialog& window) {
      ClickPage(window, "Emulation");
      auto* rows = Control<QSpinBox>(window, "Emulation", "Rows");
      ASSERT_NE(rows, nullptr) << "Emulation/Rows";
      TypeInto(rows, "40");
      ClickPage(window, "SSH2");
      auto* host = Control<QLineEdit>(window, "SSH2", "Hostname");
      ASSERT_NE(host, nullptr) << "SSH2/Hostname";
      TypeInto(host, "router1.example");
      QTest::mouseClick(DialogButton(window, QDialogButtonBox::Ok), Qt::LeftButton);
    });
    EXPECT_EQ(result, IModalDialog::kOk);
    ASSERT_TRUE(session->Save(params)) << params.GetText().ToUtf8();
    std::string error;
    EXPECT_TRUE(NQtSaveScreenshots(dialog, CFGDECK_SCREENSHOT_DIR "/session", &error)) << error;
  }
  session->Release();
  const std::string saved = NReadFileBytes(folder.Root() / "Sessions" / "router1.ini");
  EXPECT_NE(saved.find("D:\"Rows\"=00000028\r\n"), std::string::npos) << saved;
  EXPECT_NE(saved.find("S:\"Hostname\"=router1.example\r\n"), std::string::npos) << saved;
  FreeGlobalConfig();
  SetSkeldonInstalled(false);
  SetParrowInstalled(false);
}

TEST_F(NQtDialogBackendTest, TheGlobalOptionsDialogSavesAToggleAndAColourToGlobalIni) {
  NConfigTestFolder folder;
  SetSkeldonInstalled(true);
  SetParrowInstalled(true);
  GlobalConfig* global = nullptr;
  GetGlobalConfig(global, 3);
  {
    NGlobalDialogInputs inputs;
    inputs.appName = u"Skeldon";
    GlobalOptionsDialog dialog(global, inputs, nullptr);
    const std::intptr_t result = RunDialog(dialog, [&](QDialog& window) {
      ClickPage(window, "General");
      auto* toolbar = Control<QCheckBox>(window, "General", "Show toolbar");
      ASSERT_NE(toolbar, nullptr) << "General/Show toolbar";
      QTest::mouseClick(toolbar, Qt::LeftButton);
      ClickPage(window, "Tabs/Tiling");
      auto* connected = Control<QPushButton>(window, "Tabs/Tiling", "Connected");
      ASSERT_NE(connected, nullptr) << "Tabs/Tiling/Connected";
      WhenModal<QColorDialog>([](QColorDialog& picker) {
        picker.setCurrentColor(QColor(0x12, 0x34, 0x56));
        picker.accept();
      });
      QTest::mouseClick(connected, Qt::LeftButton);
      QTest::mouseClick(DialogButton(window, QDialogButtonBox::Ok), Qt::LeftButton);
    });
    EXPECT_EQ(result, IModalDialog::kOk);
    SaveGlobalConfig(false);
    std::string error;
    EXPECT_TRUE(NQtSaveScreenshots(dialog, CFGDECK_SCREENSHOT_DIR "/global", &error)) << error;
  }
  const std::string saved = NReadFileBytes(folder.Root() / "global.ini");
  EXPECT_NE(saved.find("D:\"Show Toolbar\"=00000001\r\n"), std::string::npos) << saved;
  EXPECT_NE(saved.find("D:\"Connected Color\"=00563412\r\n"), std::string::npos) << saved;
  FreeGlobalConfig();
  SetSkeldonInstalled(false);
  SetParrowInstalled(false);
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  QApplication app(argc, argv);
  return RUN_ALL_TESTS();
}
