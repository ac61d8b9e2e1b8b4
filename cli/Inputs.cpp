#include "cli/Inputs.h"

#include <filesystem>
#include <system_error>

#include "audio/PulseAudioHardware.h"
#include "audio/RecordingHardware.h"
#include "cli/CliError.h"

namespace orvane {

Inputs::Inputs(const std::vector<std::string> &files) {
  if (files.empty()) {
    try {
      auto server = std::make_unique<PulseAudioHardware>();
      mServer = server.get();
      mHardware = std::move(server);
    } catch (const std::system_error &error) {
      throw CliError(kExitFailed, "sound server", error.code().message());
    }
    return;
  }
  auto recordings = std::make_unique<RecordingHardware>(
      std::vector<std::filesystem::path>(files.begin(), files.end()));
  for (const RecordingHardware::Refusal &refusal : recordings->refusals())
    throw CliError(kExitFailed, refusal.file.empty() ? "''" : refusal.file.string(),
                   refusal.reason);
  mHardware = std::move(recordings);
}

Inputs::~Inputs() = default;

void Inputs::checkReached() const {
  if (mServer == nullptr)
    return;
  const std::string error = mServer->connectionError();
  if (!error.empty())
    throw CliError(kExitFailed, "sound server", error);
}

}  // namespace orvane
