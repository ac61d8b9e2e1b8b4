#include "app/UserDefaults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <system_error>
#include <utility>

#include <QByteArray>
#include <QChar>
#include <QDataStream>
#include <QFile>
#include <QIODevice>
#include <QList>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

#include "app/FileLock.h"
#include "core/NumberText.h"
#include "core/RegularFile.h"

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

// What there is to know of the file before it is given to QSettings, which takes one that it cannot
// read for an empty one.
struct Inspection {
  std::string reason;     // why it cannot be read; empty when it can, or is missing
  bool mayPass = false;   // the reason is none of the file's
  bool hasValue = false;  // a line of it gives a value to a key
};

Inspection unreadable(int error) {
  return {std::generic_category().message(error),
          error == EMFILE || error == ENFILE || error == ENOMEM || error == EIO};
}

// Only for a key that QSettings cannot fail to list.
bool givesValue(const std::string &line) {
  const std::size_t sign =
      line.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-");
  return sign != 0 && sign != std::string::npos && line[sign] == '=';
}

Inspection inspect(const std::filesystem::path &file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (status.type() == std::filesystem::file_type::not_found)
    return {};
  if (error)
    return unreadable(error.value());
  // Opening a pipe could wait for ever.
  if (!std::filesystem::is_regular_file(status))
    return {"is no regular file"};
  const auto size = std::filesystem::file_size(file, error);
  if (error)
    return unreadable(error.value());
  if (size > UserDefaults::kMaximumFileSize)
    return {"is larger than " + std::to_string(UserDefaults::kMaximumFileSize >> 10) + " KiB"};
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0)
    return unreadable(errno);
  std::string bytes(size, '\0');
  const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
  const int readError = errno;
  ::close(descriptor);
  if (count < 0)
    return unreadable(readError);
  Inspection inspection;
  std::istringstream lines(bytes);
  // From a quotation mark or backslash on, a line need not be one.
  for (std::string line; !inspection.hasValue && std::getline(lines, line) &&
                         line.find_first_of("\"\\") == std::string::npos;)
    inspection.hasValue = givesValue(line);
  return inspection;
}

// Whether a person can have written it; damage makes keys that are no text.
bool isReadableKey(const QString &key) {
  // QSettings takes such slashes out of a key that it is asked for.
  if (key.startsWith(u'/') || key.endsWith(u'/') || key.contains(QStringLiteral("//")))
    return false;
  const QList<uint> characters = key.toUcs4();
  return !key.isEmpty() && std::all_of(characters.begin(), characters.end(), [](uint character) {
    return QChar::isPrint(character) && character != QChar::ReplacementCharacter;
  });
}

// Whether what QSettings would write of the value reads the same again. A broken one in the file,
// such as a time of no time zone, does not, and would stop all others from being saved.
bool isWritable(const QVariant &value) {
  // The forms that QSettings writes.
  const auto version =
      value.typeId() == QMetaType::QDateTime ? QDataStream::Qt_5_6 : QDataStream::Qt_4_0;
  QByteArray bytes;
  QDataStream out(&bytes, QIODevice::WriteOnly);
  out.setVersion(version);
  out << value;
  QDataStream in(bytes);
  in.setVersion(version);
  QVariant again;
  in >> again;
  return textOf(again) == textOf(value);
}

// QSettings writes the name of this section in one way, however it was read.
QString asWritten(const QString &key) {
  const QString section = QStringLiteral("General/");
  return key.startsWith(section, Qt::CaseInsensitive) ? section + key.mid(section.size()) : key;
}

