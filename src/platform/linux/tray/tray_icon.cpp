#include "platform/linux/tray/tray_icon.h"

#include <utility>

#include <QCursor>

#include "platform/shell.h"

namespace quillorbit::linux_adapter {
namespace {

using namespace platform;  // the notification codes

constexpr int nBalloonTime = 10'000;  // milliseconds, where the desktop leaves it to the program

QSystemTrayIcon::MessageIcon MessageIcon(std::uint32_t lIcon) {
  switch (lIcon) {
    case NIIF_INFO:
      return QSystemTrayIcon::Information;
    case NIIF_WARNING:
      return QSystemTrayIcon::Warning;
    case NIIF_ERROR:
      return QSystemTrayIcon::Critical;
    default:
      return QSystemTrayIcon::NoIcon;
  }
}

}  // namespace

TrayIcon::TrayIcon(SessionBus& bus, TrayArea& area, QMenu* pMenu, Tell tell)
    : m_area(area),
      m_menu(pMenu),
      m_tell(std::move(tell)),
      m_notifications(bus, {.Shown = [this] { TellCode(NIN_BALLOONSHOW); },
                            .Hidden = [this] { TellCode(NIN_BALLOONHIDE); },
                            .TimedOut = [this] { TellCode(NIN_BALLOONTIMEOUT); },
                            .Clicked = [this] { TellCode(NIN_BALLOONUSERCLICK); },
                            .NoService = [this](const Balloon& b) { ShowBesideIcon(b); }}) {
  QObject::connect(&area, &TrayArea::Changed, this, [this] {
    m_icon.reset();
    RequestUpdate();
  });
}

void TrayIcon::SetIcon(const QIcon& icon) {
  m_image = icon;
  RequestUpdate();
}

void TrayIcon::SetTip(const QString& sTip) {
  m_sTip = sTip;
  RequestUpdate();
}

void TrayIcon::ShowBalloon(const Balloon& balloon) {
  m_balloon = balloon;
  RequestUpdate();
}

void TrayIcon::Remove() {
  m_bRemoved = true;
  m_notifications.Close();
  m_icon.reset();
}

void TrayIcon::RequestUpdate() {
  if (!std::exchange(m_bUpdateRequested, true))
    QMetaObject::invokeMethod(this, &TrayIcon::Update, Qt::QueuedConnection);
}

void TrayIcon::Update() {
  m_bUpdateRequested = false;
  if (m_bRemoved) return;
  if (!m_icon && m_area.PresentKind() != TrayArea::Kind::None) {
    Appear();
  } else if (m_icon) {
    m_icon->setIcon(m_image);
    m_icon->setToolTip(m_sTip);
  }
  if (m_balloon) m_notifications.Show(*std::exchange(m_balloon, std::nullopt));
}

void TrayIcon::Appear() {
  m_icon = std::make_unique<QSystemTrayIcon>(m_image);
  m_icon->setToolTip(m_sTip);
  // An embedded icon would show the menu itself, before it has told of the click.
  if (m_area.PresentKind() == TrayArea::Kind::StatusNotifier) m_icon->setContextMenu(m_menu);
  QObject::connect(m_icon.get(), &QSystemTrayIcon::activated, this, &TrayIcon::Activated);
  QObject::connect(m_icon.get(), &QSystemTrayIcon::messageClicked, this, &TrayIcon::MessageClicked);
  m_icon->show();
}

/// From the event loop: the owner may open a menu and wait, and meanwhile the toolkit destroys the
/// balloon whose click it is still telling of.
void TrayIcon::TellCode(std::uint32_t lCode) {
  const auto tell = [this, lCode] {
    if (!m_bRemoved) m_tell(lCode);
  };
  QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

/// The toolkit tells of a whole click at once, here of its press.
void TrayIcon::Activated(QSystemTrayIcon::ActivationReason eReason) {
  const auto tellClick = [this](std::uint32_t lPress, std::uint32_t lRelease) {
    TellCode(lPress);
    TellCode(lRelease);
  };
  switch (eReason) {
    case QSystemTrayIcon::Trigger:
      return tellClick(WM_LBUTTONDOWN, WM_LBUTTONUP);
    case QSystemTrayIcon::DoubleClick:
      return tellClick(WM_LBUTTONDBLCLK, WM_LBUTTONUP);
    case QSystemTrayIcon::Context:
      return tellClick(WM_RBUTTONDOWN, WM_RBUTTONUP);
    case QSystemTrayIcon::MiddleClick:
      return tellClick(WM_MBUTTONDOWN, WM_MBUTTONUP);
    case QSystemTrayIcon::Unknown:
      return;
  }
}

/// A press on the icon also comes here while a balloon stands beside it.
void TrayIcon::MessageClicked() {
  if (!m_icon->geometry().contains(QCursor::pos())) TellCode(NIN_BALLOONUSERCLICK);
}

void TrayIcon::ShowBesideIcon(const Balloon& balloon) {
  if (!m_icon || m_area.PresentKind() != TrayArea::Kind::XEmbed) return;
  m_icon->showMessage(balloon.sTitle, balloon.sText, MessageIcon(balloon.lIcon),
                      balloon.lTimeout == 0 ? nBalloonTime : static_cast<int>(balloon.lTimeout));
  TellCode(NIN_BALLOONSHOW);
}

}  // namespace quillorbit::linux_adapter
