#include "app/UserDefaults.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <QChar>
#include <QFile>
#include <QIODevice>
#include <QList>
#include <QLockFile>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>

#include "core/NumberText.h"

namespace orvane {
namespace {

QString toolkitPath(const std::filesystem::path &path) {
  return QString::fromStdString(path.string());
}

QString textOf(const QVariant &value) {
  // Commas outside quotes make a list of a value.
  const bool isList =
      value.typeId() == QMetaType::QStringList || value.typeId() == QMetaType::QVariantList;
  return isList ? value.toStringList().join(QStringLiteral(", ")) : value.toString();
}

// Why the file cannot be given to QSettings; empty when it can or is missing.
std::string whyUnreadable(const std::filesystem::path &file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (status.type() == std::filesystem::file_type::not_found)
    return {};
  if (error)
    return error.message();
  // Opening a pipe could wait for ever.
  if (!std::filesystem::is_regular_file(status))
    return "is no regular file";
  if (::access(file.c_str(), R_OK) != 0)
    return std::generic_category().message(errno);
  const auto size = std::filesystem::file_size(file, error);
  if (error)
    return error.message();
  if (size > UserDefaults::kMaximumFileSize)
    return "is larger than " + std::to_string(UserDefaults::kMaximumFileSize >> 10) + " KiB";
  return {};
}

// Whether a person can have written it; damage makes keys that are no text.
bool isReadableKey(const QString &key) {
  const QList<uint> characters = key.toUcs4();
  return !key.isEmpty() && std::all_of(characters.begin(), characters.end(), [](uint character) {
    return QChar::isPrint(character) && character != QChar::ReplacementCharacter;
  });
}

// All text that can be asked for again by its key.
QVariantMap valuesOf(const QSettings &settings) {
  QVariantMap values;
  for (const QString &key : settings.allKeys()) {
    if (isReadableKey(key) && settings.contains(key) && textOf(settings.value(key)).isValidUtf16())
      values.insert(key, settings.value(key));
  }
  return values;
}

// The file that the path stands for, behind all symbolic links; it need not exist.
std::filesystem::path targetOf(std::filesystem::path file) {
  constexpr int kMaximumLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMaximumLinks && std::filesystem::is_symlink(file, error); ++i)
    file = file.parent_path() / std::filesystem::read_symlink(file, error);
  return file;
}

// Whether a file now holds all the values. On a full disk QSettings writes a part of a file and
// reports no error.
bool write(const QVariantMap &values, const std::filesystem::path &file) {
  std::filesystem::path written = file;
  written += ".new";
  {
    QSettings settings(toolkitPath(written), QSettings::IniFormat);
    for (auto value = values.begin(); value != values.end(); ++value)
      settings.setValue(value.key(), value.value());
    settings.sync();
    if (settings.status() != QSettings::NoError)
      return false;
  }
  // Under the name it was written by, QSettings would answer from its memory.
  std::error_code error;
  std::filesystem::rename(written, file, error);
  if (error)
    return false;
  const QSettings settings(toolkitPath(file), QSettings::IniFormat);
  for (auto value = values.begin(); value != values.end(); ++value) {
    // Texts, because not every value that a file can hold equals itself.
    if (!settings.contains(value.key()) ||
        textOf(settings.value(value.key())) != textOf(value.value()))
      return false;
  }
  return settings.status() == QSettings::NoError;
}

// Gives a new file the permissions of the one that it replaces, and a later time.
void succeed(const std::filesystem::path &file, const std::filesystem::path &replaced) {
  std::error_code error;
  if (const auto status = std::filesystem::status(replaced, error); std::filesystem::exists(status))
    std::filesystem::permissions(file, status.permissions(), error);
  // QSettings knows a changed file by its size and its time in whole milliseconds, which two files
  // written at once can share.
  const auto next =
      std::filesystem::last_write_time(replaced, error) + std::chrono::milliseconds(1);
  if (!error && std::filesystem::last_write_time(file, error) < next)
    std::filesystem::last_write_time(file, next, error);
}

bool flushToDisk(const std::filesystem::path &file) {
  QFile stream(toolkitPath(file));
  return stream.open(QIODevice::ReadOnly) && ::fsync(stream.handle()) == 0;
}

}  // namespace

std::filesystem::path UserDefaults::standardFile() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return std::filesystem::path(folder.toStdString()) / "velmora" / "Orvane.ini";
}

UserDefaults::UserDefaults(Log log, const std::filesystem::path &file)
    : mLog(std::move(log)), mFile(file) {
  load();
}

