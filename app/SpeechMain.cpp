// orvane-speech: says what the tuner writes to it. It lives as long as its connection to the speech
// service and the tuner both do.
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <set>
#include <thread>

#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>
#include <QTextToSpeech>

#include "app/SpeechHelperEvents.h"

namespace orvane {
namespace {

// The toolkit's synthesiser does not tell which connection it has opened.
std::set<int> connectedSockets() {
  std::set<int> sockets;
  for (const QString &name : QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System)) {
    const int descriptor = name.toInt();
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    if (getpeername(descriptor, reinterpret_cast<sockaddr *>(&peer), &size) == 0)
      sockets.insert(descriptor);
  }
  return sockets;
}

// Nor does it tell that the connection is lost, and asking it for anything then is not safe.
void endWithConnection(int socket) {
  std::thread([socket] {
    pollfd connection{socket, POLLRDHUP, 0};
    while (poll(&connection, 1, -1) <= 0) {
    }
    std::_Exit(EXIT_SUCCESS);
  }).detach();
}

void tell(char event) {
  if (write(STDOUT_FILENO, &event, 1) != 1)
    std::_Exit(EXIT_SUCCESS);
}

class Speaker {
 public:
  explicit Speaker(QTextToSpeech &speech) : mSpeech(speech), mInput(STDIN_FILENO, kRead) {
    QObject::connect(&speech, &QTextToSpeech::stateChanged, &mInput,
                     [this](QTextToSpeech::State state) { stateChanged(state); });
    QObject::connect(&speech, &QTextToSpeech::errorOccurred, &mInput,
                     [] { std::_Exit(EXIT_FAILURE); });
    QObject::connect(&mInput, &QSocketNotifier::activated, &mInput, [this] { read(); });
  }

 private:
  static constexpr QSocketNotifier::Type kRead = QSocketNotifier::Read;

  void stateChanged(QTextToSpeech::State state) {
    if (state == QTextToSpeech::Speaking && !mIsBegun) {
      mIsBegun = true;
      tell(kSpeechBegun);
    } else if (state == QTextToSpeech::Ready && mIsBegun) {
      mIsBegun = false;
      tell(kSpeechEnded);
    }
  }

  void read() {
    std::array<char, 4096> chunk{};
    const ssize_t count = ::read(STDIN_FILENO, chunk.data(), chunk.size());
    if (count <= 0) {
      mInput.setEnabled(false);
      if (mIsBegun)
        mSpeech.stop();
      QCoreApplication::quit();
      return;
    }
    mText.append(chunk.data(), count);
    for (qsizetype end = mText.indexOf('\0'); end >= 0; end = mText.indexOf('\0')) {
      const QString text = QString::fromUtf8(mText.constData(), end);
      mText.remove(0, end + 1);
      mSpeech.say(text);
    }
  }

  QTextToSpeech &mSpeech;
  QSocketNotifier mInput;
  QByteArray mText;
  bool mIsBegun = false;
};

}  // namespace
}  // namespace orvane

int main(int argc, char **argv) {
  // The end of its input tells of the tuner's end too, but not while the library blocks.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::signal(SIGPIPE, SIG_IGN);
  QCoreApplication application(argc, argv);
  const std::set<int> others = orvane::connectedSockets();
  QTextToSpeech speech(QStringLiteral("speechd"));
  for (const int socket : orvane::connectedSockets()) {
    if (others.contains(socket))
      continue;
    orvane::endWithConnection(socket);
    orvane::Speaker speaker(speech);
    orvane::tell(orvane::kSpeechConnected);
    return QCoreApplication::exec();
  }
  return EXIT_FAILURE;
}
