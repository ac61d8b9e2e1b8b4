#include "audio/DecoderWords.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace orvane {

namespace {

thread_local DecoderWords *listener = nullptr;

// Returns the bytes taken.
ssize_t take(void *, const char *bytes, std::size_t count) {
  if (listener != nullptr) {
    listener->hear({bytes, count});
    return static_cast<ssize_t>(count);
  }
  std::size_t done = 0;
  while (done < count) {
    const ssize_t written = ::write(STDERR_FILENO, bytes + done, count - done);
    if (written < 0 && errno != EINTR)
      break;
    done += written < 0 ? 0 : static_cast<std::size_t>(written);
  }
  return static_cast<ssize_t>(done);
}

bool takeStandardErrorOver() {
  cookie_io_functions_t functions{};
  functions.write = take;
  std::FILE *stream = fopencookie(nullptr, "w", functions);
  if (stream == nullptr)
    return false;
  // As standard error is: each line at once, and without memory.
  std::setvbuf(stream, nullptr, _IONBF, 0);
  stderr = stream;
  return true;
}

}  // namespace

DecoderWords::Listening::Listening(DecoderWords &words) {
  static const bool isTaken = takeStandardErrorOver();
  static_cast<void>(isTaken);  // without memory the words are seen, which does no harm
  mBefore = std::exchange(listener, &words);
}

DecoderWords::Listening::~Listening() {
  listener = mBefore;
}

void DecoderWords::hear(std::string_view line) {
  const auto contains = [line](const char *part) {
    return line.find(part) != std::string_view::npos;
  };
  // Such as "[src/libmpg123/layer3.c:…():202] error: …", for each of the three layers.
  if (contains("error: ") && contains("layer"))
    mHaveBrokenFrames = true;
  if (contains("Trying to resync"))
    mHaveLostFrames = true;
}

}  // namespace orvane
