// Files that are read whole, and where a path leads. Any thread; not real-time safe.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace orvane {

// The bytes of a regular file of at most limit bytes, a whole number of MiB. Nothing, and the
// reason, for what is missing, unreadable, larger, a folder or no regular file: opening a pipe
// could wait for ever.
std::optional<std::string> readRegularFile(const std::filesystem::path &file, std::size_t limit,
                                           std::string &reason);

// The file that the path stands for, behind all symbolic links; it need not exist. Links that lead
// to each other stay links. Not real-time safe.
std::filesystem::path fileBehindLinks(std::filesystem::path file);

}  // namespace orvane
