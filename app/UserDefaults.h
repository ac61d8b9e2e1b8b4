// The settings that outlive the program: one text per key, in an INI file of the user's
// (QSettings), in the section [General]. The file is replaced as a whole, so that it is always
// either the old or the new one, on a full disk and with several programs writing too. What others
// write there under other keys and in other sections is kept; comments are not.
//
// Errors never reach the caller: a setting that cannot be read counts as absent, and what goes
// wrong is told to the log, in one line and once. What lies in the file's place but is no file, too
// large or not to be read is moved aside, with ".damaged" appended to its name; but for want of
// memory or descriptors, or when the disk fails, it stays as it is and is not written. Of a damaged
// file, what can be read is used, and a copy of that name is kept when it is first written over.
// What cannot be written stays set for this run.
//
// Keys are made of ASCII letters, digits, ".", "_" and "-". Texts are UTF-8; of one that another
// hand has written, unquoted and with commas, the blanks around the commas are not kept: it is read
// with one behind each. Main thread only; file access blocks, for a lock that another program holds
// at most kLockTimeout.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include <QMap>
#include <QString>
#include <QVariant>

namespace orvane {

class UserDefaults {
 public:
  using Log = std::function<void(const std::string &)>;

  // Bytes. Values can be nested in a file, and are read by recursion: what is as deep as this
  // allows still fits on the stack.
  static constexpr std::uintmax_t kMaximumFileSize = std::uintmax_t{128} << 10;
  static constexpr std::chrono::milliseconds kLockTimeout{1000};

  // velmora/Orvane.ini in the user's configuration folder, ~/.config unless the environment says
  // otherwise.
  static std::filesystem::path standardFile();

  // Reads the file if there is one. An empty log is allowed.
  explicit UserDefaults(Log log, const std::filesystem::path &file = standardFile());

  // Values for keys that the file lacks, as texts; they are never written. The last one given for a
  // key counts.
  void registerDefaults(const std::map<std::string, std::string> &dictionary);

  // The value that was set or stored, else the registered one, else nothing.
  std::optional<std::string> objectForKey(const std::string &key) const;
  std::optional<std::string> stringForKey(const std::string &key) const;
  // The same read as core/NumberText reads it; 0 or false for nothing.
  float floatForKey(const std::string &key) const;
  std::int64_t integerForKey(const std::string &key) const;
  bool boolForKey(const std::string &key) const;

  void setFloat(float value, const std::string &key);
  void setInteger(std::int64_t value, const std::string &key);
  void setBool(bool value, const std::string &key);
  // Nothing removes the key.
  void setObject(const std::optional<std::string> &value, const std::string &key);

  // Writes to the file what was set, and reads what others have written since. The folders are made
  // when they are missing.
  void synchronize();

 private:
  // False when the file cannot be read now, but may hold settings.
  bool load();
  // Why the file could not be replaced; empty when it was.
  std::string save();
  void moveAside(const std::string &reason);
  // Copies what is about to be replaced. work: a folder on the same disk.
  void keepDamaged(const std::filesystem::path &target, const std::filesystem::path &work);
  void tell(const std::string &what);

  Log mLog;
  std::filesystem::path mFile;
  std::set<std::string> mTold;
  std::map<std::string, std::string> mRegistered;
  QVariantMap mStored;  // as the file has them, by their whole keys
  std::optional<std::filesystem::file_time_type> mDamagedTime;  // of a file that was damaged
  std::map<std::string, std::optional<std::string>> mChanges;   // not yet in the file
};

}  // namespace orvane
