#include "place.h"

#include <stdexcept>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
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

Place::Place(View eView, const QString& sProgram) : m_sPort(QString::number(FreePort())) {
  QFile profile(Profile());
  bool bMade =
      m_folder.isValid() && QFile::copy(sProgram, Program()) && profile.open(QIODevice::WriteOnly);
  if (eView != View::Text) {
    for (const char* sFile :
         {"testPlane.x", "phone-back.png", "phone-edges.png", "phone-front.png"})
      bMade =
          bMade && QFile::copy(QFileInfo(sProgram).dir().filePath(sFile), m_folder.filePath(sFile));
  }
  if (!bMade) throw std::runtime_error("no place for " + sProgram.toStdString());
  profile.write("<quillorbit_profile><port>" + m_sPort.toUtf8() + "</port><debug>" +
                (eView == View::Overlay ? "1" : "0") + "</debug></quillorbit_profile>");
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

double CpuMilliseconds(qint64 nProcess) {
  QFile file("/proc/" + QString::number(nProcess) + "/stat");
  if (!file.open(QIODevice::ReadOnly))
    throw std::runtime_error("no " + file.fileName().toStdString());
  // Behind the name, which may hold anything, the state is the first field and utime the 12th.
  const QByteArray sStat = file.readAll();
  const auto fields = sStat.mid(sStat.lastIndexOf(')') + 2).split(' ');
  return (fields.at(11).toDouble() + fields.at(12).toDouble()) * 1000 /
         static_cast<double>(sysconf(_SC_CLK_TCK));
}

void End(QProcess& process) {
  process.terminate();
  if (!process.waitForFinished(10'000))
    throw std::runtime_error(process.program().toStdString() + " does not end");
}

}  // namespace quillorbit::bench
