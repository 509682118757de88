// A desktop's side of the session bus: the host of a status item, and the notification daemon. It
// prints what the program tells it, a line for each fact, and does what the user would do when it
// is called at its own interface.
//
//   status_host [--without-items] [--without-notifications] [--silent] [--markup]
//
// --silent never answers a call to the notification daemon; --markup announces that the texts of
// notifications are markup.

#include <cstdio>
#include <functional>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QMap>
#include <QStringList>
#include <QVariantMap>

namespace {

using WhenDone = std::function<void(const QVariantList& answers)>;

void Say(const QString& sFact) {
  std::puts(qUtf8Printable(sFact));
  std::fflush(stdout);
}

/// The pictures of an icon, short enough to compare.
QString Hash(const QDBusArgument& pictures) {
  QCryptographicHash hash(QCryptographicHash::Md5);
  pictures.beginArray();
  while (!pictures.atEnd()) {
    int nWidth = 0;
    int nHeight = 0;
    QByteArray pixels;
    pictures.beginStructure();
    pictures >> nWidth >> nHeight >> pixels;
    pictures.endStructure();
    hash.addData(pixels);
  }
  pictures.endArray();
  return hash.result().toHex().left(8);
}

QString TooltipText(const QDBusArgument& tooltip) {
  QString sIcon;
  QString sTitle;
  tooltip.beginStructure();
  tooltip >> sIcon;
  Hash(tooltip);
  tooltip >> sTitle;
  return sTitle;
}

/// The entries of a menu's layout, with their labels.
QMap<int, QString> Labels(const QDBusArgument& layout) {
  QMap<int, QString> labels;
  int nId = 0;
  QVariantMap properties;
  layout.beginStructure();
  layout >> nId >> properties;
  layout.beginArray();
  while (!layout.atEnd()) {
    QDBusVariant child;
    layout >> child;
    const auto entry = qvariant_cast<QDBusArgument>(child.variant());
    entry.beginStructure();
    entry >> nId >> properties;
    labels[nId] = properties["label"].toString();
  }
  return labels;
}

}  // namespace

/// Hosts one status item, the last that was registered.
class ItemHost : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
  Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER m_bHost CONSTANT)
  Q_PROPERTY(int ProtocolVersion MEMBER m_nProtocol CONSTANT)
  Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ Items CONSTANT)

 public:
  ItemHost() {
    m_owner.setConnection(QDBusConnection::sessionBus());
    m_owner.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_owner, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
      m_owner.setWatchedServices({});
      Say("item gone");
    });
  }

  [[nodiscard]] QStringList Items() const { return m_owner.watchedServices(); }

  void CallItem(const QString& sMethod) {
    Call("/StatusNotifierItem", "org.kde.StatusNotifierItem", sMethod, {0, 0});
  }

  /// Says the menu's labels and clicks the entry with this one.
  void ReadMenu(const QString& sToClick) {
    const char* sInterface = "com.canonical.dbusmenu";
    Call(m_sMenu, sInterface, "GetLayout", {0, -1, QStringList()},
         [=, this](const QVariantList& answer) {
           const auto labels = Labels(qvariant_cast<QDBusArgument>(answer.value(1)));
           Say("menu " + labels.values().join('|'));
           const int nId = labels.key(sToClick, -1);
           if (nId >= 0)
             Call(m_sMenu, sInterface, "Event",
                  {nId, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
         });
  }

 public slots:
  void RegisterStatusNotifierItem(const QString& sService) {
    Say("item registered");
    m_owner.setWatchedServices({sService});
    m_told.clear();
    for (const char* sSignal : {"NewTitle", "NewIcon", "NewToolTip"})
      QDBusConnection::sessionBus().connect(sService, "/StatusNotifierItem",
                                            "org.kde.StatusNotifierItem", sSignal, this,
                                            SLOT(Read()));
    Read();
  }

 private slots:
  void Read() {
    Call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
         {"org.kde.StatusNotifierItem"}, [this](const QVariantList& answer) {
           const auto properties = qdbus_cast<QVariantMap>(answer.value(0));
           m_sMenu = qvariant_cast<QDBusObjectPath>(properties["Menu"]).path();
           Tell("title", properties["Title"].toString());
           Tell("tooltip", TooltipText(qvariant_cast<QDBusArgument>(properties["ToolTip"])));
           Tell("icon", properties["IconName"].toString() +
                            Hash(qvariant_cast<QDBusArgument>(properties["IconPixmap"])));
         });
  }

 private:
  /// Says a property that has changed.
  void Tell(const QString& sName, const QString& sValue) {
    if (m_told.value(sName) == sValue) return;
    m_told[sName] = sValue;
    Say(sName + ' ' + sValue);
  }

  /// Calls the item's program without waiting for it.
  void Call(const QString& sPath, const QString& sInterface, const QString& sMethod,
            const QVariantList& arguments, const WhenDone& whenDone = {}) {
    auto call =
        QDBusMessage::createMethodCall(Items().value(0, "no.item"), sPath, sInterface, sMethod);
    call.setArguments(arguments);
    auto* pWatcher =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(pWatcher, &QDBusPendingCallWatcher::finished, this, [=] {
      const QDBusMessage reply = pWatcher->reply();
      if (reply.type() == QDBusMessage::ErrorMessage)
        Say("failed " + sMethod + ": " + reply.errorMessage());
      else if (whenDone)
        whenDone(reply.arguments());
      pWatcher->deleteLater();
    });
  }

  const bool m_bHost = true;
  const int m_nProtocol = 0;
  QDBusServiceWatcher m_owner;
  QString m_sMenu;
  QMap<QString, QString> m_told;
};

