#include "platform/linux/tray/tray_icon.h"

#include <utility>

#include "platform/shell.h"

namespace quillorbit::linux_adapter {

TrayIcon::TrayIcon(const std::string& sBusAddress, QMenu* pMenu, Report report)
    : m_bus(sBusAddress),
      m_area(m_bus),
      m_report(std::move(report)),
      m_item(m_bus, pMenu, [this](std::uint32_t lCode) { ReportCode(lCode); }),
      m_notifications(m_bus, {.Shown = [this] { ReportCode(platform::NIN_BALLOONSHOW); },
                              .Hidden = [this] { ReportCode(platform::NIN_BALLOONHIDE); },
                              .TimedOut = [this] { ReportCode(platform::NIN_BALLOONTIMEOUT); },
                              .Clicked = [this] { ReportCode(platform::NIN_BALLOONUSERCLICK); },
                              .NoService =
                                  [this](const Balloon& balloon) {
                                    if (m_embedded) m_embedded->ShowBalloon(balloon);
                                  }}) {
  QObject::connect(&m_area, &TrayArea::Changed, this, &TrayIcon::RequestUpdate);
  RequestUpdate();
}

void TrayIcon::SetImage(const QImage& image) {
  m_image = image;
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
  m_embedded.reset();
  m_bus.Close();
}

void TrayIcon::RequestUpdate() {
  if (!std::exchange(m_bUpdateRequested, true))
    QMetaObject::invokeMethod(this, &TrayIcon::Update, Qt::QueuedConnection);
}

void TrayIcon::Update() {
  m_bUpdateRequested = false;
  if (m_bRemoved) return;
  m_item.SetImage(m_image);
  m_item.SetTip(m_sTip);
  if (!m_area.IsEmbedding()) {
    m_embedded.reset();
  } else if (m_embedded) {
    m_embedded->SetImage(m_image);
    m_embedded->SetTip(m_sTip);
  } else {
    m_embedded = std::make_unique<EmbeddedIcon>(m_image, m_sTip,
                                                [this](std::uint32_t lCode) { ReportCode(lCode); });
  }
  if (m_balloon)
    m_notifications.Show(*std::exchange(m_balloon, std::nullopt), m_embedded != nullptr);
}

/// From the event loop: the owner may open a menu and wait, and meanwhile what reported the code
/// may be gone.
void TrayIcon::ReportCode(std::uint32_t lCode) {
  const auto report = [this, lCode] {
    if (!m_bRemoved) m_report(lCode);
  };
  QMetaObject::invokeMethod(this, report, Qt::QueuedConnection);
}

}  // namespace quillorbit::linux_adapter
