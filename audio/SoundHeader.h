// What the first bytes of a sound file claim about its length, its rate and its channels, read
// without believing them. The decoder quietly cuts a length that the file does not bear out, so a
// recording that broke off can only be told here.
#pragma once

#include <cstdint>
#include <optional>

namespace orvane {

struct SoundHeader {
  // Bytes of sound the header promises, and bytes that follow it. Nothing when the header leaves
  // the length open, as the writers of live streams do, or when the format is not one known here.
  struct Length {
    std::uint64_t promised = 0;
    std::uint64_t present = 0;
  };
  std::optional<Length> length;
  std::optional<std::uint32_t> channels;
  std::optional<std::uint32_t> sampleRate;  // hertz
  // Where a length field stands that says 0 although sound follows: a recorder that never came to
  // fill it in.
  std::optional<std::uint64_t> unfilledLengthOffset;
  bool isSampleDump = false;  // MIDI
};

// Main thread. descriptor: a regular file of fileBytes bytes; its position is left alone. Knows
// RIFF and RIFX WAVE, AU and the beginning of a MIDI sample dump; anything else gives an empty
// record.
SoundHeader readSoundHeader(int descriptor, std::uint64_t fileBytes);

// Whether the last Ogg page of such a file is whole and marked as the end of its stream. Any
// thread; false for what is no Ogg file.
bool hasEndOfOggStream(int descriptor, std::uint64_t fileBytes);

}  // namespace orvane
