#include "cli/Resources.h"

#include <system_error>

namespace orvane {

std::filesystem::path resourcePath(const std::string &name) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    const auto installed = program.parent_path().parent_path() / "share" / "orvane" / name;
    if (std::filesystem::exists(installed, error))
      return installed;
  }
  return std::filesystem::path(ORVANE_SOURCE_RESOURCES) / name;
}

}  // namespace orvane
