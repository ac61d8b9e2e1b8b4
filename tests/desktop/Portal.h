// The settings portal of a desktop, as fake-portal plays it. It can be called when it is made, and
// goes with the object. Main thread only.
#pragma once

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/TemporaryFolder.h"
#include "tests/servers/ChildProcess.h"

namespace orvane::test {

class Portal {
 public:
  static constexpr const char *kNoPreference = "vu 0";
  static constexpr const char *kDark = "vu 1";
  static constexpr const char *kLight = "vu 2";

  // answer is what it says of the colours, as fake-portal takes it. Throws std::runtime_error when
  // it does not start within 10 s.
  Portal(const std::string &busAddress, const std::string &answer)
      : mProcess({ORVANE_FAKE_PORTAL, busAddress, answer}, log()) {
    for (int k = 0; k < 1000; ++k) {
      std::string line;
      if (std::ifstream file(log()); std::getline(file, line) && line == "ready")
        return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    throw std::runtime_error("the portal does not start");
  }

  // Tells all programs that the colours are like that now: "u 1" for dark ones.
  void change(const std::string &value) const { mProcess.writeLine(value); }

 private:
  std::string log() const { return (mFolder / "portal.log").string(); }

  TemporaryFolder mFolder;
  ChildProcess mProcess;
};

}  // namespace orvane::test
