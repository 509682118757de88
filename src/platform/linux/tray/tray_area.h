#pragma once

#include <cstdint>

#include <QAbstractNativeEventFilter>
#include <QDBusServiceWatcher>
#include <QObject>

#include "platform/linux/tray/session_bus.h"

namespace quillorbit::linux_adapter {

/// Where the desktop shows its tray icons: at a StatusNotifierItem host on the session bus, or in a
/// tray that embeds windows (XEmbed). The toolkit settles on one way at its first icon, for good,
/// so none may be made before there is a place for it.
class TrayArea final : public QObject, private QAbstractNativeEventFilter {
  Q_OBJECT

 public:
  enum class Kind { None, StatusNotifier, XEmbed };

  explicit TrayArea(SessionBus& bus);
  ~TrayArea() override;

  [[nodiscard]] Kind PresentKind() const { return m_eKind; }

 signals:
  void Changed();

 private slots:
  void AskForHost();

 private:
  void Watch();
  void TakeAnswer(bool bHost);
  void Decide();
  bool nativeEventFilter(const QByteArray& eventType, void* pMessage, qintptr* pResult) override;

  SessionBus& m_bus;
  QDBusServiceWatcher m_watchers;
  bool m_bHost = false;
  bool m_bAsking = false;                        ///< whether there is one
  std::uint32_t m_manager = 0, m_selection = 0;  ///< atoms of a tray that announces itself
  bool m_bTray = false;
  Kind m_eKind = Kind::None;
  Kind m_eSettled = Kind::None;  ///< the toolkit's way
};

}  // namespace quillorbit::linux_adapter