class Notifications : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  Notifications(bool bSilent, bool bMarkup) : m_bSilent(bSilent), m_bMarkup(bMarkup) {}

  void Click() {
    emit ActionInvoked(m_nLast, "default");
    End(2);
  }
  void End(uint nReason) { emit NotificationClosed(m_nLast, nReason); }

 public slots:
  QStringList GetCapabilities() {
    setDelayedReply(m_bSilent);
    return m_bMarkup ? QStringList{"actions", "body", "body-markup"}
                     : QStringList{"actions", "body"};
  }

  uint Notify(const QString&, uint nReplaces, const QString& sIcon, const QString& sSummary,
              const QString& sBody, const QStringList& actions, const QVariantMap& hints, int) {
    setDelayedReply(m_bSilent);
    m_nLast = nReplaces != 0 ? nReplaces : m_nLast + 1;
    Say(QString("notification %1|%2|%3|urgency %4|%5|replaces %6")
            .arg(sSummary, sBody, sIcon, hints.value("urgency", "none").toString(),
                 actions.join(','), QString::number(nReplaces)));
    return m_nLast;
  }

  void CloseNotification(uint nId) {
    setDelayedReply(m_bSilent);
    Say("notification closed");
    if (!m_bSilent) emit NotificationClosed(nId, 3);
  }

  QString GetServerInformation(QString& sVendor, QString& sVersion, QString& sSpecification) {
    setDelayedReply(m_bSilent);
    sVendor = "Quillorbit";
    sVersion = "1";
    sSpecification = "1.2";
    return "status_host";
  }

 signals:
  void NotificationClosed(uint nId, uint nReason);
  void ActionInvoked(uint nId, const QString& sAction);

 private:
  const bool m_bSilent;
  const bool m_bMarkup;
  uint m_nLast = 0;
};

/// What the user does.
class User : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.quillorbit.User")

 public:
  User(ItemHost& items, Notifications& notifications)
      : m_items(items), m_notifications(notifications) {}

 public slots:
  void Activate() { m_items.CallItem("Activate"); }
  void ContextMenu() { m_items.CallItem("ContextMenu"); }
  void ListMenu() { m_items.ReadMenu({}); }
  void ClickMenu(const QString& sLabel) { m_items.ReadMenu(sLabel); }
  void ClickNotification() { m_notifications.Click(); }
  void DismissNotification() { m_notifications.End(2); }
  void LetNotificationExpire() { m_notifications.End(1); }

 private:
  ItemHost& m_items;
  Notifications& m_notifications;
};

int main(int argc, char** argv) {
  const QCoreApplication app(argc, argv);
  const QStringList switches = QCoreApplication::arguments();
  QDBusConnection bus = QDBusConnection::sessionBus();
  ItemHost items;
  Notifications notifications(switches.contains("--silent"), switches.contains("--markup"));
  User user(items, notifications);

  const auto exported = QDBusConnection::ExportAllContents;
  bool bOk = bus.registerObject("/", &user, exported);
  if (!switches.contains("--without-items"))
    bOk = bOk && bus.registerObject("/StatusNotifierWatcher", &items, exported) &&
          bus.registerService("org.kde.StatusNotifierWatcher");
  if (!switches.contains("--without-notifications"))
    bOk = bOk && bus.registerObject("/org/freedesktop/Notifications", &notifications, exported) &&
          bus.registerService("org.freedesktop.Notifications");
  if (!bOk || !bus.registerService("org.quillorbit.User")) {
    std::fputs("status_host: the session bus does not give the names\n", stderr);
    return 1;
  }
  Say("ready");
  return QCoreApplication::exec();
}

#include "status_host.moc"
