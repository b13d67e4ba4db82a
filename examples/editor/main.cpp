// chartcore-editor: write a trading-logic formula in the script editor.
//
//   chartcore-editor [--workspace DIR] [--mode N] [FILE]
//
// The workspace's user function list colours and completes the user's own
// functions; without one, the built-in words still colour and complete.
// Type a function name to see the completion list (Enter or a double click
// inserts the pick), type "(" after a user function to see its parameter tip.
#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QMessageBox>

#include "chartcore_qt/script_editor_window.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("chartcore-editor"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("The chartcore script editor."));
  parser.addHelpOption();
  const QCommandLineOption workspace(QStringLiteral("workspace"), QStringLiteral("Workspace root with the user functions."),
                                     QStringLiteral("DIR"));
  const QCommandLineOption mode(QStringLiteral("mode"), QStringLiteral("Script mode (0 and 1 leave volume words plain)."),
                                QStringLiteral("N"), QStringLiteral("2"));
  parser.addOption(workspace);
  parser.addOption(mode);
  parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("Formula file to open."), QStringLiteral("[FILE]"));
  parser.process(app);

  chartcore::qt::ScriptEditorWindow window;
  if (parser.isSet(workspace)) window.OpenWorkspace(parser.value(workspace), parser.value(mode).toInt());
  const QStringList files = parser.positionalArguments();
  if (!files.isEmpty()) {
    const QString path = files.first();
    if (!QFileInfo::exists(path)) {
      window.NewFile(path);  // written on the first save
    } else if (!window.OpenFile(path)) {
      QMessageBox::warning(&window, window.windowTitle(), QStringLiteral("Cannot read %1").arg(path));
    }
  }
  window.resize(800, 560);
  window.show();
  return app.exec();
}
