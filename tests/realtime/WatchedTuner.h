// The tuner in its windows, on a real backend of which every call of the input procedure is
// watched. It can be quit and started again, with a new backend and the settings of its last time.
// Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/Controller.h"
#include "tests/TemporaryFolder.h"
#include "tests/realtime/GuardedHardware.h"
#include "tests/realtime/ProcedureWatch.h"

namespace orvane::test {

class WatchedTuner {
 public:
  using MakeHardware = std::function<std::unique_ptr<AudioHardware>()>;

  explicit WatchedTuner(MakeHardware makeHardware);
  ~WatchedTuner();

  WatchedTuner(const WatchedTuner &) = delete;
  WatchedTuner &operator=(const WatchedTuner &) = delete;

  // Quits first when it runs.
  void start();
  void quit();
  Controller &controller() { return *mController; }
  AudioHardware &hardware() { return *mHardware; }

  int numberOfDevices() const { return mController->mInputDevicePopUpButton->numberOfItems(); }
  // As the user does in the pop-up.
  void choose(int item);
  // False when no item's title ends so.
  bool choose(const std::string &endOfTitle);
  void hide();
  void unhide();

  // Whether sound comes in and is shown: letter, accidental and octave of that note.
  bool comesToShow(const QString &letter, const QString &octave);

  ProcedureWatch::Totals totals() const { return mWatch.totals(); }

 private:
  // A desktop that does nothing.
  class NoSystem;

  const MakeHardware mMakeHardware;
  const TemporaryFolder mFolder;
  ProcedureWatch mWatch;
  std::unique_ptr<System> mSystem;
  std::unique_ptr<GuardedHardware> mHardware;
  std::unique_ptr<UserDefaults> mDefaults;
  std::unique_ptr<Controller> mController;
};

}  // namespace orvane::test
