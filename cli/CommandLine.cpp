#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include "cli/CliError.h"

namespace orvane {
namespace {

// CLI11 ends some of its messages with a line of its own; only the first line is the reason.
std::string firstLine(const std::string &text) {
  return text.substr(0, text.find('\n'));
}

// The forms of readings that programs read; returns the last option.
CLI::Option *addForms(CLI::App &command, bool &json, bool &csv) {
  CLI::Option *const jsonOption = command.add_flag("--json", json, "One JSON object per reading");
  return command.add_flag("--csv", csv, "Comma-separated values: a header, a line per reading")
      ->excludes(jsonOption);
}

}  // namespace

CommandLine parseCommandLine(int argc, const char *const *argv) {
  CommandLine line;
  CLI::App app("Instrument tuner for the terminal.", "orvane-cli");
  app.set_version_flag("--version", std::string("orvane-cli ") + ORVANE_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  // Of an option given twice the last one counts, so that a script's own can be overridden.
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  line.common.addTo(app);

  DevicesOptions &devices = line.devices;
  CLI::App *devicesCommand = app.add_subcommand("devices", "List the input devices");
  devicesCommand->add_flag("--json", devices.json, "One JSON object a line");
  devicesCommand->add_option("--input", devices.inputs, "Sound file as device (repeatable)")
      ->type_name("FILE")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);

  ListenOptions &listen = line.listen;
  CLI::App *listenCommand = app.add_subcommand("listen", "Tune live until Ctrl-C");
  listenCommand->add_option("--device", listen.device, "Device by its title (see 'devices')")
      ->type_name("TITLE");
  listenCommand
      ->add_option("--input", listen.inputs,
                   "Sound file as device, in place of the sound server (repeatable)")
      ->type_name("FILE")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
  listenCommand->add_option("--seconds", listen.seconds, "End after so many seconds")
      ->type_name("N");
  addForms(*listenCommand, listen.json, listen.csv);

  AnalyzeOptions &analyze = line.analyze;
  CLI::App *analyzeCommand =
      app.add_subcommand("analyze", "Read recordings to their end, as fast as they can be read");
  analyzeCommand->add_option("files", analyze.files, "Sound files")
      ->type_name("FILE")
      ->required()
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  CLI::Option *csv = addForms(*analyzeCommand, analyze.json, analyze.csv);
  analyzeCommand
      ->add_flag("--summary", analyze.summary,
                 "At the end: of each note the readings, the median and the distance of the "
                 "quartiles of their cents; the drift in cents per minute")
      ->excludes(csv);
  analyzeCommand->add_option("--plot", analyze.plot, "Draw cents over time into this SVG file")
      ->type_name("FILE.svg");
  analyzeCommand
      ->add_option("--callback-frames", analyze.callbackFrames, "Frames fed at a time (512)")
      ->type_name("N");

  TemperamentsOptions &temperaments = line.temperaments;
  CLI::App *temperamentsCommand =
      app.add_subcommand("temperaments", "List the temperaments with their offsets in cents");
  CLI::Option *const temperamentsJson =
      temperamentsCommand->add_flag("--json", temperaments.json, "One JSON object a line");
  CLI::Option *const imports =
      temperamentsCommand
          ->add_option("--import", temperaments.imports,
                       "Write Scala scale files of twelve notes as one file of temperaments")
          ->type_name("FILE.scl")
          ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
          ->excludes(temperamentsJson);
  temperamentsCommand
      ->add_option("--export", temperaments.exported, "Write a temperament as a Scala scale file")
      ->type_name("NAME")
      ->excludes(temperamentsJson)
      ->excludes(imports);

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &request) {  // --help, --version
    line.command = Command::ShowText;
    line.text = dynamic_cast<const CLI::CallForVersion *>(&request) != nullptr
                    ? app.version() + '\n'
                    : app.help();
    return line;
  } catch (const CLI::RequiredError &error) {
    // What was given instead tells more than what is missing.
    const std::vector<std::string> extras = app.remaining(true);
    if (!extras.empty())
      throw CliError(kExitUsage, "usage", "'" + extras[0] + "' is no command or option here");
    throw CliError(kExitUsage, "usage", firstLine(error.what()));
  } catch (const CLI::ParseError &error) {
    throw CliError(kExitUsage, "usage", firstLine(error.what()));
  }

  if (devicesCommand->parsed())
    line.command = Command::Devices;
  else if (listenCommand->parsed())
    line.command = Command::Listen;
  else if (analyzeCommand->parsed())
    line.command = Command::Analyze;
  else
    line.command = Command::Temperaments;
  return line;
}

}  // namespace orvane
