#include "audio/SoundFile.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "audio/DecoderWords.h"
#include "audio/SoundHeader.h"

namespace orvane {

namespace {

// libsndfile's mark for a length it could not find out, and what is too long to be one.
constexpr std::int64_t kUnknownFrames = std::int64_t{1} << 62;

std::string systemReason(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return "no such file";
    case EACCES:
      return "permission denied";
    default:
      return std::generic_category().message(error);
  }
}

// Empty when both can be read.
std::string limitsReason(std::int64_t channels, std::int64_t rate) {
  if (channels < 1 || channels > SoundFile::kMostChannels)
    return "has " + std::to_string(channels) + " channels; 1 to " +
           std::to_string(SoundFile::kMostChannels) + " can be read";
  if (rate < SoundFile::kLowestRate || rate > SoundFile::kHighestRate)
    return "has a sample rate of " + std::to_string(rate) + " Hz; " +
           std::to_string(SoundFile::kLowestRate) + " to " +
           std::to_string(SoundFile::kHighestRate) + " Hz can be read";
  return {};
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// libsndfile's words for its last failure to open, on one line and without an end.
std::string decoderReason() {
  if (sf_error(nullptr) == SF_ERR_UNRECOGNISED_FORMAT)
    return "is not a sound file";
  std::string text = sf_strerror(nullptr);
  if (contains(text, "nternal error"))  // says nothing to anyone
    return "cannot be read as sound (its header makes no sense)";
  std::replace(text.begin(), text.end(), '\n', ' ');
  while (!text.empty() && (text.back() == '.' || text.back() == ' '))
    text.pop_back();
  return "cannot be read as sound (" + text + ")";
}

// What the decoder noted about a sound that is shorter than its header says, or broken, in the
// formats whose headers are not read here.
std::string troubleInLog(std::string_view log, int descriptor, std::uint64_t fileBytes) {
  if (contains(log, "Skipped ") || contains(log, "reports a hole"))
    return "is damaged: parts of it cannot be decoded";
  // It says so of whole files as well, where a page or two hold all of the sound.
  const bool lacksEnd =
      contains(log, "without an End-Of-Stream flag") && !hasEndOfOggStream(descriptor, fileBytes);
  const bool isShort = lacksEnd || contains(log, "does not match value from 'ds64' chunk") ||
                       contains(log, "Seems to be a truncated file");
  if (isShort)
    return "ends early: it is shorter than its header says";
  while (!log.empty()) {
    const std::string_view line = log.substr(0, log.find('\n'));
    log.remove_prefix(std::min(log.size(), line.size() + 1));
    const bool isLength = line.starts_with(" SSND : ") || line.starts_with("riff : ");
    if (isLength && contains(line, "(should be "))
      return "ends early: it is shorter than its header says";
  }
  return {};
}

}  // namespace

struct SoundFile::Reader {
  Reader() = default;
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;
  ~Reader() {
    closeDecoder();
    if (descriptor >= 0)
      close(descriptor);
  }

