#include "audio/PulseInputs.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace orvane {

PulseInputs::PulseInputs(PulseMirror &mirror, std::function<void()> onFailure)
    : mMirror(mirror), mOnFailure(std::move(onFailure)) {}

OSStatus PulseInputs::add(AudioDeviceID device, AudioDeviceIOProc proc, void *clientData) {
  const auto state = mMirror.device(device);
  if (!state)
    return kAudioHardwareBadDeviceError;
  const std::lock_guard lock(mMutex);
  if (!state->isInput || proc == nullptr || find(device, proc) != nullptr)
    return kAudioHardwareIllegalOperationError;
  mInputs.push_back({device, proc, clientData, false, nullptr});
  return noErr;
}

OSStatus PulseInputs::start(AudioDeviceID device, AudioDeviceIOProc proc) {
  const std::lock_guard lock(mMutex);
  Input *input = find(device, proc);
  if (input == nullptr)
    return kAudioHardwareIllegalOperationError;
  if (input->isStarted)
    return noErr;
  // Also where it cannot be opened now: it is tried again with the next change at the server.
  input->isStarted = true;
  return open(*input) ? noErr : kAudioHardwareUnspecifiedError;
}

OSStatus PulseInputs::stop(AudioDeviceID device, AudioDeviceIOProc proc) {
  const std::lock_guard lock(mMutex);
  Input *input = find(device, proc);
  if (input == nullptr)
    return kAudioHardwareIllegalOperationError;
  input->isStarted = false;
  input->stream.reset();
  return noErr;
}

OSStatus PulseInputs::remove(AudioDeviceID device, AudioDeviceIOProc proc) {
  const std::lock_guard lock(mMutex);
  const auto removed = std::erase_if(
      mInputs, [&](const Input &input) { return input.device == device && input.proc == proc; });
  return removed > 0 ? noErr : kAudioHardwareIllegalOperationError;
}

void PulseInputs::removeAll() {
  const std::lock_guard lock(mMutex);
  mInputs.clear();
}

void PulseInputs::closeOutdatedAndCommit(std::vector<PulseMirror::Device> devices) {
  const std::lock_guard lock(mMutex);
  for (Input &input : mInputs) {
    if (input.stream != nullptr &&
        PulseMirror::streamSpec(devices, input.device) != input.stream->spec())
      input.stream.reset();
  }
  mMirror.commit(std::move(devices));
}

void PulseInputs::openMissing() {
  const std::lock_guard lock(mMutex);
  for (Input &input : mInputs) {
    if (input.isStarted && input.stream == nullptr)
      open(input);
  }
}

PulseInputs::Input *PulseInputs::find(AudioDeviceID device, AudioDeviceIOProc proc) {
  const auto found = std::ranges::find_if(
      mInputs, [&](const Input &input) { return input.device == device && input.proc == proc; });
  return found == mInputs.end() ? nullptr : &*found;
}

// False when the system refuses a thread. A device that is away needs none.
bool PulseInputs::open(Input &input) {
  const auto spec = mMirror.streamSpec(input.device);
  if (!spec)
    return true;
  try {
    input.stream =
        std::make_unique<PulseInputStream>(*spec, input.proc, input.clientData, mOnFailure);
    return true;
  } catch (const std::system_error &) {
    return false;
  }
}

}  // namespace orvane
