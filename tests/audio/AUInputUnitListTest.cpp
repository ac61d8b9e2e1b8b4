#include "audio/AUInputUnit.h"

#include <gtest/gtest.h>

#include "tests/audio/FakePopUpButton.h"
#include "tests/audio/InputUnitRig.h"

namespace orvane {
namespace {

TEST(AUInputUnit, ListingAsksTheHardwareInOrder) {
  FakeDevice output = plainDevice(5, "Speaker");
  output.hasInput = false;
  FakeHardware hardware({plainDevice(4), output, sourceDevice(6)});
  const AUInputUnit unit(hardware);
  EXPECT_EQ(
      hardware.calls,
      (Lines{
          "HardwareInfo dev# size?", "HardwareGet dev# 12",        "Get 4 0 in sfmt 40",
          "Info 4 0 in name size?",  "Get 4 0 in name 4",          "Info 4 0 in makr size?",
          "Get 4 0 in makr 5",       "Info 4 0 in ssrc writable?", "Get 5 0 in sfmt 40",
          "Get 6 0 in sfmt 40",      "Info 6 0 in name size?",     "Get 6 0 in name 5",
          "Info 6 0 in makr size?",  "Get 6 0 in makr 5",          "Info 6 0 in ssrc writable?",
          "Info 6 0 in ssc# size?",  "Get 6 0 in ssc# 12",         "Get 6 0 in lscn 32",
          "Get 6 0 in lscn 32",      "Get 6 0 in lscn 32",
      }));
}

TEST(AUInputUnit, ADeviceWithThreeSettableSourcesGivesThreeEntriesAndNoneForItself) {
  FakeHardware hardware({sourceDevice(6)});
  const AUInputUnit unit(hardware);
  EXPECT_EQ(titlesOf(unit), (Lines{"Acme : Line", "Acme : Front", "Acme : Rear"}));
  std::vector<UInt32> sources;
  for (const AudioInputSource &source : unit.audioInputSources()) {
    EXPECT_EQ(source.deviceID, 6U);
    ASSERT_TRUE(source.dataSource.has_value());
    sources.push_back(*source.dataSource);
  }
  EXPECT_EQ(sources, (std::vector<UInt32>{11, 12, 13}));
}

TEST(AUInputUnit, ADeviceWhoseSourceIsNotSettableGivesOneEntryEvenWithSeveralSources) {
  FakeDevice device = sourceDevice(6);
  device.isDataSourceSettable = false;
  FakeHardware hardware({device});
  const AUInputUnit unit(hardware);
  ASSERT_EQ(titlesOf(unit), (Lines{"Acme : Card"}));
  EXPECT_FALSE(unit.audioInputSources()[0].dataSource.has_value());
  EXPECT_EQ(unit.audioInputSources()[0].deviceID, 6U);
}

TEST(AUInputUnit, ADeviceWithoutInputFormatGivesNoEntry) {
  FakeDevice output = plainDevice(5);
  output.hasInput = false;
  FakeHardware hardware({output});
  EXPECT_TRUE(AUInputUnit(hardware).audioInputSources().empty());
}

TEST(AUInputUnit, TheOutputSideIsListedOnRequest) {
  FakeHardware hardware({plainDevice(4)});
  AUInputUnit unit(hardware);
  hardware.takeCalls();
  std::vector<AudioInputSource> array;
  unit.setupAudioSource(array, false);
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(hardware.calls,
            (Lines{"HardwareInfo dev# size?", "HardwareGet dev# 4", "Get 4 0 out sfmt 40"}));
}

TEST(AUInputUnit, ListingAppendsToWhatTheArrayHolds) {
  FakeHardware hardware({plainDevice(4)});
  AUInputUnit unit(hardware);
  std::vector<AudioInputSource> array = {{"Acme : Mic", 9, std::nullopt}};
  unit.setupAudioSource(array, true);
  ASSERT_EQ(array.size(), 2U);
  EXPECT_EQ(array[0].deviceID, 9U);
  EXPECT_EQ(array[1].name, "Acme : Mic (2)");
}

TEST(AUInputUnit, ASettableDeviceWithAnEmptySourceListIsListedAsADevice) {
  FakeDevice device = sourceDevice(6);
  device.dataSources.clear();
  FakeHardware hardware({device});
  const AUInputUnit unit(hardware);
  EXPECT_EQ(titlesOf(unit), (Lines{"Acme : Card"}));
  EXPECT_EQ(hardware.calls.back(), "Info 6 0 in ssc# size?");
}

TEST(AUInputUnit, ASourceListOfOneToThreeBytesGivesNoEntry) {
  for (const std::size_t length : {1U, 2U, 3U}) {
    FakeHardware hardware({sourceDevice(6)});
    hardware.rawValues[kAudioDevicePropertyDataSources] = std::vector<std::byte>(length);
    const AUInputUnit unit(hardware);
    EXPECT_TRUE(unit.audioInputSources().empty()) << length;
    EXPECT_EQ(hardware.calls.back(), "Get 6 0 in ssc# " + std::to_string(length));
  }
}

TEST(AUInputUnit, AnIncompleteDeviceIDAtTheEndIsDropped) {
  FakeHardware hardware({plainDevice(4), plainDevice(5, "Other")});
  hardware.reportedSizes[kAudioHardwarePropertyDevices] = 7;
  const AUInputUnit unit(hardware);
  EXPECT_EQ(titlesOf(unit), (Lines{"Acme : Mic"}));
}

TEST(AUInputUnit, ADeviceListShorterThanOneIDListsNothing) {
  for (const UInt32 size : {0U, 1U, 3U}) {
    FakeHardware hardware({plainDevice(4)});
    hardware.reportedSizes[kAudioHardwarePropertyDevices] = size;
    EXPECT_TRUE(AUInputUnit(hardware).audioInputSources().empty()) << size;
    EXPECT_EQ(hardware.calls,
              (Lines{"HardwareInfo dev# size?", "HardwareGet dev# " + std::to_string(size)}));
  }
}

TEST(AUInputUnit, EqualTitlesAreKeptApartByANumber) {
  FakeHardware hardware({plainDevice(1), plainDevice(2), plainDevice(3)});
  EXPECT_EQ(titlesOf(AUInputUnit(hardware)),
            (Lines{"Acme : Mic", "Acme : Mic (2)", "Acme : Mic (3)"}));
}

TEST(AUInputUnit, ANumberThatATitleCarriesByItselfIsSkipped) {
  FakeHardware hardware({plainDevice(1), plainDevice(2, "Mic (2)"), plainDevice(3)});
  EXPECT_EQ(titlesOf(AUInputUnit(hardware)),
            (Lines{"Acme : Mic", "Acme : Mic (2)", "Acme : Mic (3)"}));
}

TEST(AUInputUnit, EqualSourceNamesOfOneDeviceAreKeptApart) {
  FakeDevice device = sourceDevice(6);
  device.dataSources = {{1, "Line"}, {2, "Line"}};
  FakeHardware hardware({device});
  EXPECT_EQ(titlesOf(AUInputUnit(hardware)), (Lines{"Acme : Line", "Acme : Line (2)"}));
}

TEST(AUInputUnit, NamesEndAtTheirFirstNul) {
  FakeHardware hardware({plainDevice(1, std::string("Mic\0rest", 8))});
  EXPECT_EQ(titlesOf(AUInputUnit(hardware)), (Lines{"Acme : Mic"}));
}

TEST(AUInputUnit, ANameWithoutNulEndsWithItsBuffer) {
  FakeHardware hardware({plainDevice(1)});
  hardware.rawValues[kAudioDevicePropertyDeviceName] = {std::byte{'A'}, std::byte{'b'}};
  EXPECT_EQ(titlesOf(AUInputUnit(hardware)), (Lines{"Acme : Ab"}));
}

TEST(AUInputUnit, BytesThatAreNotUtf8BecomeReplacementCharacters) {
  FakeHardware hardware(
      {plainDevice(1, "M\xFFic"), plainDevice(2, "caf\xC3"), plainDevice(3, "Gr\xC3\xBC\xC3\x9F")});
  EXPECT_EQ(
      titlesOf(AUInputUnit(hardware)),
      (Lines{"Acme : M\xEF\xBF\xBDic", "Acme : caf\xEF\xBF\xBD", "Acme : Gr\xC3\xBC\xC3\x9F"}));
}

TEST(AUInputUnit, ASourceWithoutANameKeepsItsEntry) {
  FakeHardware hardware({sourceDevice(6)});
  hardware.translatesToNothing = true;
  EXPECT_EQ(titlesOf(AUInputUnit(hardware)), (Lines{"Acme : ", "Acme :  (2)", "Acme :  (3)"}));
}

TEST(AUInputUnit, TheMenuIsFilledInListOrder) {
  Rig rig({plainDevice(1), sourceDevice(6)});
  FakePopUpButton button;
  rig.unit.setupPopUpButton(&button);
  EXPECT_EQ(button.actions,
            (Lines{"remove all", "insert Acme : Mic at 0", "insert Acme : Line at 1",
                   "insert Acme : Front at 2", "insert Acme : Rear at 3"}));
  EXPECT_TRUE(rig.hardware.calls.empty());
}

TEST(AUInputUnit, TheMenuAlreadyHeldIsNotFilledAgain) {
  Rig rig({plainDevice(1)});
  FakePopUpButton button;
  FakePopUpButton other;
  rig.unit.setupPopUpButton(&button);
  button.actions.clear();
  rig.unit.setupPopUpButton(&button);
  EXPECT_TRUE(button.actions.empty());
  rig.unit.setupPopUpButton(&other);
  EXPECT_EQ(other.items, (Lines{"Acme : Mic"}));
  rig.unit.setupPopUpButton(&button);
  EXPECT_EQ(button.actions, (Lines{"remove all", "insert Acme : Mic at 0"}));
}

}  // namespace
}  // namespace orvane
