#pragma once

#include <cstdint>

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QTimer>

#include "platform/linux/tray/session_bus.h"

namespace quillorbit::linux_adapter {

/// Where the desktop shows tray icons now: at a StatusNotifierItem host on the session bus, or else
/// in a tray that embeds windows (XEmbed). Whoever does not answer within a second is not there
/// until he does.
class TrayArea final : public QObject, private QAbstractNativeEventFilter {
  Q_OBJECT

 public:
  enum class Kind { None, StatusNotifier, XEmbed };

  explicit TrayArea(SessionBus& bus);
  ~TrayArea() override;

  [[nodiscard]] Kind PresentKind() const { return m_eKind; }

 signals:
  /// Also when another host has taken the place of the one that had the icon.
  void Changed();

 private:
  void Watch();
  void AskForHost();
  void TakeAnswer(bool bHost);
  void FindTray();
  void Decide();
  bool nativeEventFilter(const QByteArray& eventType, void* pMessage, qintptr* pResult) override;

  SessionBus& m_bus;
  QTimer m_limit;  ///< running while a host may still come before a tray is taken
  bool m_bHost = false;
  std::uint32_t m_manager = 0, m_selection = 0;  ///< atoms of a tray that announces itself
  bool m_bTray = false;
  Kind m_eKind = Kind::None;
};

}  // namespace quillorbit::linux_adapter
