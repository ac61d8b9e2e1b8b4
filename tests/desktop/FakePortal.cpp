// A desktop's settings portal for tests: fake-portal BUS-ADDRESS ANSWER. An answer is "TYPE VALUE",
// where the type is that of the bus in as many variants as it is to be in ("u 1", "vu 1", "s
// dark"); "silent" to answer nothing, or "refuse". Of the two operations it answers ReadOne only
// when its name is followed by one: "ReadOne u 1".
//
// It writes "ready" when it can be called, and each line that it reads is an answer to be told as a
// change. It ends with its input.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QSocketNotifier>
#include <QVariant>
#include <cstdio>
#include <iostream>
#include <string>
#include <tuple>
#include <utility>

namespace {

const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");
const QString kReadOne = QStringLiteral("ReadOne");

// Nothing for a type that it does not know.
QVariant parse(const QString &answer) {
  const QString type = answer.section(QLatin1Char(' '), 0, 0);
  const QString value = answer.section(QLatin1Char(' '), 1);
  QVariant parsed = type.endsWith(QLatin1Char('u'))   ? QVariant(value.toUInt())
                    : type.endsWith(QLatin1Char('i')) ? QVariant(value.toInt())
                    : type.endsWith(QLatin1Char('s')) ? QVariant(value)
                                                      : QVariant();
  for (qsizetype k = type.count(QLatin1Char('v')); parsed.isValid() && k > 0; --k)
    parsed = QVariant::fromValue(QDBusVariant(parsed));
  return parsed;
}

class FakePortal : public QDBusVirtualObject {
 public:
  explicit FakePortal(QString answer) : mAnswer(std::move(answer)) {}

  QString introspect(const QString & /*path*/) const override { return {}; }

  bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override {
    if (mAnswer == QLatin1String("silent")) {
      message.setDelayedReply(true);
      return true;
    }
    const bool isReadOne = mAnswer.startsWith(kReadOne);
    if (message.interface() != kSettings || message.member() != operation(isReadOne))
      return connection.send(message.createErrorReply(QDBusError::UnknownMethod, message.member()));
    const QVariant value = parse(isReadOne ? mAnswer.mid(kReadOne.size() + 1) : mAnswer);
    if (!value.isValid() || message.arguments() != QVariantList{kGroup, kKey})
      return connection.send(
          message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                                   QStringLiteral("Requested setting not found")));
    return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(value))));
  }

 private:
  static QString operation(bool isReadOne) { return isReadOne ? kReadOne : QStringLiteral("Read"); }

  const QString mAnswer;
};

void tellChange(const QDBusConnection &bus, const QString &answer) {
  // Others change, too.
  for (const auto &[group, key, value] :
       {std::tuple{QStringLiteral("org.other"), kKey, QVariant(1U)},
        std::tuple{kGroup, QStringLiteral("accent-color"), QVariant(1U)},
        std::tuple{kGroup, kKey, parse(answer)}}) {
    QDBusMessage signal =
        QDBusMessage::createSignal(kPath, kSettings, QStringLiteral("SettingChanged"));
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    bus.send(signal);
  }
}

}  // namespace

int main(int argc, char **argv) {
  std::ios::sync_with_stdio(false);  // else it cannot tell whether it has a line
  const QCoreApplication application(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  if (arguments.size() != 3)
    return 2;
  QDBusConnection bus = QDBusConnection::connectToBus(arguments[1], QStringLiteral("fake-portal"));
  FakePortal portal(arguments[2]);
  if (!bus.registerVirtualObject(kPath, &portal) ||
      !bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")))
    return 1;
  std::cout << "ready" << std::endl;
  const QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &application, [&bus] {
    // Lines that came together are in the stream's own buffer, which nobody tells of.
    do {
      std::string line;
      if (!std::getline(std::cin, line)) {
        QCoreApplication::quit();
        return;
      }
      tellChange(bus, QString::fromStdString(line));
    } while (std::cin.rdbuf()->in_avail() > 0);
  });
  return QCoreApplication::exec();
}
