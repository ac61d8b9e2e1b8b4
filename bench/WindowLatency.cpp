// orvane-latency: from a full block of sound to its pixels on the screen. The tuner's own windows,
// with the details and the needle meter, are given blocks at the pace of sound, each with another
// note at another loudness, so that every one changes what all of them show. Prints for each block
// the milliseconds from before the input procedure got its last sample until the server had drawn
// every window. Argument: how many blocks. With the settings of whoever runs it; changes none.
#include <sndfile.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include <xcb/xcb.h>
#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QTemporaryDir>

#include "app/Controller.h"
#include "app/DesktopSystem.h"
#include "audio/RecordingHardware.h"
#include "views/X11Connection.h"

namespace orvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRate = 48000;
constexpr int kBlockFrames = 2618;
constexpr std::chrono::microseconds kBlockTime{54542};
constexpr int kBlocksBefore = 20;  // until the windows are there and every picture is drawn once

// Tells when the screen shows what was painted.
class TimedApplication : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject *receiver, QEvent *event) override {
    const bool isPainting = event->type() == QEvent::UpdateRequest && receiver->isWidgetType();
    const bool isHandled = QApplication::notify(receiver, event);
    if (isPainting) {
      xcb_connection_t *connection = x11Connection();
      // The server answers when it has done what came before.
      std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
      mPainted = Clock::now();
    }
    return isHandled;
  }

  Clock::time_point painted() const { return mPainted; }

 private:
  std::atomic<Clock::time_point> mPainted{};
};

std::vector<float> note(int number) {
  // Neither the note before nor one of its neighbours, and up to half a semitone off.
  const double hertz = 110.0 * std::exp2((7 * number % 25 + 0.037 * (number % 27 - 13)) / 12.0);
  const double level = 0.1 + 0.08 * (number % 11);
  std::vector<float> samples(kBlockFrames);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<float>(
        level * std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(i) / kRate));
  return samples;
}

// A device to be chosen; what it plays is not used.
std::string writeSilence(const QTemporaryDir &folder) {
  const std::string path = folder.filePath(QStringLiteral("silence.wav")).toStdString();
  SF_INFO info{};
  info.samplerate = kRate;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  SNDFILE *file = sf_open(path.c_str(), SFM_WRITE, &info);
  sf_write_float(file, std::vector<float>(kRate).data(), kRate);
  sf_close(file);
  return path;
}

// The input thread. Gives each block, and looks before the next one when the last painting was.
void feed(CaptureBuffer &capture, const TimedApplication &application, int blocks) {
  auto due = Clock::now();
  for (int number = 0; number < kBlocksBefore + blocks; ++number) {
    std::vector<float> samples = note(number);
    due += kBlockTime;
    std::this_thread::sleep_until(due);
    AudioBufferList list{};
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {1, kBlockFrames * sizeof(float), samples.data()};
    const AudioTimeStamp time{1.0};
    const IOProcCall call{1, &time, &list, &time, nullptr, nullptr};
    const auto full = Clock::now();
    capture.inputIOProc(&call);
    std::this_thread::sleep_until(due + kBlockTime - std::chrono::milliseconds(4));
    if (number < kBlocksBefore)
      continue;
    const std::chrono::duration<double, std::milli> taken = application.painted() - full;
    // A painting that was not done by then is as late as can be told.
    std::printf("%.3f\n", taken.count() > 0.0 ? taken.count() : 50.0);
  }
  QMetaObject::invokeMethod(qApp, &QCoreApplication::quit);
}

int run(int argc, char **argv) {
  QCoreApplication::setOrganizationName(QStringLiteral("velmora"));
  QCoreApplication::setApplicationName(QStringLiteral("Orvane"));
  TimedApplication application(argc, argv);
  if (argc != 2 || x11Connection() == nullptr)
    return 2;
  QApplication::setStyle(QStringLiteral("Fusion"));
  QDir::setSearchPaths(QStringLiteral("resources"), {QStringLiteral(ORVANE_RESOURCES_DIR)});
  const QTemporaryDir folder;
  RecordingHardware hardware({writeSilence(folder)});
  DesktopSystem system;
  UserDefaults defaults(nullptr);
  Controller controller({hardware, defaults, system, ORVANE_RESOURCES_DIR "/Temperaments.txt"});
  controller.awakeFromNib();
  controller.mAUInputUnit->stop();
  std::thread input(feed, std::ref(controller.mCapture), std::cref(application),
                    std::atoi(argv[1]));
  QApplication::exec();
  input.join();
  return 0;
}

}  // namespace
}  // namespace orvane

int main(int argc, char **argv) {
  return orvane::run(argc, argv);
}
