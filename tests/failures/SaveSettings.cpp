// The settings' store as a program of its own, which can be killed and made to fail:
//   save-settings write FILE N   sets every one of its settings to what belongs to N and saves
//   save-settings loop FILE      the same for 1, 2, 3 … until it is killed
//   save-settings read FILE      prints the N they belong to, "none" where there are none, or
//   "torn"
// One more setting, of another program, is to stay as it is. What the store logs goes to standard
// error.
#include <iostream>
#include <string>
#include <string_view>

#include <QString>
#include <QtGlobal>

#include "app/UserDefaults.h"
#include "audio/UncheckedMemory.h"
#include "core/UncaughtErrors.h"

namespace orvane::test {
namespace {

constexpr const char *kPitch = "ReferencePitchKey";
constexpr const char *kTonic = "TonicKey";
constexpr const char *kDevice = "org.velmora.InputDeviceKey";
constexpr const char *kShow = "DisclosedKey";

std::string deviceOf(std::int64_t n) {
  return std::string(200, 'x') + std::to_string(n);
}

void log(const std::string &line) {
  std::cerr << "save-settings: " << line << std::endl;
}

void logOfToolkit(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &line) {
  log(line.toStdString());
}

void save(const char *file, std::int64_t n) {
  UserDefaults defaults(log, file);
  defaults.setFloat(static_cast<float>(n), kPitch);
  defaults.setInteger(n, kTonic);
  defaults.setBool(n % 2 == 1, kShow);
  defaults.setObject(deviceOf(n), kDevice);
  defaults.synchronize();
}

std::string read(const char *file) {
  const UserDefaults defaults(log, file);
  const auto device = defaults.objectForKey(kDevice);
  if (!device && !defaults.objectForKey(kPitch) && !defaults.objectForKey(kTonic))
    return "none";
  const std::int64_t n = defaults.integerForKey(kTonic);
  const bool isWhole = device == deviceOf(n) && defaults.boolForKey(kShow) == (n % 2 == 1) &&
                       defaults.floatForKey(kPitch) == static_cast<float>(n);
  return isWhole ? std::to_string(n) : "torn";
}

[[gnu::constructor(101)]] void prepareForTheWorst() {
  reportUncaughtErrors("save-settings");
  reportUncheckedMemory("save-settings");
  endWithoutMemory();
}

}  // namespace
}  // namespace orvane::test

int main(int argc, char **argv) {
  qInstallMessageHandler(orvane::test::logOfToolkit);
  const std::string_view task = argc > 2 ? argv[1] : "";
  if (task == "write" && argc == 4) {
    orvane::test::save(argv[2], std::stoll(argv[3]));
  } else if (task == "read") {
    std::cout << orvane::test::read(argv[2]) << std::endl;
  } else if (task == "loop") {
    for (std::int64_t n = 1;; ++n)
      orvane::test::save(argv[2], n);
  } else {
    return 2;
  }
  return 0;
}
