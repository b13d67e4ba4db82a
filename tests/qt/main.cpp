// The Qt tests' entry point: one QApplication on the offscreen platform for
// the whole program, the Qt backend installed, a caret that does not blink
// (so grabbed images do not depend on when they are taken).
#include <QApplication>

#include <gtest/gtest.h>

#include "chartcore_qt/qt_backend.h"

namespace {

// The offscreen platform says what it cannot do (raise, opacity) on every
// popup shown; those notes are dropped, everything else is printed.
QtMessageHandler g_defaultHandler = nullptr;

void FilterNotes(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type == QtWarningMsg && message.startsWith(QLatin1String("This plugin does not support"))) return;
  if (g_defaultHandler != nullptr) g_defaultHandler(type, context, message);
}

}  // namespace

int main(int argc, char** argv) {
  g_defaultHandler = qInstallMessageHandler(FilterNotes);
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
