#include "platform/linux/tray/session_bus.h"

#include <chrono>

namespace quillorbit::linux_adapter {
namespace {

constexpr std::chrono::seconds retryInterval(2);

}  // namespace

SessionBus::SessionBus() : m_sName("quillorbit") {
  QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_sName);
  m_retry.setSingleShot(true);
  QObject::connect(&m_retry, &QTimer::timeout, this, &SessionBus::Connect);
  TakeConnection();
}

SessionBus::~SessionBus() {
  if (m_attempt) m_attempt->wait();
  QDBusConnection::disconnectFromBus(m_sName);
}

void SessionBus::TakeConnection() {
  QDBusConnection connection(m_sName);
  m_bConnected = connection.isConnected();
  if (m_bConnected)
    connection.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local",
                       "Disconnected", this, SLOT(Disconnected()));
}

void SessionBus::Disconnected() {
  m_bConnected = false;
  m_retry.start(retryInterval);
  emit Lost();
}

void SessionBus::Connect() {
  m_attempt.reset(QThread::create([sName = m_sName] {
    QDBusConnection::disconnectFromBus(sName);
    QDBusConnection::connectToBus(QDBusConnection::SessionBus, sName);
  }));
  QObject::connect(m_attempt.get(), &QThread::finished, this, [this] {
    TakeConnection();
    if (m_bConnected)
      emit Connected();
    else
      m_retry.start(retryInterval);
  });
  m_attempt->start();
}

}  // namespace quillorbit::linux_adapter
