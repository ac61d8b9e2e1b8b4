// orvane-cli with one of its calls failing, or all from that one on: it tells, or does what it
// would have done.
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <set>

#include "tests/failures/FailingRun.h"

namespace orvane::test {
namespace {

const std::vector<Failure> kFailures = {
    {Calls::Memory, Lasting::Once},        {Calls::Memory, Lasting::ForGood},
    {Calls::Files, Lasting::Once},         {Calls::Files, Lasting::ForGood},
    {Calls::Files, Lasting::Once, ENOMEM}, {Calls::Files, Lasting::ForGood, ENOMEM},
};

class CommandFailures : public testing::Test {
 protected:
  // Without the failure a command prints the same each time, but when it listens.
  void expectClean(const std::vector<std::string> &arguments, bool isListening = false) {
    const CommandResult undisturbed = runCommand(arguments);
    const FailingRuns runs(arguments);
    for (const Failure &failure : kFailures) {
      const std::uint64_t shortCount = failure.calls == Calls::Memory ? 16 : 100;
      const std::uint64_t tried = runs.forEach(
          failure, shortCount, [] {},
          [&](const FailedRun &run) { expectClean(run, isListening ? nullptr : &undisturbed); });
      EXPECT_GT(tried, 0U) << failure.name();
    }
  }

  static std::string contentOf(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TestFolder mFolder;
  const std::string mSound = mFolder.writeSound("a4.wav", sine(440.0, 8000, 0.5), 8000);

 private:
  static void expectClean(const FailedRun &run, const CommandResult *undisturbed) {
    // What the sound server's library says of itself comes before what is said of it.
    const std::string why =
        whyUnclean(run, {"orvane-cli: ", "Not enough memory", "ftruncate() failed: "});
    EXPECT_EQ(why, "") << run.told();
    if (run.result.exitCode != 0 || undisturbed == nullptr)
      return;
    if (run.result.errors.empty())
      EXPECT_EQ(run.result.output, undisturbed->output) << run.told();
    else
      EXPECT_TRUE(run.result.errors.starts_with("orvane-cli: failed to read Temperaments.txt. "))
          << run.told();
  }
};

TEST_F(CommandFailures, AnalyzeTellsOfThemOrReadsTheWholeRecording) {
  expectClean({"analyze", mSound});
}

TEST_F(CommandFailures, SeveralRecordingsAreReadToTheirEndsOrItIsTold) {
  expectClean({"analyze", mSound, mSound, mSound, "--json"});
}

TEST_F(CommandFailures, ADrawingIsThereWholeOrAsItWas) {
  const std::string plot = mFolder.write("plot.svg", "before");
  const std::vector<std::string> arguments{"analyze", mSound, "--summary", "--plot", plot};
  for (const Failure &failure : kFailures) {
    FailingRuns(arguments).forEach(
        failure, 30, [&] { mFolder.write("plot.svg", "before"); },
        [&](const FailedRun &run) {
          const std::string drawn = contentOf(plot);
          if (run.result.exitCode == 0)
            EXPECT_TRUE(drawn.ends_with("</svg>\n")) << run.told();
          else
            EXPECT_TRUE(drawn == "before" || drawn.ends_with("</svg>\n")) << run.told();
        });
  }
}

TEST_F(CommandFailures, TheTemperamentsAreListedOrItIsTold) {
  expectClean({"temperaments"});
}

TEST_F(CommandFailures, TheDevicesAreListedOrItIsTold) {
  expectClean({"devices", "--input", mSound});
}

TEST_F(CommandFailures, AMissingSoundServerIsToldAllTheSame) {
  expectClean({"devices"});
}

TEST_F(CommandFailures, ListeningGoesOnOrItIsTold) {
  expectClean({"listen", "--json", "--seconds", "0.1", "--input", mSound}, true);
}

TEST_F(CommandFailures, AReadThatFailsIsToldAsWhatItIs) {
  std::set<std::string> reasons;
  FailingRuns({"temperaments"})
      .forEach(
          {Calls::Files, Lasting::Once}, 100, [] {},
          [&](const FailedRun &run) {
            const std::size_t colon = run.result.errors.rfind(": ");
            if (colon != std::string::npos)
              reasons.insert(run.result.errors.substr(colon + 2));
          });
  EXPECT_EQ(reasons, (std::set<std::string>{"Input/output error\n", "Too many open files\n",
                                            "No space left on device\n"}));
}

}  // namespace
}  // namespace orvane::test
