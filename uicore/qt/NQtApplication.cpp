#include "uicore/qt/NQtApplication.h"

#include <QApplication>

#include "uicore/qt/NQtDialogBackend.h"

struct NQtApplication::Parts {
  Parts(int& argc, char** argv) : application(argc, argv) {}
  QApplication application;
  NQtDialogBackend backend;
  IDialogBackend* previous = nullptr;
};

NQtApplication::NQtApplication(int& argc, char** argv, bool offscreen) {
  // The platform is chosen when the application object is made.
  if (offscreen) qputenv("QT_QPA_PLATFORM", "offscreen");
  m_parts = std::make_unique<Parts>(argc, argv);
  m_parts->previous = NSetDialogBackend(&m_parts->backend);
}

NQtApplication::~NQtApplication() { NSetDialogBackend(m_parts->previous); }
