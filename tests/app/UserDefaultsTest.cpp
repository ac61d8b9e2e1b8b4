#include "app/UserDefaults.h"

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <QSettings>
#include <QString>

#include "tests/app/UserDefaultsRig.h"

namespace orvane::test {
namespace {

using namespace std::string_literals;

TEST_F(UserDefaultsTest, AnEmptyStoreHasNothing) {
  const UserDefaults defaults = open();
  EXPECT_EQ(defaults.objectForKey("DisclosedKey"), std::nullopt);
  EXPECT_EQ(defaults.stringForKey("org.velmora.InputDeviceKey"), std::nullopt);
  EXPECT_EQ(defaults.floatForKey("ReferencePitchKey"), 0.0F);
  EXPECT_EQ(defaults.integerForKey("TuningKey"), 0);
  EXPECT_FALSE(defaults.boolForKey("org.velmora.TuneSpeechKey"));
  EXPECT_TRUE(mLog.empty());
  EXPECT_FALSE(std::filesystem::exists(mFile));
}

TEST_F(UserDefaultsTest, RegisteredValuesStandInForAbsentOnesAndAreNotWritten) {
  {
    UserDefaults defaults = open();
    defaults.registerDefaults({{"ReferencePitchKey", "440"}, {"org.velmora.TunerMeterKey", "YES"}});
    EXPECT_EQ(defaults.floatForKey("ReferencePitchKey"), 440.0F);
    EXPECT_TRUE(defaults.boolForKey("org.velmora.TunerMeterKey"));
    EXPECT_EQ(defaults.objectForKey("ReferencePitchKey"), "440");
    EXPECT_EQ(defaults.objectForKey("DisclosedKey"), std::nullopt);
    defaults.setBool(false, "org.velmora.TunerMeterKey");
    EXPECT_FALSE(defaults.boolForKey("org.velmora.TunerMeterKey"));
    defaults.synchronize();
  }
  EXPECT_EQ(read(), "[General]\norg.velmora.TunerMeterKey=false\n");
}

TEST_F(UserDefaultsTest, TheLaterRegistrationOfAKeyCounts) {
  UserDefaults defaults = open();
  defaults.registerDefaults({{"a", "1"}, {"b", "2"}});
  defaults.registerDefaults({{"b", "3"}});
  EXPECT_EQ(defaults.integerForKey("a"), 1);
  EXPECT_EQ(defaults.integerForKey("b"), 3);
}

TEST_F(UserDefaultsTest, WritesAReadableFileWithTheKeysAsTheyAre) {
  UserDefaults defaults = open();
  defaults.setFloat(442.3F, "ReferencePitchKey");
  defaults.setBool(true, "DisclosedKey");
  defaults.setInteger(3, "TuningKey");
  defaults.setInteger(10, "TonicKey");
  defaults.setInteger(-2, "org.velmora.TransposeKey");
  defaults.setBool(false, "org.velmora.TunerMeterKey");
  defaults.setObject("Acme : Mic", "org.velmora.InputDeviceKey");
  defaults.setBool(true, "org.velmora.TuneSpeechKey");
  defaults.setBool(false, "org.velmora.HertzSpeechKey");
  defaults.synchronize();
  EXPECT_EQ(read(),
            "[General]\n"
            "DisclosedKey=true\n"
            "ReferencePitchKey=442.3\n"
            "TonicKey=10\n"
            "TuningKey=3\n"
            "org.velmora.HertzSpeechKey=false\n"
            "org.velmora.InputDeviceKey=Acme : Mic\n"
            "org.velmora.TransposeKey=-2\n"
            "org.velmora.TuneSpeechKey=true\n"
            "org.velmora.TunerMeterKey=false\n");
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, TheNextStartReadsWhatWasWritten) {
  {
    UserDefaults defaults = open();
    defaults.setFloat(499.9F, "ReferencePitchKey");
    defaults.setInteger(std::numeric_limits<std::int64_t>::min(), "TuningKey");
    defaults.setBool(true, "DisclosedKey");
    defaults.setBool(false, "org.velmora.TunerMeterKey");
    defaults.setObject("", "org.velmora.InputDeviceKey");
    defaults.synchronize();
  }
  const UserDefaults defaults = open();
  EXPECT_EQ(defaults.floatForKey("ReferencePitchKey"), 499.9F);
  EXPECT_EQ(defaults.integerForKey("TuningKey"), std::numeric_limits<std::int64_t>::min());
  EXPECT_TRUE(defaults.boolForKey("DisclosedKey"));
  EXPECT_FALSE(defaults.boolForKey("org.velmora.TunerMeterKey"));
  EXPECT_TRUE(defaults.objectForKey("org.velmora.TunerMeterKey").has_value());
  EXPECT_EQ(defaults.stringForKey("org.velmora.InputDeviceKey"), "");
}

TEST_F(UserDefaultsTest, WhatWasNotSynchronizedIsOnlySet) {
  UserDefaults defaults = open();
  defaults.setInteger(7, "TonicKey");
  EXPECT_EQ(defaults.integerForKey("TonicKey"), 7);
  EXPECT_FALSE(std::filesystem::exists(mFile));
}

TEST_F(UserDefaultsTest, WithNothingSetNothingIsWritten) {
  open().synchronize();
  EXPECT_FALSE(std::filesystem::exists(mFile));
  write("TonicKey=3\n; as it was\n");
  open().synchronize();
  EXPECT_EQ(read(), "TonicKey=3\n; as it was\n");
}

TEST_F(UserDefaultsTest, WhatAnotherProgramHasWrittenMeanwhileIsKeptAndRead) {
  UserDefaults defaults = open();
  UserDefaults other = open();
  other.setInteger(7, "TonicKey");
  other.setInteger(1, "TuningKey");
  other.synchronize();
  defaults.setInteger(2, "TuningKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=7\nTuningKey=2\n");
  EXPECT_EQ(defaults.integerForKey("TonicKey"), 7);
}

TEST_F(UserDefaultsTest, NothingRemovesItsKey) {
  UserDefaults defaults = open();
  defaults.setObject("Acme : Mic", "org.velmora.InputDeviceKey");
  defaults.setInteger(1, "TonicKey");
  defaults.synchronize();
  defaults.setObject(std::nullopt, "org.velmora.InputDeviceKey");
  EXPECT_EQ(defaults.stringForKey("org.velmora.InputDeviceKey"), std::nullopt);
  defaults.synchronize();
  EXPECT_EQ(defaults.stringForKey("org.velmora.InputDeviceKey"), std::nullopt);
  EXPECT_EQ(read(), "[General]\nTonicKey=1\n");
}

TEST_F(UserDefaultsTest, ReadsNumbersAndFlagsAsAnotherHandHasWrittenThem) {
  write(
      "ReferencePitchKey = 441,5 \n"
      "TuningKey=\" 2 or so\"\n"
      "DisclosedKey=YES\r\n"
      "org.velmora.TunerMeterKey=no\n"
      "org.velmora.TuneSpeechKey=1\n"
      "org.velmora.HertzSpeechKey=\n"
      "org.velmora.TransposeKey=99999999999999999999\n");
  const UserDefaults defaults = open();
  EXPECT_EQ(defaults.floatForKey("ReferencePitchKey"), 441.0F);
  EXPECT_EQ(defaults.integerForKey("TuningKey"), 2);
  EXPECT_TRUE(defaults.boolForKey("DisclosedKey"));
  EXPECT_FALSE(defaults.boolForKey("org.velmora.TunerMeterKey"));
  EXPECT_TRUE(defaults.boolForKey("org.velmora.TuneSpeechKey"));
  EXPECT_FALSE(defaults.boolForKey("org.velmora.HertzSpeechKey"));
  EXPECT_EQ(defaults.objectForKey("org.velmora.HertzSpeechKey"), "");
  EXPECT_EQ(defaults.integerForKey("org.velmora.TransposeKey"),
            std::numeric_limits<std::int64_t>::max());
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, AnyTextComesBackHereAndInAnotherProgram) {
  std::string allAscii;
  for (int c = 0; c < 128; ++c)
    allAscii += static_cast<char>(c);
  for (const std::string &text : {""s,
                                  "Acme : Mic, \"front\""s,
                                  "a,b"s,
                                  ","s,
                                  "a;b # c"s,
                                  "\""s,
                                  "back\\slash\\n"s,
                                  "\\"s,
                                  " spaced "s,
                                  "line\nbreak\ttab\r"s,
                                  "[General]"s,
                                  "x=y"s,
                                  "%20"s,
                                  "@x"s,
                                  "@Invalid()"s,
                                  "@Variant(1)"s,
                                  "Ünïcödé ♭ 🎤"s,
                                  "nul\0behind"s,
                                  "\x01\x31"s,
                                  "\x7F"s,
                                  "true"s,
                                  allAscii,
                                  std::string(100000, 'x')}) {
    UserDefaults defaults = open();
    defaults.setObject(text, "org.velmora.InputDeviceKey");
    defaults.synchronize();
    EXPECT_EQ(open().stringForKey("org.velmora.InputDeviceKey"), text);
    const QSettings other(QString::fromStdString(mFile.string()), QSettings::IniFormat);
    EXPECT_EQ(other.value("org.velmora.InputDeviceKey").toString().toStdString(), text);
  }
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, ATextWithCommasThatAnotherHandHasWrittenIsOneText) {
  write("org.velmora.InputDeviceKey=Acme, Inc : Mic,2\n");
  EXPECT_EQ(open().stringForKey("org.velmora.InputDeviceKey"), "Acme, Inc : Mic, 2");
}

TEST_F(UserDefaultsTest, WhatOthersKeepInTheFileStays) {
  write(
      "[General]\nTonicKey=3\nplace=@Rect(1 2 3 4)\nlist=a, b\nnothing=@Invalid()\n"
      "\n[Another section]\nTonicKey=4\n%2C=5\n");
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(),
            "[General]\nTonicKey=5\nlist=a, b\nnothing=@Invalid()\n"
            "place=@Rect(1 2 3 4)\n\n[Another%20section]\n%2C=5\nTonicKey=4\n");
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, ASecondSectionOfTheNameGeneralStaysInWhateverCaseItIsWritten) {
  write("[General]\nTonicKey=3\n\n[%general]\na=b\n\n[%GENERAL]\nc=d\n");
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n\n[%General]\na=b\nc=d\n");
  EXPECT_TRUE(mLog.empty());
}

TEST_F(UserDefaultsTest, WhatIsNoTextDoesNotStay) {
  write("[General]\nTonicKey=3\nhalf=\"\\xd800\"\n%UD800=1\n%01=1\n=1\n[a//b]\nc=1\n[]\n=1\n");
  UserDefaults defaults = open();
  defaults.setInteger(5, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=5\n");
}

TEST_F(UserDefaultsTest, TwoFilesOfOneSizeWrittenAtOnceAreToldApart) {
  UserDefaults writer = open();
  for (int tonic = 0; tonic < 10; ++tonic) {
    writer.setInteger(tonic, "TonicKey");
    writer.synchronize();
    EXPECT_EQ(open().integerForKey("TonicKey"), tonic);
  }
}

TEST_F(UserDefaultsTest, TheFileKeepsItsPermissions) {
  write("[General]\nTonicKey=3\n");
  std::filesystem::permissions(mFile, std::filesystem::perms(0640));
  UserDefaults defaults = open();
  defaults.setInteger(2, "TonicKey");
  defaults.synchronize();
  EXPECT_EQ(read(), "[General]\nTonicKey=2\n");
  EXPECT_EQ(std::filesystem::status(mFile).permissions(), std::filesystem::perms(0640));
}

TEST_F(UserDefaultsTest, TheFileLiesInTheUsersConfigurationFolder) {
  const char *previousHome = std::getenv("HOME");
  const std::string home = previousHome != nullptr ? previousHome : "";
  ::setenv("HOME", "/home/somebody", 1);
  ::unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(UserDefaults::standardFile(), "/home/somebody/.config/velmora/Orvane.ini");
  ::setenv("XDG_CONFIG_HOME", "/somewhere/else", 1);
  EXPECT_EQ(UserDefaults::standardFile(), "/somewhere/else/velmora/Orvane.ini");
  ::unsetenv("XDG_CONFIG_HOME");
  ::setenv("HOME", home.c_str(), 1);
}

}  // namespace
}  // namespace orvane::test
