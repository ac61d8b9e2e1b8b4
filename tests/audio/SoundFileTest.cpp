#include "audio/SoundFile.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cmath>
#include <limits>

#include "tests/audio/SoundFileMaker.h"

namespace orvane {
namespace {

constexpr int kFloatWave = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
constexpr int kWave16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

std::string refusal(const std::filesystem::path &path) {
  std::string reason;
  const auto file = SoundFile::open(path, reason);
  EXPECT_FALSE(file.has_value()) << path;
  EXPECT_EQ(reason.find('\n'), std::string::npos) << reason;
  return reason;
}

// Reads to the end in uneven steps.
std::vector<float> readAll(SoundFile &file) {
  std::vector<float> all;
  std::vector<float> step(static_cast<std::size_t>(700 * file.channels()));
  while (const std::int64_t frames = file.readFrames(step.data(), 700))
    all.insert(all.end(), step.begin(), step.begin() + frames * file.channels());
  return all;
}

struct Whole {
  std::int64_t frames = -1;
  std::string trouble;
};

Whole readWhole(const std::filesystem::path &path) {
  std::string reason;
  auto file = SoundFile::open(path, reason);
  EXPECT_TRUE(file.has_value()) << path << ": " << reason;
  if (!file)
    return {};
  const auto samples = static_cast<std::int64_t>(readAll(*file).size());
  return {samples / file->channels(), file->trouble()};
}

TEST(SoundFile, GivesTheSamplesOfEveryChannelInterleaved) {
  const TemporaryFolder folder;
  const auto path = writeTestSound(folder / "a.wav", kFloatWave, 44100, 3, 2000);
  std::string reason = "left over";
  auto file = SoundFile::open(path, reason);
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ(reason, "");
  EXPECT_EQ(file->channels(), 3);
  EXPECT_EQ(file->rate(), 44100);
  EXPECT_EQ(file->frames(), 2000);
  const std::vector<float> samples = readAll(*file);
  ASSERT_EQ(samples.size(), 6000U);
  EXPECT_EQ(samples[0], 0.001F);
  EXPECT_EQ(samples[1], -0.001F);
  EXPECT_EQ(samples[2], 0.001F);
  EXPECT_EQ(samples[3], 0.002F);
  EXPECT_EQ(samples[3 * 999 + 1], -1.0F);
  EXPECT_EQ(samples[3 * 1000], 0.001F);
  EXPECT_EQ(file->trouble(), "");
}

TEST(SoundFile, IntegerSamplesAreScaledToFullScaleOne) {
  const TemporaryFolder folder;
  WaveFile wave(6);
  wave.data = std::string("\x00\x80\x00\x40\xFF\x7F", 6);  // -32768, 16384, 32767
  std::string reason;
  auto file = SoundFile::open(writeBytes(folder / "a.wav", wave.bytes()), reason);
  ASSERT_TRUE(file.has_value()) << reason;
  EXPECT_EQ(readAll(*file), (std::vector<float>{-1.0F, 0.5F, 0.999969482421875F}));
}

TEST(SoundFile, SamplesThatAreNoNumbersOrBeyondFullScaleArePassedOn) {
  const TemporaryFolder folder;
  const float infinity = std::numeric_limits<float>::infinity();
  const auto path = writeSound(folder / "a.wav", kFloatWave, 48000, 1,
                               {std::nanf(""), infinity, -infinity, 7.5F});
  std::string reason;
  auto file = SoundFile::open(path, reason);
  ASSERT_TRUE(file.has_value()) << reason;
  const std::vector<float> samples = readAll(*file);
  ASSERT_EQ(samples.size(), 4U);
  EXPECT_TRUE(std::isnan(samples[0]));
  EXPECT_EQ(samples[1], infinity);
  EXPECT_EQ(samples[2], -infinity);
  EXPECT_EQ(samples[3], 7.5F);
  EXPECT_EQ(file->trouble(), "");
}

TEST(SoundFile, WhatIsNoSoundFileIsRefusedWithItsReason) {
  const TemporaryFolder folder;
  EXPECT_EQ(refusal(folder / "missing.wav"), "no such file");
  EXPECT_EQ(refusal(""), "no such file");
  EXPECT_EQ(refusal(writeBytes(folder / "file", "x") / "below.wav"), "no such file");
  EXPECT_EQ(refusal(folder / ""), "is a folder");
  EXPECT_EQ(refusal(writeBytes(folder / "empty.wav", "")), "is empty");
  EXPECT_EQ(refusal(writeBytes(folder / "text.wav", "Dear diary, no sound today.\n")),
            "is not a sound file");
  EXPECT_EQ(refusal(writeBytes(folder / "byte.wav", "R")), "is not a sound file");
  EXPECT_EQ(refusal(writeBytes(folder / "zeros.wav", std::string(5000, '\0'))),
            "is not a sound file");
  const std::string header = WaveFile(2000).bytes().substr(0, 30);
  EXPECT_TRUE(refusal(writeBytes(folder / "cut.wav", header)).starts_with("cannot be read"));
}

TEST(SoundFile, MidiSampleDumpsAreRefusedBeforeTheirDecoderWritesToStandardOutput) {
  const TemporaryFolder folder;
  const auto dump =
      writeTestSound(folder / "a.sds", SF_FORMAT_SDS | SF_FORMAT_PCM_16, 8000, 1, 400);
  std::string bytes = readBytes(dump);
  bytes[21] = 'x';  // the first byte of the first block of samples
  // A tag of 300 bytes: twice 128, and 44.
  const std::string tag = std::string("ID3\3\0\0\0\0\2\x2C", 10) + std::string(300, '\0');
  testing::internal::CaptureStdout();
  const std::string whole = refusal(dump);
  const std::string broken = refusal(writeBytes(folder / "broken.sds", bytes));
  const std::string tagged = refusal(writeBytes(folder / "tagged.sds", tag + bytes));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(whole, "is a MIDI sample dump, which is not read");
  EXPECT_EQ(broken, whole);
  EXPECT_EQ(tagged, whole);
}

TEST(SoundFile, PipesDevicesAndSocketsAreRefusedWithoutWaiting) {
  const TemporaryFolder folder;
  const auto pipe = folder / "pipe.wav";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(refusal(pipe), "is not a regular file");
  EXPECT_EQ(refusal("/dev/zero"), "is not a regular file");

  const auto path = folder / "socket.wav";
  const int socketDescriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_GE(socketDescriptor, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.string().size(), sizeof(address.sun_path));
  path.string().copy(address.sun_path, sizeof(address.sun_path) - 1);
  ASSERT_EQ(bind(socketDescriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)),
            0);
  EXPECT_EQ(refusal(path), "is not a regular file");
  close(socketDescriptor);
}

TEST(SoundFile, AFileWithoutReadPermissionIsRefused) {
  if (geteuid() == 0)
    GTEST_SKIP() << "the superuser may read everything";
  const TemporaryFolder folder;
  const auto path = writeTestSound(folder / "a.wav", kWave16, 48000, 1, 10);
  std::filesystem::permissions(path, std::filesystem::perms::none);
  EXPECT_EQ(refusal(path), "permission denied");
}

TEST(SoundFile, HeadersWithImpossibleChannelsOrRatesAreRefused) {
  struct Row {
    std::uint32_t channels;
    std::uint32_t rate;
    std::string reason;
  };
  const std::vector<Row> rows = {
      {0, 48000, "has 0 channels; 1 to 64 can be read"},
      {65, 48000, "has 65 channels; 1 to 64 can be read"},
      {65535, 48000, "has 65535 channels; 1 to 64 can be read"},
      {1, 0, "has a sample rate of 0 Hz; 19 to 1536000 Hz can be read"},
      {1, 18, "has a sample rate of 18 Hz; 19 to 1536000 Hz can be read"},
      {1, 1536001, "has a sample rate of 1536001 Hz; 19 to 1536000 Hz can be read"},
      {1, 0xFFFFFFFF, "has a sample rate of 4294967295 Hz; 19 to 1536000 Hz can be read"},
  };
  const TemporaryFolder folder;
  for (const Row &row : rows) {
    WaveFile wave(130000);
    wave.channels = row.channels;
    wave.rate = row.rate;
    EXPECT_EQ(refusal(writeBytes(folder / "a.wav", wave.bytes())), row.reason);
  }
}

TEST(SoundFile, OtherFormatsAreHeldToTheSameLimits) {
  const TemporaryFolder folder;
  const int caf = SF_FORMAT_CAF | SF_FORMAT_PCM_16;
  EXPECT_EQ(refusal(writeTestSound(folder / "a.caf", caf, 48000, 65, 10)),
            "has 65 channels; 1 to 64 can be read");
  EXPECT_EQ(refusal(writeTestSound(folder / "b.caf", caf, 18, 1, 10)),
            "has a sample rate of 18 Hz; 19 to 1536000 Hz can be read");
}

TEST(SoundFile, TheLimitsThemselvesCanBeRead) {
  const TemporaryFolder folder;
  for (const std::uint32_t rate : {19U, 1536000U}) {
    WaveFile wave(128 * 10);
    wave.channels = 64;
    wave.rate = rate;
    EXPECT_EQ(readWhole(writeBytes(folder / "a.wav", wave.bytes())).frames, 10) << rate;
  }
}

struct LengthRow {
  const char *what;
  std::uint32_t riffLength;
  std::uint32_t dataLength;
  std::uint32_t bytesPresent;
  std::int64_t frames;
  const char *trouble;
};

TEST(SoundFile, LengthsThatLieAreToldAndLengthsLeftOpenAreNot) {
  const std::vector<LengthRow> rows = {
      {"true", 2036, 2000, 2000, 1000, ""},
      {"cut off", 4036, 4000, 2000, 1000, "ends early: 2000 of 4000 bytes of sound are there"},
      {"cut off in a frame", 4036, 4000, 1999, 999,
       "ends early: 1999 of 4000 bytes of sound are there"},
      {"cut off behind the header", 4036, 4000, 0, 0,
       "ends early: 0 of 4000 bytes of sound are there"},
      {"a stream, all ones", 0xFFFFFFFF, 0xFFFFFFFF, 2000, 1000, ""},
      {"a stream, all ones less a header", 0xFFFFFFFF, 0xFFFFFFDB, 2000, 1000, ""},
      {"a stream, largest signed", 0x7FFFFFFF, 0x7FFFFFFF, 2000, 1000, ""},
      {"a stream, in whole pages", 0x7FFFF024, 0x7FFFF000, 2000, 1000, ""},
      {"a stream, one beyond signed", 0x80000024, 0x80000000, 2000, 1000, ""},
      {"a stream, zero", 0, 0, 2000, 1000, ""},
      {"a recorder that broke off", 36, 0, 2000, 1000, ""},
      {"empty", 36, 0, 0, 0, "holds no sound"},
      {"longer than it says", 2036, 2000, 3000, 1000, ""},
  };
  const TemporaryFolder folder;
  for (const LengthRow &row : rows) {
    WaveFile wave(row.bytesPresent);
    wave.riffLength = row.riffLength;
    wave.dataLength = row.dataLength;
    const Whole whole = readWhole(writeBytes(folder / "a.wav", wave.bytes()));
    EXPECT_EQ(whole.frames, row.frames) << row.what;
    EXPECT_EQ(whole.trouble, row.trouble) << row.what;
  }
}

TEST(SoundFile, AnEmptyRecordingWithANoteBehindItStaysEmpty) {
  const TemporaryFolder folder;
  WaveFile wave(0);
  wave.behind = "LIST" + littleEndian(4, 4) + "INFO";
  wave.riffLength = 36 + 12;
  const Whole whole = readWhole(writeBytes(folder / "a.wav", wave.bytes()));
  EXPECT_EQ(whole.frames, 0);
  EXPECT_EQ(whole.trouble, "holds no sound");
}

TEST(SoundFile, CutOffFilesOfOtherFormatsAreTold) {
  struct Row {
    const char *name;
    int format;
  };
  const std::vector<Row> rows = {
      {"a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16}, {"a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
      {"a.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16}, {"a.au", SF_FORMAT_AU | SF_FORMAT_PCM_16},
      {"a.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_16},   {"a.rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16},
      {"a.rifx", kWave16 | SF_ENDIAN_BIG},           {"f.wav", kFloatWave},
  };
  const TemporaryFolder folder;
  for (const Row &row : rows) {
    const auto path = writeTestSound(folder / row.name, row.format, 48000, 1, 48000);
    const Whole whole = readWhole(path);
    EXPECT_EQ(whole.frames, 48000) << row.name;
    EXPECT_EQ(whole.trouble, "") << row.name;
    std::filesystem::resize_file(path, std::filesystem::file_size(path) * 2 / 3);
    const Whole cut = readWhole(path);
    EXPECT_LT(cut.frames, 48000) << row.name;
    EXPECT_TRUE(cut.trouble.starts_with("ends early")) << row.name << ": " << cut.trouble;
  }
}

TEST(SoundFile, AShortOggFileIsWholeUntilItsLastPageIsCutOrMissing) {
  const TemporaryFolder folder;
  for (const std::int64_t frames : {4000, 88200}) {
    const auto path =
        writeTestSound(folder / "a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 1, frames);
    const Whole whole = readWhole(path);
    EXPECT_EQ(whole.frames, frames);
    EXPECT_EQ(whole.trouble, "");
    const std::string bytes = readBytes(path);
    const std::size_t lastPage = bytes.rfind("OggS");
    for (const std::size_t length : {bytes.size() - 1, lastPage + 30, lastPage + 10, lastPage}) {
      writeBytes(path, bytes.substr(0, length));
      EXPECT_EQ(readWhole(path).trouble, "ends early: it is shorter than its header says")
          << frames << ": " << length;
    }
  }
}

TEST(SoundFile, DamageInTheMiddleIsToldAndEndsTheReading) {
  const TemporaryFolder folder;
  for (const int format : {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, SF_FORMAT_OGG | SF_FORMAT_VORBIS}) {
    const auto path = writeTestSound(folder / "a", format, 48000, 1, 96000);
    std::string bytes = readBytes(path);
    for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 300; ++i)
      bytes[i] = static_cast<char>(bytes[i] ^ 0x5A);
    writeBytes(path, bytes);
    const Whole damaged = readWhole(path);
    EXPECT_NE(damaged.trouble, "");
    EXPECT_LT(damaged.frames, 96000);
  }
}

TEST(SoundFile, RewindingStartsAtTheFirstFrameAgain) {
  const TemporaryFolder folder;
  for (const int format : {kFloatWave, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                           SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_AU | SF_FORMAT_G721_32}) {
    const auto path = writeTestSound(folder / "a", format, 48000, 1, 5000);
    std::string reason;
    auto file = SoundFile::open(path, reason);
    ASSERT_TRUE(file.has_value()) << reason;
    const std::vector<float> first = readAll(*file);
    EXPECT_GE(first.size(), 5000U);
    ASSERT_TRUE(file->rewind()) << format;
    EXPECT_EQ(readAll(*file), first) << format;
    EXPECT_EQ(file->trouble(), "") << format;
  }
}

TEST(SoundFile, RewindingADamagedFileGivesItsFirstPartAgain) {
  const TemporaryFolder folder;
  const auto path =
      writeTestSound(folder / "a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 1, 48000);
  std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
  std::string reason;
  auto file = SoundFile::open(path, reason);
  ASSERT_TRUE(file.has_value()) << reason;
  const std::vector<float> first = readAll(*file);
  ASSERT_FALSE(first.empty());
  ASSERT_TRUE(file->rewind());
  EXPECT_EQ(readAll(*file), first);
}

TEST(SoundFile, ReadingNothingIsHarmless) {
  const TemporaryFolder folder;
  std::string reason;
  auto file = SoundFile::open(writeTestSound(folder / "a.wav", kFloatWave, 48000, 1, 10), reason);
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ(file->readFrames(nullptr, 0), 0);
  EXPECT_EQ(file->readFrames(nullptr, -5), 0);
  EXPECT_EQ(readAll(*file).size(), 10U);
}

TEST(SoundFile, AFileThatShrinksWhileItIsReadEndsEarly) {
  const TemporaryFolder folder;
  const auto path = writeTestSound(folder / "a.wav", kFloatWave, 48000, 1, 100000);
  std::string reason;
  auto file = SoundFile::open(path, reason);
  ASSERT_TRUE(file.has_value());
  std::filesystem::resize_file(path, 40000);
  EXPECT_LT(readAll(*file).size(), 100000U);
  EXPECT_TRUE(file->trouble().starts_with("ends early")) << file->trouble();
}

TEST(SoundFile, EveryShorteningOfASmallFileIsSurvived) {
  const TemporaryFolder folder;
  const auto path = folder / "a";
  // Not Ogg: its decoder leaks the headers that it cannot read to their end.
  for (const int format :
       {kWave16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, SF_FORMAT_AIFF | SF_FORMAT_PCM_16}) {
    writeTestSound(path, format, 8000, 1, 200);
    const std::string bytes = readBytes(path);
    for (std::size_t length = 0; length < bytes.size(); length += length < 100 ? 1 : 37) {
      std::string reason;
      auto file = SoundFile::open(writeBytes(path, bytes.substr(0, length)), reason);
      EXPECT_NE(file.has_value(), !reason.empty()) << length;
      if (file) {
        EXPECT_LE(readAll(*file).size(), 200U) << length;
      }
    }
  }
}

}  // namespace
}  // namespace orvane
