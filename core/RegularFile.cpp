#include "core/RegularFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace orvane {

std::optional<std::string> readRegularFile(const std::filesystem::path &file, std::size_t limit,
                                           std::string &reason) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (error) {
    reason = error.message();
    return std::nullopt;
  }
  if (!std::filesystem::is_regular_file(status)) {
    reason = std::filesystem::is_directory(status) ? "is a folder" : "is no regular file";
    return std::nullopt;
  }

  const std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(
      std::fopen(file.string().c_str(), "rb"), &std::fclose);
  if (!stream) {
    reason = std::generic_category().message(errno);
    return std::nullopt;
  }
  std::string bytes;
  std::array<char, 65536> chunk;
  while (bytes.size() <= limit) {
    const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), stream.get());
    bytes.append(chunk.data(), count);
    if (count < chunk.size())
      break;
  }
  if (std::ferror(stream.get()) != 0) {
    reason = std::generic_category().message(errno);
    return std::nullopt;
  }
  if (bytes.size() > limit) {
    reason = "larger than " + std::to_string(limit >> 20) + " MiB";
    return std::nullopt;
  }
  return bytes;
}

std::filesystem::path fileBehindLinks(std::filesystem::path file) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(file, error); ++i)
    file = file.parent_path() / std::filesystem::read_symlink(file, error);
  return file;
}

}  // namespace orvane
