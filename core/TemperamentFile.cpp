#include "core/TemperamentFile.h"

#include <cstdlib>
#include <system_error>

namespace orvane {
namespace {

// Empty for a variable that is not set, or whose path depends on the current folder.
std::filesystem::path folderFrom(const char *variable) {
  const char *value = std::getenv(variable);
  const std::filesystem::path folder = value != nullptr ? value : "";
  return folder.is_absolute() ? folder : std::filesystem::path();
}

}  // namespace

std::filesystem::path userTemperamentFile() {
  std::filesystem::path folder = folderFrom("XDG_DATA_HOME");
  if (folder.empty()) {
    folder = folderFrom("HOME");
    if (folder.empty())
      return {};
    folder /= ".local/share";
  }
  return folder / "velmora" / "Orvane" / "Temperaments.txt";
}

std::filesystem::path temperamentFile(const std::optional<std::string> &named,
                                      const std::filesystem::path &shipped) {
  if (named)
    return *named;
  const std::filesystem::path own = userTemperamentFile();
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(own, error)) ? own : shipped;
}

}  // namespace orvane
