#include "tests/desktop/Desktop.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <signal.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <functional>
#include <stdexcept>

#include "tests/servers/HardwareProbe.h"

namespace orvane::test {

namespace {

// What a person expects of a window's frame, and nothing else: no key and no modifier is taken from
// the programs but Alt+F4, so that edges can be dragged with every modifier.
constexpr const char *kWindowManagerConfiguration =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
<focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
<placement><policy>Smart</policy><center>no</center></placement>
<theme><name>Clearlooks</name><titleLayout>LIMC</titleLayout><keepBorder>yes</keepBorder></theme>
<desktops><number>1</number><popupTime>0</popupTime></desktops>
<resize><drawContents>yes</drawContents><popupShow>Never</popupShow></resize>
<keyboard><keybind key="A-F4"><action name="Close"/></keybind></keyboard>
<mouse><dragThreshold>1</dragThreshold><doubleClickTime>400</doubleClickTime>
<context name="Titlebar Top Bottom Left Right TLCorner TRCorner BLCorner BRCorner Client">
<mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
</context>
<context name="Titlebar">
<mousebind button="Left" action="Drag"><action name="Move"/></mousebind>
<mousebind button="Left" action="DoubleClick"><action name="ToggleMaximize"/></mousebind>
</context>
<context name="Top Bottom Left Right TLCorner TRCorner BLCorner BRCorner">
<mousebind button="Left" action="Drag"><action name="Resize"/></mousebind>
<mousebind button="S-Left" action="Drag"><action name="Resize"/></mousebind>
<mousebind button="A-Left" action="Drag"><action name="Resize"/></mousebind>
</context>
<context name="Close">
<mousebind button="Left" action="Click"><action name="Close"/></mousebind>
</context>
<context name="Iconify">
<mousebind button="Left" action="Click"><action name="Iconify"/></mousebind>
</context>
<context name="Maximize">
<mousebind button="Left" action="Click"><action name="ToggleMaximize"/></mousebind>
</context>
</mouse></openbox_config>
)";

constexpr std::chrono::seconds kLongestStart{10};

void await(const char *what, const std::function<bool()> &isThere) {
  if (!eventually(isThere, kLongestStart))
    throw std::runtime_error(std::string("the desktop has no ") + what);
}

// The server's choice of a display, a line of its own among its messages; empty until it is there.
std::string displayNumber(const std::string &log) {
  std::ifstream file(log);
  for (std::string line; std::getline(file, line) && !file.eof();) {
    if (!line.empty() &&
        std::ranges::all_of(line, [](unsigned char c) { return std::isdigit(c) != 0; }))
      return line;
  }
  return {};
}

bool hasWindowManager(::Display *display) {
  Atom type = 0;
  int format = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char *data = nullptr;
  XGetWindowProperty(display, DefaultRootWindow(display),
                     XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False), 0, 1, False,
                     XA_WINDOW, &type, &format, &count, &rest, &data);
  if (data != nullptr)
    XFree(data);
  return count == 1;
}

}  // namespace

Desktop::Desktop(int width, int height) {
  for (const char *name : {"home", "home/.config", "runtime", "files"}) {
    std::filesystem::create_directory(mFolder / name);
    std::filesystem::permissions(mFolder / name, std::filesystem::perms::owner_all);
  }
  startServer(width, height);
  startSessionBus();
  startWindowManager();
}

Desktop::~Desktop() {
  mConnection.reset();
  mWindowManager.kill();
  mSessionBus.kill();
  // Asked to end, it takes the lock of its display with it.
  mServer.signal(SIGTERM);
  mServer.wait(std::chrono::seconds(3));
}

void Desktop::startServer(int width, int height) {
  const std::string size = std::to_string(width) + "x" + std::to_string(height) + "x24";
  mServer = ChildProcess({"Xvfb", "-displayfd", "1", "-screen", "0", size, "-dpi", "96",
                          "-nolisten", "tcp", "-noreset"},
                         path("server.log"));
  await("X server", [this] { return !displayNumber(path("server.log")).empty(); });
  mDisplay = ":" + displayNumber(path("server.log"));
  mConnection = std::make_unique<XConnection>(mDisplay);
}

void Desktop::startSessionBus() {
  // The accessibility bus comes with the first program that asks this bus for it.
  mSessionBus = ChildProcess(command({"dbus-daemon", "--session", "--address=" + sessionBus(),
                                      "--nofork", "--nopidfile", "--nosyslog"}),
                             path("bus.log"));
  await("session bus", [this] { return std::filesystem::is_socket(mFolder / "bus"); });
}

void Desktop::startWindowManager() {
  std::ofstream(path("rc.xml")) << kWindowManagerConfiguration;
  mWindowManager = ChildProcess(
      command({"openbox", "--sm-disable", "--config-file", path("rc.xml")}), path("openbox.log"));
  await("window manager", [this] { return hasWindowManager(mConnection->get()); });
}

std::vector<std::string> Desktop::command(const std::vector<std::string> &words) const {
  std::vector<std::string> whole{"env"};
  for (const char *name :
       {"WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER", "XDG_CURRENT_DESKTOP",
        "XDG_SESSION_DESKTOP", "DESKTOP_SESSION", "AT_SPI_BUS_ADDRESS", "QT_STYLE_OVERRIDE",
        "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI",
        "QT_IM_MODULE", "XMODIFIERS", "LC_ALL", "LANGUAGE"})
    whole.insert(whole.end(), {"-u", name});
  whole.insert(
      whole.end(),
      {"DISPLAY=" + mDisplay, "HOME=" + path("home"),
       "XDG_CONFIG_HOME=" + configurationFolder().string(),
       "XDG_DATA_HOME=" + path("home/.local/share"), "XDG_CACHE_HOME=" + path("home/.cache"),
       "XDG_RUNTIME_DIR=" + path("runtime"), "DBUS_SESSION_BUS_ADDRESS=" + sessionBus(),
       "GSETTINGS_BACKEND=memory", "QT_QPA_PLATFORM=xcb", "QT_ACCESSIBILITY=1",
       "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1", "LANG=C.UTF-8"});
  whole.insert(whole.end(), words.begin(), words.end());
  return whole;
}

}  // namespace orvane::test
