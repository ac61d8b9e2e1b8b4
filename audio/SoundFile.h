// A sound file of any format that libsndfile reads, but for MIDI sample dumps, as 32-bit floats of
// full scale 1, in constant memory. Only regular files are opened, so that no pipe or device can
// keep the caller waiting.
//
// One thread at a time. Not real-time safe (reads the disk).
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

class SoundFile {
 public:
  static constexpr int kMostChannels = 64;
  // Below this rate a block of one and a half periods of 27.5 Hz holds no sample.
  static constexpr int kLowestRate = 19;
  static constexpr int kHighestRate = 1536000;

  // Nothing when the file cannot be read as sound; reason then says why, fit to follow the file's
  // name and a colon. Does not throw (but for lack of memory).
  static std::optional<SoundFile> open(const std::filesystem::path &path, std::string &reason);

  SoundFile(SoundFile &&) noexcept;
  SoundFile &operator=(SoundFile &&) noexcept;
  ~SoundFile();

  int channels() const;  // 1 to kMostChannels
  int rate() const;      // hertz, kLowestRate to kHighestRate
  // Frames the header promises, cut to what the file can hold; 0 when it does not say.
  std::int64_t frames() const;

  // Reads up to count frames of channels() samples each, interleaved. Samples are passed on as they
  // are, not-a-number, infinite and beyond full scale included. Returns the frames read; fewer than
  // asked for, 0 included, only at the end. count below 1 reads nothing.
  std::int64_t readFrames(float *samples, std::int64_t count);

  // Back to the first frame. False when the file cannot be read again.
  bool rewind();

  // After readFrames came to the end: what was wrong with the file, or nothing. A file that ends
  // early, cannot be decoded further or could not be read from the disk is told; one whose header
  // leaves the length open is not. After a rewind() some formats no longer tell.
  std::string trouble() const;

 private:
  struct Reader;
  explicit SoundFile(std::unique_ptr<Reader> reader);
  std::unique_ptr<Reader> mReader;
};

}  // namespace orvane
