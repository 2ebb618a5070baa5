// Time from asking for a dialog to its first painted page, offscreen: the
// frame's dialogs against a bare Qt dialog of the same shape (page tree,
// search box, a page of 30 controls), in one run.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QScrollArea>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <filesystem>
#include <memory>

#include "config/GlobalConfig.h"
#include "config/NConfigEntry.h"
#include "dialogs/DemoOptionsDialog.h"
#include "dialogs/global/GlobalOptionsDialog.h"
#include "dialogs/session/SessionOptionsDialog.h"
#include "store/NIniFileStoreFactory.h"
#include "uicore/qt/NQtPropertyTreeWindow.h"
#include "uicore/testing/NTestField.h"

namespace {

constexpr int kControls = 30;

// Notes when a widget is first painted.
class PaintWatch final : public QObject {
 public:
  explicit PaintWatch(QWidget* target) { target->installEventFilter(this); }
  bool Painted() const { return m_painted; }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) m_painted = true;
    return false;
  }

 private:
  bool m_painted = false;
};

// Shows `window` and waits until `page` has been painted: the seconds since
// `clock` started. A page and the controls on it are painted in one pass,
// which ends before the event loop returns.
double ShowUntilPainted(QWidget& window, QWidget* page, const QElapsedTimer& clock) {
  PaintWatch watch(page);
  window.show();
  while (!watch.Painted()) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  return static_cast<double>(clock.nsecsElapsed()) * 1e-9;
}

QString Label(const char* kind, int i) { return QString("%1 %2").arg(kind).arg(i); }

// The floor: the same shape built straight in Qt, no logic behind it.
void BM_BareQtDialog(benchmark::State& state) {
  for (auto _ : state) {
    QElapsedTimer clock;
    clock.start();
    auto dialog = std::make_unique<QDialog>();
    auto* search = new QLineEdit;
    search->setPlaceholderText("Search");
    auto* tree = new QTreeWidget;
    tree->setHeaderHidden(true);
    for (const char* title : {"General", "Tabs", "Passwords", "Files"})
      tree->addTopLevelItem(new QTreeWidgetItem({title}));
    auto* left = new QVBoxLayout;
    left->addWidget(search);
    left->addWidget(tree);
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    QWidget* last = nullptr;
    for (int i = 0; i < kControls; ++i) {
      switch (i % 3) {
        case 0:
          form->addRow(last = new QCheckBox(Label("Option", i)));
          break;
        case 1: {
          auto* spin = new QSpinBox;
          spin->setRange(0, 5000);
          form->addRow(Label("Number", i), last = spin);
          break;
        }
        default:
          form->addRow(Label("Text", i), last = new QLineEdit);
          break;
      }
    }
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setWidget(page);
    auto* stack = new QStackedWidget;
    stack->addWidget(scroll);
    auto* columns = new QHBoxLayout;
    columns->addLayout(left, 1);
    columns->addWidget(stack, 3);
    auto* outer = new QVBoxLayout(dialog.get());
    outer->addLayout(columns);
    outer->addWidget(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply));
    dialog->resize(760, 520);
    state.SetIterationTime(ShowUntilPainted(*dialog, page, clock));
  }
}
BENCHMARK(BM_BareQtDialog)->UseManualTime()->Unit(benchmark::kMillisecond);

// A page of 30 bound controls in the frame, three empty pages beside it.
class ThirtyControlsPage final : public NPropertyTreePage {
 public:
  ThirtyControlsPage() : NPropertyTreePage(u"General") {
    for (int i = 0; i < kControls; ++i) {
      const NUnicodeString n = NUnicodeString::FromUtf8(std::to_string(i));
      switch (i % 3) {
        case 0:
          Form().CheckBox(u"Option " + n, m_flags[i / 3]);
          break;
        case 1:
          Form().Number(u"Number " + n, m_numbers[i / 3], 0, 5000);
          break;
        default:
          Form().Text(u"Text " + n, m_texts[i / 3]);
          break;
      }
    }
  }

 private:
  NTestField<bool> m_flags[kControls / 3];
  NTestField<std::int32_t> m_numbers[kControls / 3];
  NTestField<NUnicodeString> m_texts[kControls / 3];
};

template <typename MakeDialog>
void TimeFrameDialog(benchmark::State& state, MakeDialog make) {
  for (auto _ : state) {
    QElapsedTimer clock;
    clock.start();
    auto parts = make();
    NPropertyTreeDialog& dialog = parts->Dialog();
    dialog.Open();
    NQtPropertyTreeWindow window(dialog);
    dialog.SetView(&window);
    QWidget* page = window.PageWidget(dialog.CurrentPage());
    if (!page) {
      state.SkipWithError("the first page has no widget");
      break;
    }
    state.SetIterationTime(ShowUntilPainted(window, page, clock));
    dialog.SetView(nullptr);
  }
}

