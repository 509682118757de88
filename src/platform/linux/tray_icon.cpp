#include "platform/linux/tray_icon.h"

#include <utility>

#include <QCursor>
#include <QGuiApplication>

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
      m_notifications(bus, {.Shown = [this] { m_tell(NIN_BALLOONSHOW); },
                            .Hidden = [this] { m_tell(NIN_BALLOONHIDE); },
                            .TimedOut = [this] { m_tell(NIN_BALLOONTIMEOUT); },
                            .Clicked = [this] { m_tell(NIN_BALLOONUSERCLICK); },
                            .NoService = [this](const Balloon& b) { ShowBesideIcon(b); }}) {
  // Queued: a new icon settles the toolkit's way, and the old one may be telling something.
  QObject::connect(&area, &TrayArea::Changed, this, &TrayIcon::Appear, Qt::QueuedConnection);
}

void TrayIcon::Appear() {
  m_icon.reset();
  if (m_area.PresentKind() == TrayArea::Kind::None || m_image.isNull()) return;
  m_icon = std::make_unique<QSystemTrayIcon>(m_image);
  m_icon->setToolTip(m_sTip);
  // An embedded icon would show the menu itself, before it has told of the click.
  if (m_area.PresentKind() == TrayArea::Kind::StatusNotifier) m_icon->setContextMenu(m_menu);
  QObject::connect(m_icon.get(), &QSystemTrayIcon::activated, this, &TrayIcon::Activated);
  QObject::connect(m_icon.get(), &QSystemTrayIcon::messageClicked, this, &TrayIcon::MessageClicked);
  m_icon->show();
}

void TrayIcon::SetIcon(const QIcon& icon) {
  m_image = icon;
  if (m_icon && !icon.isNull())
    m_icon->setIcon(icon);
  else
    Appear();
}

void TrayIcon::SetTip(const QString& sTip) {
  m_sTip = sTip;
  if (m_icon) m_icon->setToolTip(sTip);
}

void TrayIcon::Remove() {
  m_notifications.Close();
  m_tell = [](std::uint32_t) {};
  QObject::disconnect(&m_area, nullptr, this, nullptr);
  if (m_icon) m_icon->hide();
}

/// The toolkit tells of a whole click at once, here of its press.
void TrayIcon::Activated(QSystemTrayIcon::ActivationReason eReason) {
  const auto tellClick = [this](std::uint32_t lPress, std::uint32_t lRelease) {
    m_tell(lPress);
    m_tell(lRelease);
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

/// While a balloon stands beside the icon, the toolkit takes a press on the icon for one on the
/// balloon.
void TrayIcon::MessageClicked() {
  if (!m_icon->geometry().contains(QCursor::pos())) return m_tell(NIN_BALLOONUSERCLICK);
  Activated(QGuiApplication::mouseButtons().testFlag(Qt::RightButton) ? QSystemTrayIcon::Context
                                                                      : QSystemTrayIcon::Trigger);
}

void TrayIcon::ShowBesideIcon(const Balloon& balloon) {
  if (!m_icon || m_area.PresentKind() != TrayArea::Kind::XEmbed) return;
  m_icon->showMessage(balloon.sTitle, balloon.sText, MessageIcon(balloon.lIcon),
                      balloon.lTimeout == 0 ? nBalloonTime : static_cast<int>(balloon.lTimeout));
  m_tell(NIN_BALLOONSHOW);
}

}  // namespace quillorbit::linux_adapter
