// Standard output with every failure noticed: a pipe closed early and a full disk end the command
// with the reason. Buffered; a command flushes where its reader should see a line at once.
// Main thread.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace orvane {

class Output {
 public:
  // Makes sure that descriptors 0 to 2 are taken, so that no file opened later becomes standard
  // output by accident, and that a closed pipe is an error and not a signal. Call first in main.
  static void prepareStandardStreams();

  // Thrown by a write that waited for its reader when the time to stop came.
  struct Stopped {};

  // From now on no write waits longer than until descriptor turns readable or the deadline comes.
  void stopAt(int descriptor, std::chrono::steady_clock::time_point deadline);

  // Called before text goes out: a chance to clear what stands in its place on the terminal.
  void setBeforeFlush(std::function<void()> beforeFlush) { mBeforeFlush = std::move(beforeFlush); }

  // Throw CliError (exit 1) when standard output cannot take the text.
  void write(std::string_view text);
  void flush();

  static bool isTerminal();

 private:
  // Waits; false when it is to be asked again.
  bool isWritable() const;

  std::function<void()> mBeforeFlush;

  std::string mPending;
  int mStopDescriptor = -1;
  std::chrono::steady_clock::time_point mDeadline = std::chrono::steady_clock::time_point::max();
};

}  // namespace orvane