void UserDefaults::tell(const std::string &what) {
  if (mTold.insert(what).second && mLog)
    mLog("settings: " + mFile.string() + ": " + what);
}

void UserDefaults::moveAside(const std::string &reason) {
  std::filesystem::path aside = mFile;
  aside += ".damaged";
  std::error_code error;
  std::filesystem::rename(mFile, aside, error);
  tell(reason + (error ? "; cannot be moved aside: " + error.message()
                       : "; moved to " + aside.filename().string()));
}

void UserDefaults::load() {
  mStored.clear();
  if (const std::string reason = whyUnreadable(mFile); !reason.empty()) {
    moveAside(reason);
    return;
  }
  const QSettings settings(toolkitPath(mFile), QSettings::IniFormat);
  mStored = valuesOf(settings);
  if (settings.status() != QSettings::NoError)
    tell("is damaged; what can be read is used");
}

void UserDefaults::registerDefaults(const std::map<std::string, std::string> &dictionary) {
  for (const auto &[key, value] : dictionary)
    mRegistered.insert_or_assign(key, value);
}

std::optional<std::string> UserDefaults::objectForKey(const std::string &key) const {
  const auto changed = mChanges.find(key);
  if (changed != mChanges.end() && changed->second)
    return changed->second;
  if (changed == mChanges.end()) {
    if (const auto stored = mStored.find(QString::fromStdString(key)); stored != mStored.end())
      return textOf(*stored).toStdString();
  }
  const auto registered = mRegistered.find(key);
  return registered == mRegistered.end() ? std::nullopt : std::optional(registered->second);
}

std::optional<std::string> UserDefaults::stringForKey(const std::string &key) const {
  return objectForKey(key);
}

float UserDefaults::floatForKey(const std::string &key) const {
  return floatValue(objectForKey(key).value_or(""));
}

std::int64_t UserDefaults::integerForKey(const std::string &key) const {
  return integerValue(objectForKey(key).value_or(""));
}

bool UserDefaults::boolForKey(const std::string &key) const {
  return boolValue(objectForKey(key).value_or(""));
}

void UserDefaults::setFloat(float value, const std::string &key) {
  setObject(floatText(value), key);
}

void UserDefaults::setInteger(std::int64_t value, const std::string &key) {
  setObject(std::to_string(value), key);
}

void UserDefaults::setBool(bool value, const std::string &key) {
  setObject(value ? "true" : "false", key);
}

void UserDefaults::setObject(const std::optional<std::string> &value, const std::string &key) {
  mChanges.insert_or_assign(key, value);
}

void UserDefaults::synchronize() {
  std::error_code error;
  std::filesystem::create_directories(mFile.parent_path(), error);
  // Programs that write at the same time would otherwise undo each other's changes.
  QLockFile lock(toolkitPath(mFile) + QStringLiteral(".lock"));
  if (error || !lock.tryLock(static_cast<int>(kLockTimeout.count()))) {
    const bool isHeld = !error && lock.error() == QLockFile::LockFailedError;
    tell(std::string("cannot be written: ") + (error    ? error.message()
                                               : isHeld ? "another program holds its lock"
                                                        : "no lock can be made beside it"));
    return;
  }
  load();
  if (const std::string reason = save(); !reason.empty())
    tell("cannot be written: " + reason);
}

std::string UserDefaults::save() {
  if (mChanges.empty())
    return {};
  QVariantMap values = mStored;
  for (const auto &[name, value] : mChanges) {
    const QString key = QString::fromStdString(name);
    if (value)
      values.insert(key, QString::fromStdString(*value));
    else
      values.remove(key);
  }
  const std::filesystem::path target = targetOf(mFile);
  if (::access(target.c_str(), W_OK) != 0 && errno != ENOENT)
    return std::generic_category().message(errno);
  // A folder of its own holds all that the writing makes, and takes it away again.
  const QTemporaryDir folder(toolkitPath(target.parent_path() / ".Orvane-XXXXXX"));
  if (!folder.isValid())
    return folder.errorString().toStdString();
  const std::filesystem::path file =
      std::filesystem::path(folder.path().toStdString()) / target.filename();
  if (!write(values, file))
    return "no room for the whole file";
  succeed(file, target);
  if (!flushToDisk(file))
    return "the disk does not take it";
  std::error_code error;
  std::filesystem::rename(file, target, error);
  if (error)
    return error.message();
  mStored = std::move(values);
  mChanges.clear();
  return {};
}

}  // namespace orvane
