// editor: the script editor in a window, or a picture of it.
#include <QApplication>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

#include <cstdio>
#include <string>

#include "chartcore_qt/script_editor_window.h"
#include "tool.h"
#include "tool_text.h"
#include "workspace.h"

namespace chartcore {
namespace tool {
namespace {

struct EditorOptions {
  std::string file;
  std::string workspace;
  std::string screenshot;
  int mode = 2;
};

QString FromUtf8(const std::string& text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// Whether a window can be opened at all: a display, or a platform chosen.
// Windows and macOS always have their desktop and set neither variable.
bool HasDisplay() {
#if defined(_WIN32) || defined(__APPLE__)
  return true;
#else
  return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
         qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
#endif
}

// Qt's notes about the screen it has not got (no runtime folder, no window
// manager) are noise for a picture; real errors still reach standard error.
void QuietNotes(QtMsgType type, const QMessageLogContext&, const QString& message) {
  if (type == QtCriticalMsg || type == QtFatalMsg) std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
}

void RunEditor(const EditorOptions& options, ToolContext& context) {
  const bool picture = !options.screenshot.empty();
  // A picture is drawn without a screen, so it works on a server too.
  if (picture) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(QuietNotes);
  }
  if (!picture && !HasDisplay()) throw ToolError("no display to open a window on (--screenshot PNG draws without one)");
  std::string root = options.workspace;
  if (root.empty() && !options.file.empty()) root = WorkspaceRootOf(options.file);
  if (!root.empty() && !QFileInfo(FromUtf8(root)).isDir()) throw ToolError(root + ": no such folder");

  int argc = 1;
  char name[] = "chartcore";
  char* argv[] = {name, nullptr};
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("chartcore editor"));
  chartcore::qt::ScriptEditorWindow window;
  if (!root.empty()) window.OpenWorkspace(FromUtf8(root), options.mode);
  if (!options.file.empty()) {
    const QString path = FromUtf8(options.file);
    if (!QFileInfo::exists(path)) {
      if (picture) throw ToolError(options.file + ": no such file");
      window.NewFile(path);  // written on the first save
    } else if (!window.OpenFile(path)) {
      throw ToolError(options.file + ": cannot read");
    }
  }
  window.resize(900, 600);
  window.show();
  if (picture) {
    QApplication::processEvents();
    const QImage image = window.grab().toImage();
    // Written beside the target and renamed over it, so a failed write never
    // leaves half a picture.
    QSaveFile out(FromUtf8(options.screenshot));
    if (!out.open(QIODevice::WriteOnly) || !image.save(&out, "PNG") || !out.commit())
      throw ToolError(options.screenshot + ": cannot write");
    context.out << options.screenshot << "\n";
    return;
  }
  if (QApplication::exec() != 0) throw ToolError("the editor window ended with an error");
}

}  // namespace

void AddEditorCommand(CLI::App& app, ToolContext& context) {
  auto options = std::make_shared<EditorOptions>();
  CLI::App* command = AddCommand(app, context, "editor",
                                 "Open the script editor on a formula file (colouring, completion list, parameter "
                                 "tips, find and replace), or draw it into a PNG",
                                 options, RunEditor);
  command->add_option("FILE", options->file, "Formula text file (a new file is written on the first save)");
  command->add_option("--workspace", options->workspace,
                      "Workspace root whose user functions are coloured and completed (default: the workspace "
                      "FILE lies in)");
  command->add_option("--mode", options->mode,
                      "Script mode (default 2; 0 and 1 leave volume words and volume indicators plain)");
  command->add_option("--screenshot", options->screenshot,
                      "Draw the editor without a screen and write it to this PNG instead of opening a window");
}

}  // namespace tool
}  // namespace chartcore