// All text that can be asked for again by its key.
QVariantMap valuesOf(const QSettings &settings) {
  QVariantMap values;
  for (const QString &key : settings.allKeys()) {
    if (!isReadableKey(key) || !settings.contains(key))
      continue;
    const QVariant value = settings.value(key);
    if (textOf(value).isValidUtf16() && isWritable(value))
      values.insert(asWritten(key), value);
  }
  return values;
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

// Holds all that the writing makes, and takes it away again. Always the same, so that no heap of
// them is left by programs that end in the midst of it.
class WorkFolder {
 public:
  explicit WorkFolder(std::filesystem::path path) : mPath(std::move(path)) {
    remove();
    mError = ::mkdir(mPath.c_str(), S_IRWXU) == 0 ? 0 : errno;
  }
  ~WorkFolder() { remove(); }
  WorkFolder(const WorkFolder &) = delete;
  WorkFolder &operator=(const WorkFolder &) = delete;

  int error() const { return mError; }
  const std::filesystem::path &path() const { return mPath; }

 private:
  void remove() const {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }

  std::filesystem::path mPath;
  int mError = 0;
};

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

void UserDefaults::keepDamaged(const std::filesystem::path &target,
                               const std::filesystem::path &work) {
  std::filesystem::path aside = target;
  aside += ".damaged";
  const std::filesystem::path copy = work / aside.filename();
  std::error_code error;
  std::filesystem::copy_file(target, copy, error);
  if (!error && !flushToDisk(copy))
    error = std::make_error_code(std::errc::io_error);
  if (!error)
    std::filesystem::rename(copy, aside, error);
  if (error)
    tell("cannot be kept as " + aside.filename().string() + ": " + error.message());
}

bool UserDefaults::load() {
  const Inspection inspection = inspect(mFile);
  if (inspection.mayPass) {
    tell("cannot be read: " + inspection.reason);
    return false;
  }
  if (!inspection.reason.empty()) {
    mStored.clear();
    moveAside(inspection.reason);
    return true;
  }
  const QSettings settings(toolkitPath(mFile), QSettings::IniFormat);
  const bool isUnread = settings.status() == QSettings::NoError && inspection.hasValue &&
                        settings.allKeys().isEmpty();
  if (settings.status() == QSettings::AccessError || isUnread) {
    tell("cannot be read");
    return false;
  }
  mStored = valuesOf(settings);
  if (settings.status() != QSettings::NoError) {
    tell("is damaged; what can be read is used");
    std::error_code error;
    mDamagedTime = std::filesystem::last_write_time(mFile, error);
  }
  return true;
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
  if (error)
    return tell("cannot be written: " + error.message());
  // Programs that write at the same time would otherwise undo each other's changes.
  std::filesystem::path lockFile = fileBehindLinks(mFile);
  lockFile += ".lock";
  FileLock lock(lockFile);
  const FileLock::Answer answer = lock.take(kLockTimeout);
  if (answer == FileLock::Answer::HeldByAnother)
    return tell("cannot be written: another program holds its lock");
  if (answer == FileLock::Answer::Impossible)
    return tell("cannot be written: no lock can be made beside it");
  // Written without having been read, it would lose what others keep there.
  const std::string reason = load() ? save() : "it cannot be read";
  if (!reason.empty())
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
  const std::filesystem::path target = fileBehindLinks(mFile);
  if (::access(target.c_str(), W_OK) != 0 && errno != ENOENT)
    return std::generic_category().message(errno);
  std::filesystem::path work = target.parent_path() / ".";
  work += target.filename();
  work += ".new";
  const WorkFolder folder(work);
  if (folder.error() != 0)
    return std::generic_category().message(folder.error());
  const std::filesystem::path file = folder.path() / target.filename();
  if (!write(values, file))
    return "no room for the whole file";
  succeed(file, target);
  if (!flushToDisk(file))
    return "the disk does not take it";
  std::error_code error;
  // QSettings tells of damage only when it reads a changed file.
  if (mDamagedTime && std::filesystem::last_write_time(target, error) == mDamagedTime)
    keepDamaged(target, folder.path());
  std::filesystem::rename(file, target, error);
  if (error)
    return error.message();
  mStored = std::move(values);
  mChanges.clear();
  return {};
}

}  // namespace orvane