struct ThirtyControlsDialog {
  ThirtyControlsPage page;
  NPropertyTreePage tabs{u"Tabs"}, passwords{u"Passwords"}, files{u"Files"};
  NPropertyTreeDialog dialog{u"Options", 0, nullptr, nullptr};
  ThirtyControlsDialog() {
    dialog.AddPage(&page);
    page.AddPage(&tabs);
    dialog.AddPage(&passwords);
    dialog.AddPage(&files);
  }
  NPropertyTreeDialog& Dialog() { return dialog; }
};

void BM_FrameDialogThirtyControls(benchmark::State& state) {
  TimeFrameDialog(state, [] { return std::make_unique<ThirtyControlsDialog>(); });
}
BENCHMARK(BM_FrameDialogThirtyControls)->UseManualTime()->Unit(benchmark::kMillisecond);

struct DemoDialog {
  GlobalConfig global{3};
  DemoOptionsDialog dialog{global, NPolicy{}};
  NPropertyTreeDialog& Dialog() { return dialog; }
};

void BM_DemoOptionsDialog(benchmark::State& state) {
  TimeFrameDialog(state, [] { return std::make_unique<DemoDialog>(); });
}
BENCHMARK(BM_DemoOptionsDialog)->UseManualTime()->Unit(benchmark::kMillisecond);

// The Session Options dialog on a saved session of a real folder, with
// both applications installed: the whole tree, Connection first.
class SessionFolder {
 public:
  SessionFolder() : m_root(std::filesystem::temp_directory_path() / "cfgdeck_first_paint_bench") {
    std::filesystem::remove_all(m_root);
    std::filesystem::create_directories(m_root);
    s_factory = std::make_unique<NIniFileStoreFactory>(NUnicodeString::FromUtf8(m_root.string()), NUnicodeString());
    CfgdeckInitProfileFactory([]() -> NProfileStoreFactory* { return s_factory.get(); });
    SetSkeldonInstalled(true);
    SetParrowInstalled(true);
    NReportMessageParams params;
    ISessionConfig* made = NCreateSession(u"router1", params);
    if (made && made->Save(params)) m_session = made;
  }
  ~SessionFolder() {
    if (m_session) m_session->Release();
    CfgdeckInitProfileFactory(nullptr);
    s_factory.reset();
    std::filesystem::remove_all(m_root);
  }
  ISessionConfig* Session() const { return m_session; }

 private:
  static inline std::unique_ptr<NIniFileStoreFactory> s_factory;
  std::filesystem::path m_root;
  ISessionConfig* m_session = nullptr;
};

struct SessionDialog {
  explicit SessionDialog(ISessionConfig* session)
      : dialog(&global, session, 0, false, true, 0, false, 0, false, fontsChanged, nullptr) {}
  GlobalConfig global{3};
  bool fontsChanged = false;
  SessionOptionsDialog dialog;
  NPropertyTreeDialog& Dialog() { return dialog; }
};

void BM_SessionOptionsDialog(benchmark::State& state) {
  SessionFolder folder;
  if (!folder.Session()) {
    state.SkipWithError("the session could not be made");
    return;
  }
  TimeFrameDialog(state, [&] { return std::make_unique<SessionDialog>(folder.Session()); });
}
BENCHMARK(BM_SessionOptionsDialog)->UseManualTime()->Unit(benchmark::kMillisecond);

// The Global Options dialog with both applications installed and the
// file-type managers given: the whole tree, General first.
struct GlobalDialog final : NFileTypeManager, NIconManager {
  NStringArray Associations() const override { return {}; }
  bool SetAssociations(const NStringArray&) override { return true; }
  void Invalidate(std::u16string_view) override {}
  static NGlobalDialogInputs Inputs(GlobalDialog* managers) {
    NGlobalDialogInputs inputs;
    inputs.appName = u"Skeldon";
    inputs.fileTypes = managers;
    inputs.icons = managers;
    return inputs;
  }
  GlobalConfig global{3};
  GlobalOptionsDialog dialog{&global, Inputs(this), nullptr};
  NPropertyTreeDialog& Dialog() { return dialog; }
};

void BM_GlobalOptionsDialog(benchmark::State& state) {
  SessionFolder folder;  // a real folder under the store, and both applications
  TimeFrameDialog(state, [] { return std::make_unique<GlobalDialog>(); });
}
BENCHMARK(BM_GlobalOptionsDialog)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
