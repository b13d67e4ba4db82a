// The Qt tests' entry point: one QApplication on the offscreen platform for
// the whole program, the Qt backend installed, a caret that does not blink
// (so grabbed images do not depend on when they are taken).
#include <QApplication>

#include <gtest/gtest.h>

#include "chartcore_qt/qt_backend.h"

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QApplication::setCursorFlashTime(0);
  chartcore::qt::InstallQtBackend();
  ::testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  chartcore::qt::UninstallQtBackend();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  return result;
}
