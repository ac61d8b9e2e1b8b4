#include "app/UserDefaults.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include "app/FileLock.h"
#include "tests/app/UserDefaultsRig.h"

namespace orvane::test {
namespace {

using namespace std::string_literals;

TEST_F(UserDefaultsTest, ADamagedFileIsToldOfAndWrittenAnew) {
  std::string noise;
  std::uint32_t state = 1;
  for (int i = 0; i < 100000; ++i) {
    state = state * 1664525U + 1013904223U;
    noise += static_cast<char>(state >> 24);
  }
  for (const std::string &bytes :
       {"no settings at all\n"s, std::string(5000, '\0'), noise, "[General\nTonicKey=3\n"s,
        "\xFF\xFE[\0G\0"s, "[General]\nTonicKey=5\nrubbish\n"s}) {
    write(bytes);
    mLog.clear();
    {
      UserDefaults defaults = open();
      EXPECT_EQ(log(), Lines{"is damaged; what can be read is used"}) << bytes.substr(0, 40);
      defaults.setInteger(5, "TonicKey");
      defaults.synchronize();
      EXPECT_EQ(log().size(), 1U);
    }
    EXPECT_EQ(read(), "[General]\nTonicKey=5\n") << bytes.substr(0, 40);
    EXPECT_EQ(readAside(), bytes);
    EXPECT_EQ(filesInFolder(), 2);
    mLog.clear();
    EXPECT_EQ(open().integerForKey("TonicKey"), 5);
    EXPECT_TRUE(mLog.empty()) << bytes.substr(0, 40);
  }
}

TEST_F(UserDefaultsTest, ADamagedFileIsKeptOnceAndNotUntilItIsWrittenOver) {
  const std::string damaged = "[General]\nTonicKey=3\nrubbish\n";
  write(damaged);
  UserDefaults defaults = open();
  defaults.synchronize();
  EXPECT_FALSE(std::filesystem::exists(mAside));
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  defaults.setInteger(6, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=6\n");
  EXPECT_EQ(readAside(), damaged);
}

TEST_F(UserDefaultsTest, ADamagedFileThatCannotBeKeptIsWrittenAnewNonetheless) {
  std::filesystem::create_directories(mAside / "inner");
  write("[General]\nTonicKey=3\nrubbish\n");
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(log(), (Lines{"is damaged; what can be read is used",
                          "cannot be kept as Orvane.ini.damaged: Is a directory"}));
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
  EXPECT_EQ(filesInFolder(), 2);
}

TEST_F(UserDefaultsTest, WhatADamagedFileStillTellsIsUsed) {
  write("[General]\nReferencePitchKey=442\nrubbish\nTonicKey=3\n");
  UserDefaults defaults = open();
  EXPECT_EQ(defaults.floatForKey("ReferencePitchKey"), 442.0F);
  EXPECT_EQ(defaults.integerForKey("TonicKey"), 3);
}

TEST_F(UserDefaultsTest, AnEmptyFileIsNotDamaged) {
  write("");
  EXPECT_EQ(open().objectForKey("TonicKey"), std::nullopt);
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, AFolderInTheFilesPlaceIsMovedAside) {
  std::filesystem::create_directories(mFile / "inner");
  UserDefaults defaults = open();
  EXPECT_EQ(log(), Lines{"is no regular file; moved to Orvane.ini.damaged"});
  EXPECT_TRUE(std::filesystem::exists(mAside / "inner"));
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
}

TEST_F(UserDefaultsTest, APipeInTheFilesPlaceIsNotWaitedFor) {
  std::filesystem::create_directories(mFile.parent_path());
  ASSERT_EQ(::mkfifo(mFile.c_str(), 0600), 0);
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(log(), Lines{"is no regular file; moved to Orvane.ini.damaged"});
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
}

TEST_F(UserDefaultsTest, AHugeFileIsMovedAsideUnread) {
  write("[General]\nTonicKey=3\n");
  std::filesystem::resize_file(mFile, 100U << 20);
  UserDefaults defaults = open();
  EXPECT_EQ(log(), Lines{"is larger than 128 KiB; moved to Orvane.ini.damaged"});
  EXPECT_EQ(defaults.objectForKey("TonicKey"), std::nullopt);
  EXPECT_EQ(std::filesystem::file_size(mAside), 100U << 20);
}

TEST_F(UserDefaultsTest, ValuesNestedAsDeepAsTheFileAllowsAreRead) {
  // Lists of one list each, in the form that a value of any type has in the file.
  std::string nested = "[General]\nTonicKey=3\na=\"@Variant(";
  while (nested.size() + 20 < UserDefaults::kMaximumFileSize)
    nested += "\0\0\0\t\0\0\0\x01"s;
  write(nested + ")\"\n");
  UserDefaults defaults = open();
  EXPECT_EQ(defaults.integerForKey("TonicKey"), 3);
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
}

TEST_F(UserDefaultsTest, AValueThatCannotBeWrittenAgainDoesNotKeepTheOthersFromBeingSaved) {
  // A date of a kind of time zone that there is not.
  write(
      "[General]\nTonicKey=3\nTuningKey=2\n"
      "date=@DateTime(\\0\\0\\0\\x10\\0\\0\\0\\0\\0\\0%\\x8b\\xa1\\0\\0\\0\\0\\x7)\n");
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_TRUE(log().empty()) << log().front();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\nTuningKey=2\n");
}

TEST_F(UserDefaultsTest, AFileThatAQuotationMarkMakesOneLineHasNothingAndIsWrittenAnew) {
  write("[a\"\nTonicKey=3\n]\n");
  UserDefaults defaults = open();
  EXPECT_EQ(defaults.objectForKey("TonicKey"), std::nullopt);
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_TRUE(log().empty()) << log().front();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
}

TEST_F(UserDefaultsTest, AFileThatCannotBeReadIsMovedAside) {
  if (::geteuid() == 0)
    GTEST_SKIP() << "root reads everything";
  write("[General]\nTonicKey=3\n");
  std::filesystem::permissions(mFile, std::filesystem::perms::none);
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(log(), Lines{"Permission denied; moved to Orvane.ini.damaged"});
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
}

TEST_F(UserDefaultsTest, WhatCannotBeMovedAsideStays) {
  std::filesystem::create_directories(mFile);
  std::filesystem::create_directories(mAside / "inner");
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  EXPECT_EQ(defaults.integerForKey("TonicKey"), 5);
  defaults.synchronize();
  EXPECT_EQ(log(), (Lines{"is no regular file; cannot be moved aside: Directory not empty",
                          "cannot be written: Is a directory"}));
  EXPECT_TRUE(std::filesystem::is_directory(mFile));
}

TEST_F(UserDefaultsTest, WithoutAFolderTheProgramKeepsItsSettingsForItself) {
  std::ofstream(mFile.parent_path()) << "a file in the folder's place";
  UserDefaults defaults = open();
  EXPECT_TRUE(mLog.empty());
  defaults.setInteger(5, "TonicKey");
  EXPECT_EQ(defaults.integerForKey("TonicKey"), 5);
  defaults.synchronize();
  EXPECT_EQ(log(), Lines{"cannot be written: Not a directory"});
}

TEST_F(UserDefaultsTest, InAFolderThatCannotBeWrittenTheOldFileStays) {
  if (::geteuid() == 0)
    GTEST_SKIP() << "root writes everywhere";
  write("[General]\nTonicKey=3\n");
  std::filesystem::permissions(mFile.parent_path(), std::filesystem::perms(0500));
  {
    UserDefaults defaults = open();
    EXPECT_EQ(defaults.integerForKey("TonicKey"), 3);
    defaults.setInteger(5, "TonicKey");
    defaults.synchronize();
  }
  std::filesystem::permissions(mFile.parent_path(), std::filesystem::perms(0700));
  EXPECT_EQ(log(), Lines{"cannot be written: no lock can be made beside it"});
  EXPECT_EQ(read(), "[General]\nTonicKey=3\n");
}

// Keeps files from growing beyond a size, as a full disk does.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) : mPreviousHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &mPrevious);
    const rlimit limit = {size, mPrevious.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &mPrevious);
    std::signal(SIGXFSZ, mPreviousHandler);
  }
  FullDisk(const FullDisk &) = delete;
  FullDisk &operator=(const FullDisk &) = delete;

