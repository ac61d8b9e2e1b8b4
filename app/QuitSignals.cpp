#include "app/QuitSignals.h"

#include <array>
#include <csignal>
#include <utility>

#include <QCoreApplication>
#include <QEvent>

namespace orvane {
namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};

// A signal handler can reach nothing but globals.
WakeUpDescriptor &wakeUp() {
  static WakeUpDescriptor descriptor;
  return descriptor;
}

void handle(int /*number*/) {
  wakeUp().signal();
}

}  // namespace

QuitSignals::QuitSignals(std::function<void()> quit)
    : mQuit(std::move(quit)), mNotifier(wakeUp().descriptor(), QSocketNotifier::Read) {
  connect(&mNotifier, &QSocketNotifier::activated, this, [this] {
    wakeUp().clear();
    mQuit();
  });
  struct sigaction action = {};
  action.sa_handler = handle;
  action.sa_flags = SA_RESTART;
  for (const int number : kSignals)
    sigaction(number, &action, nullptr);
  QCoreApplication::instance()->installEventFilter(this);
}

QuitSignals::~QuitSignals() {
  for (const int number : kSignals)
    std::signal(number, SIG_DFL);
}

bool QuitSignals::eventFilter(QObject *watched, QEvent *event) {
  // The session's end asks for a quit that closes all windows first. What was open is a setting, so
  // the application leaves them as they are.
  if (watched != QCoreApplication::instance() || event->type() != QEvent::Quit)
    return QObject::eventFilter(watched, event);
  mQuit();
  return true;
}

}  // namespace orvane
