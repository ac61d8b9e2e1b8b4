#include "app/DesktopSystem.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <QByteArray>

#include <gtest/gtest.h>

#include "tests/TemporaryFolder.h"

namespace orvane::test {
namespace {

using Lines = std::vector<std::string>;

class EnvironmentVariable {
 public:
  EnvironmentVariable(const char *name, const std::string &value)
      : mName(name), mWasSet(qEnvironmentVariableIsSet(name)), mFormer(qgetenv(name)) {
    qputenv(name, QByteArray::fromStdString(value));
  }
  ~EnvironmentVariable() {
    if (mWasSet)
      qputenv(mName, mFormer);
    else
      qunsetenv(mName);
  }
  EnvironmentVariable(const EnvironmentVariable &) = delete;
  EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;

 private:
  const char *mName;
  bool mWasSet;
  QByteArray mFormer;
};

// The folder in which programs are looked for, empty at first.
class DesktopSystemTest : public testing::Test {
 protected:
  // A program that writes down how it was called.
  void install(const std::string &program) const {
    const std::filesystem::path file = mFolder / program;
    std::ofstream(file) << "#!/bin/sh\necho \"${0##*/} $*\" >> '" << mCalls.string() << "'\n";
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  }
  // What was called, once it is that much.
  Lines calls(std::size_t count) const {
    Lines lines;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (lines.size() < count && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      lines.clear();
      std::ifstream stream(mCalls);
      for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    }
    return lines;
  }
  // What both steps start on that desktop.
  Lines startedOn(const std::string &desktop) {
    const EnvironmentVariable current("XDG_CURRENT_DESKTOP", desktop);
    std::filesystem::remove(mCalls);
    mSystem.openSoundSettings();
    mSystem.showSoundInputPage();
    return calls(2);
  }

  TemporaryFolder mFolder;
  const std::filesystem::path mCalls = mFolder / "calls.txt";
  const EnvironmentVariable mPath{"PATH", (mFolder / "").string()};
  DesktopSystem mSystem;
};

TEST(DesktopSystem, KnowsTheSoundSettingsOfEveryDesktop) {
  const QStringList gnome = {"gnome-control-center", "sound"};
  const QStringList kde = {"systemsettings", "kcm_pulseaudio"};
  const QStringList other = {"pavucontrol", "--tab=4"};
  for (const auto &[desktop, command] :
       {std::pair("GNOME", gnome), std::pair("ubuntu:GNOME", gnome),
        std::pair("GNOME-Classic:GNOME", gnome), std::pair("gnome", gnome), std::pair("KDE", kde),
        std::pair("XFCE", other), std::pair("", other), std::pair("GNOMEX", other)}) {
    const QString name = QString::fromUtf8(desktop);
    EXPECT_EQ(DesktopSystem::soundSettingsCommand(name), command) << desktop;
    EXPECT_EQ(DesktopSystem::soundInputPageCommand(name), command) << desktop;
  }
}

TEST_F(DesktopSystemTest, StartsTheProgramOfTheDesktopWithBothSteps) {
  for (const char *program : {"gnome-control-center", "systemsettings", "pavucontrol"})
    install(program);
  EXPECT_EQ(startedOn("ubuntu:GNOME"), Lines(2, "gnome-control-center sound"));
  EXPECT_EQ(startedOn("KDE"), Lines(2, "systemsettings kcm_pulseaudio"));
  EXPECT_EQ(startedOn("XFCE"), Lines(2, "pavucontrol --tab=4"));
  EXPECT_EQ(startedOn(""), Lines(2, "pavucontrol --tab=4"));
}

TEST_F(DesktopSystemTest, AMissingProgramDoesNothingAndTheNextStepIsTriedAllTheSame) {
  const EnvironmentVariable current("XDG_CURRENT_DESKTOP", "GNOME");
  mSystem.openSoundSettings();
  install("gnome-control-center");
  mSystem.showSoundInputPage();
  EXPECT_EQ(calls(1), Lines{"gnome-control-center sound"});
}

TEST_F(DesktopSystemTest, AProgramThatCannotBeRunDoesNothing) {
  const EnvironmentVariable current("XDG_CURRENT_DESKTOP", "KDE");
  std::ofstream(mFolder / "systemsettings") << "no program";
  mSystem.openSoundSettings();
  mSystem.showSoundInputPage();
  EXPECT_FALSE(std::filesystem::exists(mCalls));
}

TEST_F(DesktopSystemTest, WritesOneLinePerEntryOfTheLog) {
  testing::internal::CaptureStderr();
  mSystem.log("failed to read Temperaments.txt.");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "orvane: failed to read Temperaments.txt.\n");
}

}  // namespace
}  // namespace orvane::test
