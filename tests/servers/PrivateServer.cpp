#include "tests/servers/PrivateServer.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <thread>

namespace orvane::test {

namespace {

constexpr std::chrono::seconds kLongestStart{10};

bool waitUntil(const std::function<bool()> &isTrue) {
  const auto end = std::chrono::steady_clock::now() + kLongestStart;
  while (!isTrue()) {
    if (std::chrono::steady_clock::now() > end)
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

// A socket is there before anybody listens at it.
bool isAnswered(const std::string &socketPath) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
  const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool isConnected =
      connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
  close(connection);
  return isConnected;
}

constexpr const char *kBusConfiguration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><keep_umask/><listen>unix:path=BUS</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/>
<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>
)";

}  // namespace

PrivateServer::PrivateServer(Kind kind) : mKind(kind) {
  const auto set = [](const char *name, const std::string &value) {
    setenv(name, value.c_str(), 1);
  };
  for (const char *folder : {"home", "xdg", "pulse", "state"}) {
    std::filesystem::create_directory(mFolder / folder);
    std::filesystem::permissions(mFolder / folder, std::filesystem::perms::owner_all);
  }
  unsetenv("DISPLAY");
  set("HOME", path("home"));
  set("XDG_RUNTIME_DIR", path("xdg"));
  set("XDG_CONFIG_HOME", path("home/.config"));
  set("XDG_STATE_HOME", path("home/.local/state"));
  // The PipeWire server would put its socket there.
  if (kind == Kind::kPulseAudio)
    set("PULSE_RUNTIME_PATH", path("pulse"));
  else
    unsetenv("PULSE_RUNTIME_PATH");
  set("PULSE_STATE_PATH", path("state"));
  set("PULSE_COOKIE", path("cookie"));
  set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path("xdg/bus"));
  set("PULSE_SERVER", "unix:" + path(kind == Kind::kPulseAudio ? "native" : "xdg/pulse/native"));
}

PrivateServer::~PrivateServer() {
  kill();
}

bool PrivateServer::start() {
  if (mKind == Kind::kPulseAudio)
    startPulseAudio();
  else
    startPipeWire();
  return waitUntil([] { return control({"info"}).find("Server Name") != std::string::npos; });
}

void PrivateServer::startPulseAudio() {
  mProcesses.emplace_back(
      std::vector<std::string>{
          "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
          "--disable-shm=yes", "--high-priority=no", "--realtime=no", "-L",
          "module-native-protocol-unix auth-anonymous=1 socket=" + path("native"), "-L",
          "module-null-sink sink_name=feed rate=48000 channels=2 format=float32le"},
      path("log"));
}

void PrivateServer::startPipeWire() {
  std::string configuration = kBusConfiguration;
  configuration.replace(configuration.find("BUS"), 3, path("xdg/bus"));
  std::ofstream(path("dbus.conf")) << configuration;
  // Bluetooth asks for a log-in service, and where there is none nothing would be linked at all.
  const std::filesystem::path bluetooth = mFolder / "home/.config/wireplumber/bluetooth.lua.d";
  std::filesystem::create_directories(bluetooth);
  std::ofstream(bluetooth / "51-off.lua") << "bluez_monitor.enabled = false\n";

  const auto startAndAwait = [this](const std::vector<std::string> &command,
                                    const std::string &socket) {
    mProcesses.emplace_back(command, path("log"));
    waitUntil([&] { return isAnswered(path(socket)); });
  };
  startAndAwait({"dbus-daemon", "--config-file=" + path("dbus.conf"), "--nofork", "--nopidfile"},
                "xdg/bus");
  startAndAwait({"pipewire"}, "xdg/pipewire-0");
  mProcesses.emplace_back(std::vector<std::string>{"wireplumber"}, path("log"));
  startAndAwait({"pipewire-pulse"}, "xdg/pulse/native");
}

void PrivateServer::kill() {
  // The last started first, and none may tell its clients.
  for (auto process = mProcesses.rbegin(); process != mProcesses.rend(); ++process)
    process->kill();
  mProcesses.clear();
  // What a crash leaves behind.
  std::error_code ignored;
  for (const char *socket : {"native", "xdg/bus", "xdg/pipewire-0", "xdg/pipewire-0.lock",
                             "xdg/pulse/native", "xdg/pulse/pid"})
    std::filesystem::remove(mFolder / socket, ignored);
  for (const std::string &pipe : mPipes)
    std::filesystem::remove(pipe, ignored);
}

void PrivateServer::killDaemon() {
  mProcesses.at(kDaemon).kill();
  mProcesses.at(kSessionManager).kill();
  for (const char *left : {"xdg/pipewire-0", "xdg/pipewire-0.lock"})
    std::filesystem::remove(mFolder / left);
}

bool PrivateServer::startDaemon() {
  mProcesses.at(kDaemon) = ChildProcess({"pipewire"}, path("log"));
  if (!waitUntil([this] { return isAnswered(path("xdg/pipewire-0")); }))
    return false;
  mProcesses.at(kSessionManager) = ChildProcess({"wireplumber"}, path("log"));
  return waitUntil([] { return control({"info"}).find("Server Name") != std::string::npos; });
}

void PrivateServer::freeze() const {
  for (const ChildProcess &process : mProcesses)
    process.signal(SIGSTOP);
}

void PrivateServer::thaw() const {
  for (const ChildProcess &process : mProcesses)
    process.signal(SIGCONT);
}

std::string PrivateServer::loadSource(const std::string &name, int rate, int channels,
                                      const std::string &properties) {
  mPipes.insert(pipeOf(name));
  std::vector<std::string> arguments{"load-module",
                                     "module-pipe-source",
                                     "source_name=" + name,
                                     "file=" + pipeOf(name),
                                     "format=float32le",
                                     "rate=" + std::to_string(rate),
                                     "channels=" + std::to_string(channels)};
  if (!properties.empty())
    arguments.push_back("source_properties='" + properties + "'");
  std::string module = control(std::move(arguments));
  while (!module.empty() && std::isspace(static_cast<unsigned char>(module.back())) != 0)
    module.pop_back();
  const bool isNumber =
      std::ranges::all_of(module, [](unsigned char c) { return std::isdigit(c) != 0; });
  return isNumber ? module : std::string();
}

void PrivateServer::unload(const std::string &module) const {
  control({"unload-module", module});
}

std::string PrivateServer::pipeOf(const std::string &name) const {
  return path(name + ".pipe");
}

bool PrivateServer::sounds(const std::string &source, float louderThan) const {
  const std::string file = path("recorded");
  std::filesystem::remove(file);
  const ChildProcess recorder({"parec", "--device=" + source, "--raw", "--format=float32le",
                               "--rate=48000", "--channels=1", file});
  return waitUntil([&] {
    std::ifstream stream(file, std::ios::binary);
    int loud = 0;
    for (float sample = 0.0F; stream.read(reinterpret_cast<char *>(&sample), sizeof sample);)
      loud += std::abs(sample) > louderThan ? 1 : 0;
    return loud >= 4800;
  });
}

std::string PrivateServer::control(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "pactl");
  return outputOf(arguments);
}

std::string PrivateServer::nameOf(Kind kind) {
  return kind == Kind::kPulseAudio ? "PulseAudio" : "PipeWire";
}

}  // namespace orvane::test
