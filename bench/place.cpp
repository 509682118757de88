#include "place.h"

#include <stdexcept>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QFile>
#include <QProcessEnvironment>
#include <QThread>

namespace quillorbit::bench {
namespace {

/// A UDP port that was free a moment ago.
int FreePort() {
  const int fd = socket(AF_INET6, SOCK_DGRAM, 0);
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  socklen_t length = sizeof address;
  auto* pAddress = reinterpret_cast<sockaddr*>(&address);
  if (fd < 0 || bind(fd, pAddress, length) != 0 || getsockname(fd, pAddress, &length) != 0)
    throw std::runtime_error("no free UDP port");
  close(fd);
  return ntohs(address.sin6_port);
}

}  // namespace

Place::Place() : m_sPort(QString::number(FreePort())) {
  QFile profile(m_folder.filePath("quillorbit.setup"));
  const bool bMade = m_folder.isValid() && QFile::copy(Built("quillorbit"), Program()) &&
                     profile.open(QIODevice::WriteOnly);
  if (!bMade) throw std::runtime_error("no temporary folder");
  profile.write("<quillorbit_profile><port>" + m_sPort.toUtf8() + "</port></quillorbit_profile>");
}

QString Place::Built(const QString& sName) {
  return QStringLiteral(QUILLORBIT_BINARIES "/") + sName;
}

void Place::Prepare(QProcess& process) const {
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("XDG_RUNTIME_DIR", m_folder.path());
  process.setProcessEnvironment(environment);
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

void Place::StartDriver(QProcess& driver) const {
  Prepare(driver);
  driver.setProcessChannelMode(QProcess::SeparateChannels);
  driver.start(Built("quillorbit-driver"), {"--record", "/dev/null"});
  if (!driver.waitForStarted()) throw std::runtime_error("quillorbit-driver does not start");
  while (!QFile::exists(Socket())) QThread::msleep(10);
}

void End(QProcess& process) {
  process.terminate();
  if (!process.waitForFinished(10'000))
    throw std::runtime_error(process.program().toStdString() + " does not end");
}

}  // namespace quillorbit::bench
