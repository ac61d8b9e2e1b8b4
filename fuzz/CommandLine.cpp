// The command line of orvane-cli: one word a line of the input. Everything up to where a command
// would start; the only file that is opened is the shipped one.
#include "cli/CommandLine.h"

#include <vector>

#include "cli/CliError.h"
#include "core/TuningControls.h"
#include "fuzz/FuzzInput.h"

namespace orvane::fuzz {
namespace {

// What a terminal may be shown as one line.
void checkLine(const std::string &text) {
  for (const char c : oneLine(text))
    require(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F, "an error is one line");
}

void checkTuning(CommonOptions options) {
  options.temperaments = ORVANE_RESOURCES_DIR "/Temperaments.txt";
  const Tuning tuning = resolveTuning(options);
  const TuningSettings &settings = tuning.settings;
  require(!acceptedReferencePitch(settings.mReferencePitch).beeps,
          "the reference pitch is within its limits");
  require(settings.mTonic >= 0 && settings.mTonic <= 11, "the tonic is a pitch class");
  require(settings.mTranspose >= -11 && settings.mTranspose <= 11,
          "the transposition is within its limits");
  require(settings.mTuning >= 0 &&
              settings.mTuning <= static_cast<std::int64_t>(tuning.tables.rowCount()),
          "the temperament is one of the tables");
}

}  // namespace
}  // namespace orvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  using namespace orvane;
  using namespace orvane::fuzz;
  std::vector<std::string> words{"orvane-cli"};
  std::string_view rest(reinterpret_cast<const char *>(bytes), size);
  while (!rest.empty()) {
    const std::string_view word = rest.substr(0, rest.find_first_of(std::string_view("\n\0", 2)));
    words.emplace_back(word);
    rest.remove_prefix(std::min(rest.size(), word.size() + 1));
  }
  std::vector<const char *> arguments;
  for (const std::string &word : words)
    arguments.push_back(word.c_str());

  try {
    const CommandLine line = parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
    require((line.command == Command::ShowText) == !line.text.empty(), "a text is there to show");
    require(line.command != Command::Analyze || !line.analyze.files.empty(),
            "there is a file to analyze");
    if (line.command == Command::Analyze)
      parseInteger("--callback-frames", line.analyze.callbackFrames, 1, 1 << 20);
    checkTuning(line.common);
  } catch (const CliError &error) {
    require(error.exitCode() == kExitUsage, "a wrong command line has the exit code of its own");
    checkLine(error.what());
  }
  return 0;
}
