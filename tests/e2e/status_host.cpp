// What a desktop has on the session bus: the tray service, which hosts the item that was registered
// last, and the notification service. It prints every call that it gets and every property that it
// reads from the item, a line each, with the arguments in parentheses. A call of
// org.quillorbit.User is what the user does to the last notification: the notification service
// sends its signal of the same name with the same arguments.
//
//   status_host [--silent]
//
// With --silent the services answer nothing except that the tray service is there.

#include <cstdio>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QDebug>

namespace {

constexpr const char* sWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* sItem = "org.kde.StatusNotifierItem";
constexpr const char* sItemPath = "/StatusNotifierItem";
constexpr const char* sNotifications = "org.freedesktop.Notifications";
constexpr const char* sUser = "org.quillorbit.User";

void Say(const QString& sName, const QDBusMessage& message) {
  const QString sContents = QDebug::toString(message).section("contents=", 1);
  std::puts(qUtf8Printable(sName + ' ' + sContents));
  std::fflush(stdout);
}

}  // namespace

class StatusHost : public QDBusVirtualObject {
  Q_OBJECT

 public:
  [[nodiscard]] bool Start() {
    return m_bus.registerVirtualObject("/", this, QDBusConnection::SubPath) &&
           m_bus.registerService(sWatcher) && m_bus.registerService(sNotifications) &&
           m_bus.registerService(sUser);
  }

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& call, const QDBusConnection&) override {
    Say(call.member(), call);
    if (call.interface() == sUser) EndNotification(call);
    if (call.member() == "RegisterStatusNotifierItem") Host(call.arguments().value(0).toString());
    const bool bSilent = QCoreApplication::arguments().contains("--silent");
    return (bSilent && call.member() != "Get") || m_bus.send(call.createReply(Reply(call)));
  }

 private slots:
  void ReadIcon() { Read("IconPixmap"); }
  void ReadTip() { Read("ToolTip"); }

 private:
  QVariantList Reply(const QDBusMessage& call) {
    if (call.member() == "Get") return {QVariant::fromValue(QDBusVariant(true))};
    if (call.member() == "GetCapabilities") return {QStringList{"actions", "body-markup"}};
    if (call.member() != "Notify") return {};
    const uint nReplaces = call.arguments().value(1).toUInt();
    m_nLast = nReplaces != 0 ? nReplaces : m_nLast + 1;
    return {m_nLast};
  }

  void EndNotification(const QDBusMessage& call) {
    auto signal =
        QDBusMessage::createSignal("/org/freedesktop/Notifications", sNotifications, call.member());
    signal.setArguments(QVariantList{m_nLast} + call.arguments());
    m_bus.send(signal);
  }

  void Host(const QString& sService) {
    m_sService = sService;
    m_bus.connect(sService, sItemPath, sItem, "NewIcon", this, SLOT(ReadIcon()));
    m_bus.connect(sService, sItemPath, sItem, "NewToolTip", this, SLOT(ReadTip()));
    ReadIcon();
    ReadTip();
  }

  void Read(const char* sProperty) {
    auto call = QDBusMessage::createMethodCall(m_sService, sItemPath,
                                               "org.freedesktop.DBus.Properties", "Get");
    call.setArguments({sItem, sProperty});
    Say(sProperty, m_bus.call(call));
  }

  QDBusConnection m_bus = QDBusConnection::sessionBus();
  QString m_sService;
  uint m_nLast = 0;
};

int main(int argc, char** argv) {
  const QCoreApplication app(argc, argv);
  StatusHost host;
  if (!host.Start()) return 1;
  Say("ready", {});
  return QCoreApplication::exec();
}

#include "status_host.moc"
