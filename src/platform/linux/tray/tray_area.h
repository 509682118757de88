#pragma once

#include <cstdint>

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QTimer>

#include "platform/linux/tray/session_bus.h"

namespace quillorbit::linux_adapter {

/// Where the desktop shows the icon: at a StatusNotifierItem host on the session bus, to which it
/// gives the item of this connection (status_item.h), or else in a tray that embeds windows
/// (XEmbed). A host that has not answered within a second counts as absent until it does.
class TrayArea final : public QObject, private QAbstractNativeEventFilter {
  Q_OBJECT

 public:
  explicit TrayArea(SessionBus& bus);
  ~TrayArea() override;

  /// Whether the icon has to be embedded in a tray, because there is one and no host.
  [[nodiscard]] bool IsEmbedding() const { return m_bEmbedding; }

 signals:
  void Changed();

 private:
  void FindTray();
  void Watch();
  void AskForHost();
  void RegisterItem();
  void TakeAnswer(bool bHost);
  void Decide();
  bool nativeEventFilter(const QByteArray& eventType, void* pMessage, qintptr* pResult) override;

  SessionBus& m_bus;
  QTimer m_start;  ///< running while a host may still answer before a tray is used
  bool m_bHost = false;
  std::uint32_t m_manager = 0, m_selection = 0;  ///< atoms of a tray that announces itself
  bool m_bTray = false;
  bool m_bEmbedding = false;
};

}  // namespace quillorbit::linux_adapter
