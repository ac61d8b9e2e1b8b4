// The program's pictures, for the length of a test, are those the test writes.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <QDir>
#include <QStringList>

#include "tests/TemporaryFolder.h"

namespace orvane::test {

class PictureFolder {
 public:
  PictureFolder() {
    const QString path = QString::fromStdString((mFolder / "").string());
    QDir::setSearchPaths(QStringLiteral("resources"), {path});
  }
  ~PictureFolder() { QDir::setSearchPaths(QStringLiteral("resources"), mFormer); }
  PictureFolder(const PictureFolder &) = delete;
  PictureFolder &operator=(const PictureFolder &) = delete;

  void write(const std::string &name, const std::string &text) const {
    std::ofstream(mFolder / (name + ".svg")) << text;
  }
  // A file that can be opened and gives an error for every read.
  void writeUnreadable(const std::string &name) const {
    std::filesystem::create_symlink("/proc/self/mem", mFolder / (name + ".svg"));
  }
  // A picture of one colour.
  void writePlain(const std::string &name, int width, int height, const std::string &colour) const {
    writeDrawing(name, width, height,
                 "<rect width='" + std::to_string(width) + "' height='" + std::to_string(height) +
                     "' fill='" + colour + "'/>");
  }
  void writeDrawing(const std::string &name, int width, int height,
                    const std::string &elements) const {
    const std::string size = "width='" + std::to_string(width) + "' height='" +
                             std::to_string(height) + "' viewBox='0 0 " + std::to_string(width) +
                             ' ' + std::to_string(height) + '\'';
    write(name, "<svg xmlns='http://www.w3.org/2000/svg' " + size + '>' + elements + "</svg>");
  }

 private:
  TemporaryFolder mFolder;
  QStringList mFormer = QDir::searchPaths(QStringLiteral("resources"));
};

}  // namespace orvane::test
