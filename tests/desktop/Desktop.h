// A desktop of the test's own that nobody sees: an X server, a window manager, a session bus, the
// accessibility bus behind it, and a home folder. It needs no log-in session and no system
// services, and all of it ends with the object.
//
// Main thread only. This process's environment is left alone: programs of the desktop are run with
// command().
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/desktop/XConnection.h"
#include "tests/servers/ChildProcess.h"

namespace orvane::test {

class Desktop {
 public:
  // Sizes in pixels. Throws std::runtime_error when a part of it does not start within 10 s.
  explicit Desktop(int width = 1280, int height = 1024);
  ~Desktop();

  Desktop(const Desktop &) = delete;
  Desktop &operator=(const Desktop &) = delete;

  // The command as it has to be run to be a program of this desktop. What it is not told here it
  // inherits from this process, such as the sound server.
  std::vector<std::string> command(const std::vector<std::string> &words) const;

  const std::string &display() const { return mDisplay; }
  // The address as in DBUS_SESSION_BUS_ADDRESS.
  std::string sessionBus() const { return "unix:path=" + path("bus"); }
  // Where programs keep the user's settings, and a folder for the test's own files.
  std::filesystem::path configurationFolder() const { return mFolder / "home/.config"; }
  std::filesystem::path folder() const { return mFolder / "files"; }
  XConnection &connection() const { return *mConnection; }

 private:
  std::string path(const std::string &name) const { return (mFolder / name).string(); }
  void startServer(int width, int height);
  void startSessionBus();
  void startWindowManager();

  TemporaryFolder mFolder;
  std::string mDisplay;
  ChildProcess mServer;
  ChildProcess mSessionBus;
  ChildProcess mWindowManager;
  std::unique_ptr<XConnection> mConnection;
};

}  // namespace orvane::test
