#include "audio/PulseVolumeWriter.h"

#include <algorithm>
#include <utility>

namespace orvane {

PulseVolumeWriter::PulseVolumeWriter(std::function<void()> onSettled)
    : mOnSettled(std::move(onSettled)) {}

void PulseVolumeWriter::set(const DeviceState &device, UInt32 channel, UInt32 volume) {
  Wanted &wanted = mWanted[device.name];
  if (wanted.volumes.size() != device.volumes.size())
    wanted.volumes = device.volumes;
  if (channel < 1 || channel > wanted.volumes.size())
    return;
  wanted.volumes[channel - 1] = volume;
  wanted.isSent = false;
  mListingIsNewer = false;
}

void PulseVolumeWriter::send(pa_context *context) {
  for (auto &[source, wanted] : mWanted) {
    if (std::exchange(wanted.isSent, true))
      continue;
    pa_cvolume volumes;
    pa_cvolume_init(&volumes);
    volumes.channels =
        static_cast<std::uint8_t>(std::min<std::size_t>(wanted.volumes.size(), PA_CHANNELS_MAX));
    std::copy_n(wanted.volumes.begin(), volumes.channels, volumes.values);
    pa_operation *operation =
        pa_context_set_source_volume_by_name(context, source.c_str(), &volumes, answered, this);
    if (operation == nullptr)
      continue;
    ++mUnanswered;
    pa_operation_unref(operation);
  }
}

void PulseVolumeWriter::listingBegins() {
  mListingIsNewer = mUnanswered == 0;
}

void PulseVolumeWriter::listingEnded() {
  if (std::exchange(mListingIsNewer, false))
    mWanted.clear();
}

void PulseVolumeWriter::connectionEnded() {
  mWanted.clear();
  mUnanswered = 0;
  mListingIsNewer = false;
}

void PulseVolumeWriter::answered(pa_context * /*context*/, int /*success*/, void *self) {
  auto *writer = static_cast<PulseVolumeWriter *>(self);
  if (--writer->mUnanswered == 0)
    writer->mOnSettled();
}

}  // namespace orvane
