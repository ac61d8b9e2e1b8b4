// A folder for the length of a test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace orvane::test {

class TemporaryFolder {
 public:
  // Throws std::runtime_error where none can be made.
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "orvane-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
      throw std::runtime_error("no temporary folder");
    mPath = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  std::filesystem::path operator/(const std::string &name) const { return mPath / name; }

 private:
  std::filesystem::path mPath;
};

}  // namespace orvane::test
