// Looking at the tuner at the moments that count: when a window appears, when the hardware is
// called, while the alert is up. And the settings file as lines.
#pragma once

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include "tests/app/ControllerRig.h"

namespace orvane::test {

using Lines = std::vector<std::string>;

// Tells of every window that is shown, by its object's name.
class WindowWatch : public QObject {
 public:
  explicit WindowWatch(std::function<void(const std::string &)> shown) : mShown(std::move(shown)) {
    qApp->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override {
    if (event->type() == QEvent::Show && watched->isWidgetType() &&
        static_cast<QWidget *>(watched)->isWindow())
      mShown(watched->objectName().toStdString());
    return false;
  }

 private:
  const std::function<void(const std::string &)> mShown;
};

class WatchedHardware : public FakeHardware {
 public:
  using FakeHardware::FakeHardware;

  std::function<void()> beforeDeviceList = [] {};
  std::function<void()> beforeStop = [] {};

  OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID, UInt32 *outSize,
                                        Boolean *outWritable) override {
    beforeDeviceList();
    return FakeHardware::AudioHardwareGetPropertyInfo(inPropertyID, outSize, outWritable);
  }
  OSStatus AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc inProc) override {
    beforeStop();
    return FakeHardware::AudioDeviceStop(inDevice, inProc);
  }
};

class WatchedSystem : public FakeSystem {
 public:
  using FakeSystem::FakeSystem;

  std::function<void()> duringAlert = [] {};

  void runAlertPanel(const std::string &title, const std::string &message,
                     const std::string &button) override {
    FakeSystem::runAlertPanel(title, message, button);
    duringAlert();
  }
};

// A tuner that has not been awakened.
struct WatchedTuner {
  explicit WatchedTuner(std::vector<FakeDevice> devices = {microphone()})
      : hardware(std::move(devices)) {}

  TemporaryFolder folder;
  const std::filesystem::path settingsFile = folder / "Orvane.ini";
  WatchedHardware hardware;
  WatchedSystem system{hardware};
  UserDefaults defaults{{}, settingsFile};
  Controller controller{{hardware, defaults, system,
                         std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt"}};
};

// Settings as "key=value".
inline void writeSettings(const std::filesystem::path &file, const Lines &settings) {
  std::ofstream stream(file);
  stream << "[General]\n";
  for (const std::string &line : settings)
    stream << line << '\n';
}

// The lines of the file but the blank ones, sorted.
inline Lines readSettingsLines(const std::filesystem::path &file) {
  Lines lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty())
      lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

// What the hardware is asked when the stream of a device starts and stops. The procedures and the
// objects they are called with have no names here.
inline Lines startCalls(const std::string &device) {
  return {"AddIOProc " + device + " ? ?",
          "AddListener " + device + " 0 in livn ? ?",
          "AddListener " + device + " 0 in slay ? ?",
          "AddListener " + device + " 0 in sfmt ? ?",
          "AddListener " + device + " 0 in ssrc ? ?",
          "AddListener " + device + " 0 in diff ? ?",
          "AddListener " + device + " * in volm ? ?",
          "AddListener " + device + " * in vdb# ? ?",
          "Start " + device + " ?"};
}

inline Lines stopCalls(const std::string &device) {
  return {"Stop " + device + " ?",
          "RemoveListener " + device + " 0 in livn ?",
          "RemoveListener " + device + " 0 in slay ?",
          "RemoveListener " + device + " 0 in sfmt ?",
          "RemoveListener " + device + " 0 in ssrc ?",
          "RemoveListener " + device + " 0 in diff ?",
          "RemoveListener " + device + " * in volm ?",
          "RemoveListener " + device + " * in vdb# ?",
          "RemoveIOProc " + device + " ?"};
}

// Two temperaments, which make the menu four items long.
inline std::filesystem::path twoTemperaments(const TemporaryFolder &folder) {
  const std::u16string text =
      u"\uFEFF{ Alpha = (0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11);"
      u" Beta = (0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0); }";
  const std::filesystem::path file = folder / "Temperaments.txt";
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char *>(text.data()),
             static_cast<std::streamsize>(text.size() * sizeof(char16_t)));
  return file;
}

}  // namespace orvane::test
