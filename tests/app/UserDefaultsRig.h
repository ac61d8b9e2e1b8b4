// A settings store in a folder of its own, which can be opened again as by the next start.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/UserDefaults.h"
#include "tests/TemporaryFolder.h"

namespace orvane::test {

using Lines = std::vector<std::string>;

class UserDefaultsTest : public testing::Test {
 protected:
  UserDefaults open() {
    return UserDefaults([this](const std::string &line) { mLog.push_back(line); }, mFile);
  }
  void write(const std::string &bytes) const {
    std::filesystem::create_directories(mFile.parent_path());
    std::ofstream(mFile, std::ios::binary) << bytes;
  }
  std::string read() const { return contentOf(mFile); }
  std::string readAside() const { return contentOf(mAside); }
  std::ptrdiff_t filesInFolder() const {
    return std::distance(std::filesystem::directory_iterator(mFile.parent_path()), {});
  }
  // The lines without the path they begin with.
  Lines log() const {
    const std::string start = "settings: " + mFile.string() + ": ";
    Lines lines;
    for (const std::string &line : mLog)
      lines.push_back(line.starts_with(start) ? line.substr(start.size()) : line);
    return lines;
  }

  static std::string contentOf(const std::filesystem::path &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryFolder mFolder;
  const std::filesystem::path mFile = mFolder / "velmora/Orvane.ini";
  const std::filesystem::path mAside = mFolder / "velmora/Orvane.ini.damaged";
  Lines mLog;
};

}  // namespace orvane::test
