// orvane: the tuner in its windows.
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QScopeGuard>
#include <QTimer>

#include "app/Controller.h"
#include "app/DesktopColours.h"
#include "app/DesktopSystem.h"
#include "app/FontLoading.h"
#include "app/QuitSignals.h"
#include "audio/KeptMemory.h"
#include "audio/PulseAudioHardware.h"
#include "audio/RecordingHardware.h"
#include "audio/UncheckedMemory.h"
#include "core/TemperamentFile.h"
#include "core/UncaughtErrors.h"
#include "views/Picture.h"

namespace orvane {
namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

struct Options {
  std::vector<std::string> inputs;
  std::optional<std::string> temperaments;
};

// Under share/orvane beside an installed program, else in the source tree it was built from.
QString resourceFolder() {
  const QString installed =
      QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/orvane"));
  return QDir(installed).exists() ? installed : QStringLiteral(ORVANE_SOURCE_RESOURCES);
}

// The sound server, or the recordings in its place; null when a recording cannot be used.
std::unique_ptr<AudioHardware> makeHardware(const std::vector<std::string> &inputs,
                                            System &system) {
  if (inputs.empty()) {
    try {
      return std::make_unique<PulseAudioHardware>();
    } catch (const std::system_error &error) {
      system.log("sound server: " + error.code().message());
      return nullptr;
    }
  }
  auto recordings = std::make_unique<RecordingHardware>(
      std::vector<std::filesystem::path>(inputs.begin(), inputs.end()));
  for (const RecordingHardware::Refusal &refusal : recordings->refusals())
    system.log((refusal.file.empty() ? "''" : refusal.file.string()) + ": " + refusal.reason);
  if (!recordings->refusals().empty())
    return nullptr;
  return recordings;
}

Controller *running = nullptr;

// Also called at the process's exit, with which the toolkit answers the loss of the display: so
// some sessions end.
void finish() {
  if (running != nullptr)
    std::exchange(running, nullptr)->applicationWillTerminate();
}

// What the toolkit says until the application object exists. Any thread, with the mutex.
struct EarlyWords {
  std::mutex mutex;
  bool areHeld = true;
  std::vector<std::string> lines;
  std::string firstWarning;
};
EarlyWords early;

void sayEarlyWords() {
  const std::lock_guard lock(early.mutex);
  early.areHeld = false;
  for (const std::string &line : std::exchange(early.lines, {}))
    DesktopSystem().log(line);
}

// It would wait without end for a thread that it cannot start.
constexpr QLatin1String kNoThread("QThread::start: Thread creation error (");

// The toolkit would end the program with a core dump, where a display cannot be opened for one. Of
// that, its first warning is the reason, and the rest what came of it.
void log(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message) {
  const std::string line = message.section(QLatin1Char('\n'), 0, 0).toStdString();
  const std::lock_guard lock(early.mutex);
  if (message.startsWith(kNoThread)) {
    DesktopSystem().log("threads: " + message.mid(kNoThread.size()).chopped(1).toStdString());
    std::_Exit(kExitFailed);
  }
  if (type == QtFatalMsg) {
    const std::string &reason = early.firstWarning.empty() ? line : early.firstWarning;
    DesktopSystem().log(early.areHeld ? "display: " + reason : line);
    std::_Exit(kExitFailed);
  }
  if (!early.areHeld)
    return DesktopSystem().log(line);
  early.lines.push_back(line);
  if (early.firstWarning.empty() && (type == QtWarningMsg || type == QtCriticalMsg))
    early.firstWarning = line;
}

// In the sizes that desktops ask for; empty when the picture cannot be read.
QIcon windowIcon() {
  QIcon icon;
  const auto picture = Picture::imageNamed(QStringLiteral("orvane"));
  if (picture == nullptr)
    return icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    picture->drawInRect(painter, QRectF(0, 0, size, size));
    painter.end();
    icon.addPixmap(pixmap);
  }
  return icon;
}

int run(int argc, char **argv, const Options &options, DesktopSystem &system) {
  QCoreApplication::setOrganizationName(QStringLiteral("velmora"));
  QCoreApplication::setApplicationName(QStringLiteral("Orvane"));
  QCoreApplication::setApplicationVersion(QStringLiteral(ORVANE_VERSION));
  // By this the desktop finds the icon, where windows bring none along.
  QGuiApplication::setDesktopFileName(QStringLiteral("org.velmora.Orvane"));
  if (!loadFonts()) {
    system.log("memory: not enough");
    return kExitFailed;
  }
  QApplication application(argc, argv);
  sayEarlyWords();
  QApplication::setStyle(QStringLiteral("Fusion"));
  const DesktopColours colours;
  // The controller decides when the last window was closed.
  QApplication::setQuitOnLastWindowClosed(false);
  QDir::addSearchPath(QStringLiteral("resources"), resourceFolder());

  const std::unique_ptr<AudioHardware> hardware = makeHardware(options.inputs, system);
  if (hardware == nullptr)
    return kExitFailed;
  UserDefaults defaults([&system](const std::string &line) { system.log(line); });
  const std::filesystem::path temperaments = temperamentFile(
      options.temperaments, (resourceFolder() + QStringLiteral("/Temperaments.txt")).toStdString());
  // With a full disk quota the settings cannot be written, which must not be the end.
  std::signal(SIGXFSZ, SIG_IGN);
  Controller controller({*hardware, defaults, system, temperaments});
  const QuitSignals quitSignals([&controller] { controller.terminate(); });
  running = &controller;
  const auto forget = qScopeGuard([] { running = nullptr; });
  QObject::connect(&application, &QCoreApplication::aboutToQuit, finish);
  std::atexit(finish);
  controller.awakeFromNib();
  // Drawing it takes time; the windows need not wait for it.
  QTimer::singleShot(0, &application, [] { QApplication::setWindowIcon(windowIcon()); });
  return QApplication::exec();
}

// Before the other objects with static storage, which take memory.
[[gnu::constructor(101)]] void prepareForTheWorst() {
  keepFreedMemory();
  reportUncaughtErrors("orvane");
  reportUncheckedMemory("orvane");
  endWithoutMemory();
}

}  // namespace
}  // namespace orvane

int main(int argc, char **argv) {
  CLI::App app("Instrument tuner for the desktop.", "orvane");
  app.set_version_flag("--version", std::string("orvane ") + ORVANE_VERSION);
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  orvane::Options options;
  app.add_option("--input", options.inputs,
                 "Sound file as device, in place of the sound server (repeatable)")
      ->type_name("FILE")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
  app.add_option("--temperaments", options.temperaments,
                 "File of temperaments in place of your own or the shipped one")
      ->type_name("FILE");
  orvane::DesktopSystem system;
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &request) {  // --help, --version
    return app.exit(request);
  } catch (const CLI::ParseError &error) {
    const std::string reason = error.what();
    system.log("usage: " + reason.substr(0, reason.find('\n')));
    return orvane::kExitUsage;
  }
  qInstallMessageHandler(orvane::log);
  std::atexit(orvane::sayEarlyWords);  // should the toolkit end the program in its own way
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    system.log(
        "display: neither WAYLAND_DISPLAY nor DISPLAY is set (see orvane-cli for the terminal)");
    return orvane::kExitFailed;
  }
  try {
    return orvane::run(argc, argv, options, system);
  } catch (const orvane::InterfaceError &error) {
    // No other: the toolkit's objects do not stand being unwound in the midst of something.
    system.log(error.what());
  }
  return orvane::kExitFailed;
}
