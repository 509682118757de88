#pragma once

#include <memory>

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QThread>
#include <QTimer>

namespace quillorbit::linux_adapter {

/// The connection to the session bus. One that is lost is made anew when the bus is there again; a
/// desktop that has none at the start stays without.
class SessionBus final : public QObject {
  Q_OBJECT

 public:
  SessionBus();
  ~SessionBus() override;

  [[nodiscard]] bool IsConnected() const { return m_bConnected; }
  /// Only while it is connected.
  [[nodiscard]] QDBusConnection Connection() const { return QDBusConnection(m_sName); }

 signals:
  void Connected();
  void Lost();

 private slots:
  void Disconnected();

 private:
  void Connect();
  void TakeConnection();

  QString m_sName;
  bool m_bConnected = false;
  QTimer m_retry;
  std::unique_ptr<QThread> m_attempt;  ///< connecting waits for the bus
};

}  // namespace quillorbit::linux_adapter