  bool openDecoder();
  bool windDecoderBack();
  bool isMpeg() const { return (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG; }
  bool isUndecodable();
  sf_count_t decode(float *samples, sf_count_t frames);
  void closeDecoder() {
    const DecoderWords::Listening listening(words);
    if (decoder != nullptr)
      sf_close(decoder);
    decoder = nullptr;
  }

  // The decoder's view of the file.
  static sf_count_t length(void *user) { return static_cast<Reader *>(user)->fileBytes; }
  static sf_count_t tell(void *user) { return static_cast<Reader *>(user)->position; }
  static sf_count_t seek(sf_count_t offset, int whence, void *user);
  static sf_count_t read(void *bytes, sf_count_t count, void *user);
  static sf_count_t write(const void *, sf_count_t, void *) { return 0; }

  int descriptor = -1;
  sf_count_t fileBytes = 0;
  sf_count_t position = 0;
  int readError = 0;  // errno of a read that the disk refused
  SoundHeader header;
  SNDFILE *decoder = nullptr;
  SF_INFO info = {};
  DecoderWords words;
  std::int64_t framesRead = 0;
  bool isWoundBack = false;
  std::vector<short> shorts;  // of the last decoding of 16 bits
};

sf_count_t SoundFile::Reader::seek(sf_count_t offset, int whence, void *user) {
  auto *reader = static_cast<Reader *>(user);
  sf_count_t base = 0;
  if (whence == SEEK_CUR)
    base = reader->position;
  else if (whence == SEEK_END)
    base = reader->fileBytes;
  // Lengths in headers reach here unchecked, so the sum may not be one.
  sf_count_t target = 0;
  if (__builtin_add_overflow(base, offset, &target) || target < 0)
    return -1;
  reader->position = target;
  return target;
}

sf_count_t SoundFile::Reader::read(void *bytes, sf_count_t count, void *user) {
  auto *reader = static_cast<Reader *>(user);
  auto *target = static_cast<unsigned char *>(bytes);
  sf_count_t done = 0;
  while (done < count) {
    const ssize_t got = pread(reader->descriptor, target + done,
                              static_cast<std::size_t>(count - done), reader->position + done);
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0)
      reader->readError = errno;
    if (got <= 0)
      break;
    done += got;
  }
  // A length that was never filled in reads as the one that means "up to the end".
  if (reader->header.unfilledLengthOffset) {
    const auto first = static_cast<sf_count_t>(*reader->header.unfilledLengthOffset);
    for (sf_count_t at = std::max(first, reader->position);
         at < std::min(first + 4, reader->position + done); ++at)
      target[at - reader->position] = 0xFF;
  }
  reader->position += done;
  return done;
}

bool SoundFile::Reader::openDecoder() {
  SF_VIRTUAL_IO io = {length, seek, read, write, tell};
  position = 0;
  framesRead = 0;
  isWoundBack = false;
  info = {};
  words = {};
  const DecoderWords::Listening listening(words);
  decoder = sf_open_virtual(&io, SFM_READ, &info, this);
  return decoder != nullptr;
}

bool SoundFile::Reader::windDecoderBack() {
  const DecoderWords::Listening listening(words);
  if (decoder == nullptr || sf_error(decoder) != SF_ERR_NO_ERROR ||
      sf_seek(decoder, 0, SEEK_SET) != 0)
    return false;
  words = {};
  framesRead = 0;
  isWoundBack = true;
  return true;
}

// Whether a freshly opened MPEG stream holds frames, but not two in a row that can be decoded. The
// decoder gives silence or noise for broken ones, and live input would never come to their end.
bool SoundFile::Reader::isUndecodable() {
  constexpr sf_count_t kShortestFrame = 384;
  constexpr sf_count_t kLongestFrame = 1152;
  // The first frames may lean on some before them, and are then left out without a word.
  constexpr sf_count_t kLeaningFrames = 10;
  std::vector<float> samples(static_cast<std::size_t>(kShortestFrame * info.channels));
  sf_count_t enough = (kLeaningFrames + 2) * kLongestFrame;
  for (sf_count_t sinceBroken = 0; sinceBroken < enough;) {
    words = {};
    const sf_count_t frames = decode(samples.data(), kShortestFrame);
    sinceBroken += std::max<sf_count_t>(frames, 0);
    if (words.haveBrokenFrames()) {
      sinceBroken = 0;
      enough = 2 * kLongestFrame;
    }
    if (frames <= 0)
      return enough == 2 * kLongestFrame;
  }
  return false;
}

// Sixteen bits are most recordings, and the decoder is slow in making them floats.
sf_count_t SoundFile::Reader::decode(float *samples, sf_count_t frames) {
  if ((info.format & SF_FORMAT_SUBMASK) != SF_FORMAT_PCM_16) {
    const DecoderWords::Listening listening(words);
    return sf_readf_float(decoder, samples, frames);
  }
  shorts.resize(static_cast<std::size_t>(frames * info.channels));
  const sf_count_t got = sf_readf_short(decoder, shorts.data(), frames);
  constexpr float kFullScale = 32768.0F;
  std::transform(shorts.begin(), shorts.begin() + got * info.channels, samples,
                 [](short sample) { return static_cast<float>(sample) / kFullScale; });
  return got;
}

SoundFile::SoundFile(std::unique_ptr<Reader> reader) : mReader(std::move(reader)) {}
SoundFile::SoundFile(SoundFile &&) noexcept = default;
SoundFile &SoundFile::operator=(SoundFile &&) noexcept = default;
SoundFile::~SoundFile() = default;

std::optional<SoundFile> SoundFile::open(const std::filesystem::path &path, std::string &reason) {
  auto reader = std::make_unique<Reader>();
  // Without O_NONBLOCK the opening of a pipe would wait for its other end.
  reader->descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  struct stat status = {};
  if (reader->descriptor < 0 || fstat(reader->descriptor, &status) != 0) {
    // Sockets and devices without a driver cannot even be opened.
    reason = errno == ENXIO || errno == ENODEV ? "is not a regular file" : systemReason(errno);
    return std::nullopt;
  }
  if (S_ISDIR(status.st_mode)) {
    reason = "is a folder";
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    reason = "is not a regular file";
    return std::nullopt;
  }
  if (status.st_size <= 0) {
    reason = "is empty";
    return std::nullopt;
  }

  reader->fileBytes = status.st_size;
  reader->header =
      readSoundHeader(reader->descriptor, static_cast<std::uint64_t>(reader->fileBytes));
  if (reader->header.channels && reader->header.sampleRate) {
    reason = limitsReason(*reader->header.channels, *reader->header.sampleRate);
    if (!reason.empty())
      return std::nullopt;
  }
  // What the decoder thinks of a broken one, it writes to standard output.
  if (reader->header.isSampleDump) {
    reason = "is a MIDI sample dump, which is not read";
    return std::nullopt;
  }
  if (!reader->openDecoder()) {
    reason = reader->readError != 0 ? systemReason(reader->readError) : decoderReason();
    return std::nullopt;
  }
  reason = limitsReason(reader->info.channels, reader->info.samplerate);
  if (!reason.empty())
    return std::nullopt;
  if (reader->isMpeg()) {
    if (reader->isUndecodable()) {
      reason = "is damaged: none of it can be decoded";
      return std::nullopt;
    }
    reader->closeDecoder();
    if (!reader->openDecoder()) {
      reason = "cannot be read again";
      return std::nullopt;
    }
  }
  return SoundFile(std::move(reader));
}

int SoundFile::channels() const {
  return mReader->info.channels;
}

int SoundFile::rate() const {
  return mReader->info.samplerate;
}

std::int64_t SoundFile::frames() const {
  const std::int64_t frames = mReader->info.frames;
  return frames < 0 || frames >= kUnknownFrames ? 0 : frames;
}

std::int64_t SoundFile::readFrames(float *samples, std::int64_t count) {
  if (mReader->decoder == nullptr || count < 1)
    return 0;
  // A decoder may stop for breath between two of its own blocks.
  std::int64_t done = 0;
  while (done < count) {
    const sf_count_t got = mReader->decode(samples + done * channels(), count - done);
    if (got <= 0)
      break;
    done += got;
  }
  mReader->framesRead += done;
  return done;
}

bool SoundFile::rewind() {
  Reader &reader = *mReader;
  reader.readError = 0;
  if (reader.windDecoderBack())
    return true;
  // Some formats cannot be wound back and broken ones may refuse; both can be opened anew.
  const SF_INFO before = reader.info;
  reader.closeDecoder();
  return reader.openDecoder() && reader.info.channels == before.channels &&
         reader.info.samplerate == before.samplerate;
}

std::string SoundFile::trouble() const {
  const Reader &reader = *mReader;
  if (reader.readError != 0)
    return "cannot be read to its end: " + systemReason(reader.readError);
  if (reader.decoder == nullptr)
    return "cannot be read again";
  if (sf_error(reader.decoder) != SF_ERR_NO_ERROR)
    return "is damaged: it cannot be decoded after frame " + std::to_string(reader.framesRead);

  const auto &length = reader.header.length;
  if (length && length->present < length->promised)
    return "ends early: " + std::to_string(length->present) + " of " +
           std::to_string(length->promised) + " bytes of sound are there";
  if (reader.words.haveBrokenFrames())
    return "is damaged: parts of it cannot be decoded";
  // Behind the sound there may be notes that it does not know.
  if (reader.words.haveLostFrames() && reader.fileBytes - reader.position > reader.fileBytes / 10)
    return "is damaged: it cannot be decoded after frame " + std::to_string(reader.framesRead);
  // The length of an MPEG stream is an estimate.
  if (!reader.isMpeg() && reader.framesRead < frames())
    return "ends early: " + std::to_string(reader.framesRead) + " of " + std::to_string(frames()) +
           " frames can be read";

  // Winding back leaves notes of its own.
  if (!reader.isWoundBack) {
    std::array<char, 16384> log{};
    sf_command(reader.decoder, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    log.back() = '\0';
    std::string noted =
        troubleInLog(log.data(), reader.descriptor, static_cast<std::uint64_t>(reader.fileBytes));
    if (!noted.empty())
      return noted;
  }
  return reader.framesRead == 0 ? "holds no sound" : "";
}

}  // namespace orvane
