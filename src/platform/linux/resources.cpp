#include "platform/linux/resources.h"

#include <stdexcept>

#include <QFile>

namespace quillorbit::linux_adapter {

std::string LinuxResources::LoadResData(std::uint16_t lId, std::string_view sType) const {
  const std::string sName = ":/" + std::string(sType) + "/" + std::to_string(lId);
  QFile resource(QString::fromStdString(sName));
  if (!resource.open(QIODevice::ReadOnly)) throw std::runtime_error("no resource " + sName);
  return resource.readAll().toStdString();
}

}  // namespace quillorbit::linux_adapter
