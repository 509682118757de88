#include "platform/linux/tray/embedded_icon.h"

#include <utility>

#include <QApplication>
#include <QCursor>
#include <QIcon>
#include <QMouseEvent>
#include <QPixmap>
#include <QTextDocument>

#include "platform/shell.h"

namespace quillorbit::linux_adapter {
namespace {

using namespace platform;  // the notification codes

constexpr int nBalloonTime = 10'000;  // milliseconds, where the desktop leaves it to the program

QIcon ToIcon(const QImage& image) { return QIcon(QPixmap::fromImage(image)); }

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

/// The notification codes of a button; 0 is none.
struct ButtonCodes {
  std::uint32_t lPress = 0, lDoubleClick = 0, lRelease = 0;
};
ButtonCodes CodesOf(Qt::MouseButton eButton) {
  switch (eButton) {
    case Qt::LeftButton:
      return {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_LBUTTONUP};
    case Qt::RightButton:
      return {WM_RBUTTONDOWN, WM_RBUTTONDBLCLK, WM_RBUTTONUP};
    case Qt::MiddleButton:
      return {WM_MBUTTONDOWN, WM_MBUTTONDOWN, WM_MBUTTONUP};
    default:
      return {};
  }
}

}  // namespace

EmbeddedIcon::EmbeddedIcon(const QImage& image, const QString& sTip, Report report)
    : m_icon(ToIcon(image)), m_report(std::move(report)) {
  SetTip(sTip);
  QObject::connect(&m_icon, &QSystemTrayIcon::messageClicked, this, &EmbeddedIcon::MessageClicked);
  m_icon.show();
  // The toolkit reports a click when the button goes down; the icon's window, which is another one
  // with each tray, gets the release too.
  QApplication::instance()->installEventFilter(this);
}

void EmbeddedIcon::SetImage(const QImage& image) { m_icon.setIcon(ToIcon(image)); }

/// The text may come from a profile; the toolkit takes one that looks like HTML for it.
void EmbeddedIcon::SetTip(const QString& sTip) {
  m_icon.setToolTip(Qt::mightBeRichText(sTip) ? Qt::convertFromPlainText(sTip) : sTip);
}

void EmbeddedIcon::ShowBalloon(const Balloon& balloon) {
  m_icon.showMessage(balloon.sTitle, balloon.sText, MessageIcon(balloon.lIcon),
                     balloon.lTimeout == 0 ? nBalloonTime : static_cast<int>(balloon.lTimeout));
  m_report(NIN_BALLOONSHOW);
}

bool EmbeddedIcon::eventFilter(QObject* pWatched, QEvent* pEvent) {
  const QEvent::Type eType = pEvent->type();
  if (eType != QEvent::MouseButtonPress && eType != QEvent::MouseButtonDblClick &&
      eType != QEvent::MouseButtonRelease)
    return false;
  const auto* const pMouse = static_cast<const QMouseEvent*>(pEvent);
  if (!pWatched->inherits("QSystemTrayIconSys") ||
      !m_icon.geometry().contains(pMouse->globalPosition().toPoint()))
    return false;
  const ButtonCodes codes = CodesOf(pMouse->button());
  const std::uint32_t lCode = eType == QEvent::MouseButtonPress      ? codes.lPress
                              : eType == QEvent::MouseButtonDblClick ? codes.lDoubleClick
                                                                     : codes.lRelease;
  if (lCode != 0) m_report(lCode);
  return false;
}

/// A press on the icon also comes here while a balloon stands beside it.
void EmbeddedIcon::MessageClicked() {
  if (!m_icon.geometry().contains(QCursor::pos())) m_report(NIN_BALLOONUSERCLICK);
}

}  // namespace quillorbit::linux_adapter
