// What a desktop has on the session bus: the tray service, which hosts the status item that was
// registered last, and the notification service. It prints what the program tells it, a line for
// each fact, and does what the user would do when a method of org.quillorbit.User is called.
//
//   status_host [--answers=N] [--without-items] [--without-notifications] [--silent] [--markup]
//
// The tray service answers its first N calls only; with --silent the notification service answers
// none, and with --markup it takes texts as markup.

#include <cstdio>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDBusVirtualObject>

namespace {

constexpr const char* sWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* sItem = "org.kde.StatusNotifierItem";
constexpr const char* sNotifications = "org.freedesktop.Notifications";
constexpr const char* sUser = "org.quillorbit.User";

void Say(const QString& sFact) {
  std::puts(qUtf8Printable(sFact));
  std::fflush(stdout);
}

/// A value as text: what it contains in parentheses, and bytes as a hash that can be compared.
QString Text(const QVariant& value) {
  if (value.metaType() == QMetaType::fromType<QDBusVariant>())
    return Text(value.value<QDBusVariant>().variant());
  if (value.metaType() == QMetaType::fromType<QByteArray>())
    return QCryptographicHash::hash(value.toByteArray(), QCryptographicHash::Md5).toHex().left(8);
  if (value.metaType() == QMetaType::fromType<QStringList>()) return value.toStringList().join(',');
  if (value.metaType() != QMetaType::fromType<QDBusArgument>()) return value.toString();
  QVariantList values;
  const auto argument = value.value<QDBusArgument>();
  if (argument.currentType() == QDBusArgument::MapType) {
    values = qdbus_cast<QVariantMap>(value).values();
  } else {
    const bool bArray = argument.currentType() == QDBusArgument::ArrayType;
    bArray ? argument.beginArray() : argument.beginStructure();
    while (!argument.atEnd()) values += argument.asVariant();
  }
  QStringList texts;
  for (const QVariant& contained : values) texts += Text(contained);
  return '(' + texts.join(',') + ')';
}

bool Has(const char* sSwitch) { return QCoreApplication::arguments().contains(sSwitch); }

}  // namespace

class StatusHost : public QDBusVirtualObject {
  Q_OBJECT

 public:
  [[nodiscard]] bool Start() {
    for (const QString& sSwitch : QCoreApplication::arguments())
      if (sSwitch.startsWith("--answers=")) m_nAnswers = sSwitch.section('=', 1).toInt();
    m_owner.setConnection(m_bus);
    m_owner.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_owner, &QDBusServiceWatcher::serviceUnregistered, this, [] { Say("item gone"); });
    return m_bus.registerVirtualObject("/", this, QDBusConnection::SubPath) &&
           (Has("--without-items") || m_bus.registerService(sWatcher)) &&
           (Has("--without-notifications") || m_bus.registerService(sNotifications)) &&
           m_bus.registerService(sUser);
  }

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& call, const QDBusConnection&) override {
    QVariantList reply;
    bool bAnswer = true;
    if (call.path() == "/StatusNotifierWatcher") {
      bAnswer = m_nAnswers-- > 0;
      if (call.member() == "RegisterStatusNotifierItem") Host(call.arguments().value(0).toString());
      if (call.member() == "Get") reply += QVariant::fromValue(QDBusVariant(true));
    } else if (call.interface() == sNotifications) {
      bAnswer = !Has("--silent");
      reply = Notification(call.member(), call.arguments());
    } else {
      DoAsUser(call.member());
    }
    return !bAnswer || m_bus.send(call.createReply(reply));
  }

 private slots:
  void ReadItem() {
    Call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll", {sItem},
         &StatusHost::SayItem);
  }
  void SayItem(const QDBusMessage& reply) {
    const auto properties = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    for (const char* sName : {"Title", "ToolTip", "IconPixmap"}) {
      const QString sFact = sName + (' ' + Text(properties[sName]));
      if (std::exchange(m_said[sName], sFact) != sFact) Say(sFact);
    }
  }
  void SayMenu(const QDBusMessage& reply) { Say("menu " + Text(reply.arguments().value(1))); }

 private:
  void Host(const QString& sItemService) {
    Say("item registered");
    m_owner.setWatchedServices({sItemService});
    m_said.clear();
    for (const char* sSignal : {"NewIcon", "NewToolTip"})
      m_bus.connect(sItemService, "/StatusNotifierItem", sItem, sSignal, this, SLOT(ReadItem()));
    ReadItem();
  }

  QVariantList Notification(const QString& sMember, const QVariantList& arguments) {
    if (sMember == "GetCapabilities")
      return {QStringList{"actions", "body", Has("--markup") ? "body-markup" : "sound"}};
    if (sMember == "CloseNotification") return {};
    const uint nReplaces = arguments.value(1).toUInt();
    m_nLast = nReplaces != 0 ? nReplaces : m_nLast + 1;
    QStringList texts;
    for (const int i : {3, 4, 2, 5, 1}) texts += Text(arguments.value(i));
    Say("notification " + texts.join('|'));
    return {m_nLast};
  }

  void DoAsUser(const QString& sAction) {
    const char* const sMenu = "com.canonical.dbusmenu";
    if (sAction == "ListMenu")
      Call("/MenuBar", sMenu, "GetLayout", {0, -1, QStringList()}, &StatusHost::SayMenu);
    else if (sAction == "ClickMenu")
      Call("/MenuBar", sMenu, "Event", {1, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
    else if (sAction == "ClickNotification")
      Tell("ActionInvoked", "default");
    else if (sAction == "DismissNotification" || sAction == "LetNotificationExpire")
      Tell("NotificationClosed", sAction == "DismissNotification" ? 2U : 1U);
    else
      Call("/StatusNotifierItem", sItem, sAction, {0, 0});
  }

  void Tell(const QString& sSignal, const QVariant& argument) {
    auto signal =
        QDBusMessage::createSignal("/org/freedesktop/Notifications", sNotifications, sSignal);
    signal.setArguments({m_nLast, argument});
    m_bus.send(signal);
  }

  /// Calls the item's program without waiting for it.
  void Call(const QString& sPath, const QString& sInterface, const QString& sMethod,
            const QVariantList& arguments, void (StatusHost::*pReply)(const QDBusMessage&) = {}) {
    auto call = QDBusMessage::createMethodCall(m_owner.watchedServices().value(0, "no.item"), sPath,
                                               sInterface, sMethod);
    call.setArguments(arguments);
    auto* pWatcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(pWatcher, &QDBusPendingCallWatcher::finished, this, [=, this] {
      if (pWatcher->isError())
        Say("failed " + sMethod + ": " + pWatcher->error().message());
      else if (pReply != nullptr)
        (this->*pReply)(pWatcher->reply());
      pWatcher->deleteLater();
    });
  }

  QDBusConnection m_bus = QDBusConnection::sessionBus();
  QDBusServiceWatcher m_owner;
  QMap<QString, QString> m_said;
  int m_nAnswers = 1'000'000;
  uint m_nLast = 0;
};

int main(int argc, char** argv) {
  const QCoreApplication app(argc, argv);
  StatusHost host;
  if (!host.Start()) return 1;
  Say("ready");
  return QCoreApplication::exec();
}

#include "status_host.moc"
