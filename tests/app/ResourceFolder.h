// The program's resources, for the length of a test, are a copy that the test may edit. The help
// panel, which lives as long as the application, does not outlive it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include <QApplication>
#include <QDir>
#include <QStringList>

#include <gtest/gtest.h>

#include "app/HelpPanel.h"
#include "tests/TemporaryFolder.h"

namespace orvane::test {

class ResourceFolder {
 public:
  ResourceFolder() {
    std::filesystem::copy(ORVANE_RESOURCES_DIR, mPath);
    QDir::setSearchPaths(QStringLiteral("resources"), {QString::fromStdString(mPath.string())});
  }
  ~ResourceFolder() {
    for (QObject *child : QObjectList(qApp->children())) {
      if (dynamic_cast<HelpPanel *>(child) != nullptr)
        delete child;
    }
    QDir::setSearchPaths(QStringLiteral("resources"), mFormer);
  }
  ResourceFolder(const ResourceFolder &) = delete;
  ResourceFolder &operator=(const ResourceFolder &) = delete;

  std::string read(const std::string &name) const {
    std::ifstream stream(mPath / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void write(const std::string &name, const std::string &bytes) const {
    std::ofstream(mPath / name, std::ios::binary) << bytes;
  }
  void remove(const std::string &name) const { std::filesystem::remove(mPath / name); }
  void makeFolder(const std::string &name) const {
    std::filesystem::create_directory(mPath / name);
  }
  // It can be opened, and every read gives an error.
  void makeUnreadable(const std::string &name) const {
    remove(name);
    std::filesystem::create_symlink("/proc/self/mem", mPath / name);
  }
  // Replaces the text wherever it stands, which must be somewhere.
  void edit(const std::string &name, const std::string &text, const std::string &other) const {
    std::string bytes = read(name);
    std::size_t count = 0;
    for (std::size_t at = 0; (at = bytes.find(text, at)) != std::string::npos; ++count)
      bytes.replace(std::exchange(at, at + other.size()), text.size(), other);
    ASSERT_GT(count, 0U) << text;
    write(name, bytes);
  }
  // As the program brings it.
  void restore(const std::string &name) const {
    std::filesystem::copy_file(std::filesystem::path(ORVANE_RESOURCES_DIR) / name, mPath / name,
                               std::filesystem::copy_options::overwrite_existing);
  }

 private:
  TemporaryFolder mFolder;
  const std::filesystem::path mPath = mFolder / "resources";
  const QStringList mFormer = QDir::searchPaths(QStringLiteral("resources"));
};

// The description of a window that fits the help panel.
inline const std::string kHelpDescription =
    "<ui version=\"4.0\"><class>Help</class><widget class=\"Window\" name=\"Help\">"
    "<property name=\"geometry\"><rect><x>0</x><y>0</y><width>300</width><height>200</height>"
    "</rect></property></widget></ui>";

}  // namespace orvane::test