 private:
  void (*mPreviousHandler)(int);
  rlimit mPrevious{};
};

TEST_F(UserDefaultsTest, OnAFullDiskTheOldFileStays) {
  const std::string old = "[General]\nTonicKey=3\n";
  const struct {
    rlim_t room;
    std::size_t length;
    std::string reason;
  } rows[] = {
      {0, 1, "no room for the whole file"},
      {200, 300, "no room for the whole file"},
      {200, 100000, "no room for the whole file"},
      {40000, 100000, "no room for the whole file"},
  };
  for (const auto &row : rows) {
    write(old);
    mLog.clear();
    UserDefaults defaults = open();
    defaults.setInteger(5, "TonicKey");
    defaults.setObject(std::string(row.length, 'x'), "org.velmora.InputDeviceKey");
    {
      const FullDisk disk(row.room);
      defaults.synchronize();
    }
    EXPECT_EQ(log(), Lines{"cannot be written: " + row.reason}) << row.room;
    EXPECT_EQ(read(), old) << row.room;
    EXPECT_EQ(filesInFolder(), 1) << row.room;
    // Once there is room again, nothing is lost.
    defaults.synchronize();
    EXPECT_EQ(open().integerForKey("TonicKey"), 5);
  }
}

TEST_F(UserDefaultsTest, ALockThatIsHeldIsNotWaitedForForLong) {
  write("[General]\nTonicKey=3\n");
  FileLock lock(mFile.string() + ".lock");
  ASSERT_EQ(lock.take({}), FileLock::Answer::Taken);
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(log(), Lines{"cannot be written: another program holds its lock"});
  EXPECT_EQ(read(), "[General]\nTonicKey=3\n");
}

TEST_F(UserDefaultsTest, TheLockOfAProgramThatCrashedIsNotWaitedFor) {
  std::filesystem::create_directories(mFile.parent_path());
  const pid_t program = ::fork();
  ASSERT_GE(program, 0);
  if (program == 0) {
    FileLock lock(mFile.string() + ".lock");
    ::_exit(lock.take({}) == FileLock::Answer::Taken ? 0 : 1);
  }
  int status = -1;
  ::waitpid(program, &status, 0);
  ASSERT_EQ(status, 0);
  ASSERT_EQ(filesInFolder(), 1);
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
  EXPECT_EQ(filesInFolder(), 1);
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, WhatAProgramLeftThatWasKilledWhileItWroteIsCleared) {
  write("[General]\nTonicKey=3\n");
  std::filesystem::create_directories(mFile.parent_path() / ".Orvane.ini.new");
  std::ofstream(mFile.parent_path() / ".Orvane.ini.new/Orvane.ini.new.lock") << "";
  std::ofstream(mFile.string() + ".lock") << "";
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
  EXPECT_EQ(filesInFolder(), 1);
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, AFileThatCannotBeReadForWantOfADescriptorStaysAsItIs) {
  const std::string old = "[General]\nTonicKey=3\nof others=1\n";
  write(old);
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none = {0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  UserDefaults defaults = open();
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(log(), Lines{"cannot be read: Too many open files"});
  EXPECT_EQ(read(), old);
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\nof%20others=1\n");
}

TEST_F(UserDefaultsTest, ALinkIsFollowedAndStays) {
  std::filesystem::create_directories(mFile.parent_path());
  std::filesystem::create_symlink("../link.ini", mFile);
  std::filesystem::create_symlink(mFolder / "elsewhere.ini", mFolder / "link.ini");
  std::ofstream(mFolder / "elsewhere.ini") << "[General]\nTonicKey=3\n";
  UserDefaults defaults = open();
  EXPECT_EQ(defaults.integerForKey("TonicKey"), 3);
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_TRUE(std::filesystem::is_symlink(mFile));
  EXPECT_TRUE(std::filesystem::is_symlink(mFolder / "link.ini"));
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
}

TEST_F(UserDefaultsTest, ALinkToAFileThatIsStillMissingIsFollowedAndStays) {
  std::filesystem::create_directories(mFile.parent_path());
  std::filesystem::create_symlink(mFolder / "elsewhere.ini", mFile);
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_TRUE(std::filesystem::is_symlink(mFile));
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
}

TEST_F(UserDefaultsTest, AFileThatIsWriteProtectedStays) {
  if (::geteuid() == 0)
    GTEST_SKIP() << "root writes everything";
  write("[General]\nTonicKey=3\n");
  std::filesystem::permissions(mFile, std::filesystem::perms(0400));
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(log(), Lines{"cannot be written: Permission denied"});
  EXPECT_EQ(read(), "[General]\nTonicKey=3\n");
}

TEST_F(UserDefaultsTest, SeveralProgramsNeverTearTheFile) {
  const std::set<std::string> whole = {"[General]\na=1\nb=" + std::string(20000, '1') + "\n",
                                       "[General]\na=2\nb=" + std::string(20000, '2') + "\n", ""};
  std::vector<pid_t> programs;
  for (const char digit : {'1', '2'}) {
    const pid_t program = ::fork();
    ASSERT_GE(program, 0);
    if (program == 0) {
      for (int i = 0; i < 50; ++i) {
        UserDefaults defaults({}, mFile);
        defaults.setObject(std::string(1, digit), "a");
        defaults.setObject(std::string(20000, digit), "b");
        defaults.synchronize();
      }
      ::_exit(0);
    }
    programs.push_back(program);
  }
  std::size_t torn = 0;
  for (const pid_t program : programs) {
    while (::waitpid(program, nullptr, WNOHANG) == 0)
      torn += !whole.contains(read());
  }
  EXPECT_EQ(torn, 0U);
  EXPECT_NE(read(), "");
}

}  // namespace
}  // namespace orvane::test
