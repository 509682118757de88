#include "platform/linux/process/code_page.h"

#include <QByteArray>
#include <QString>
#include <QStringDecoder>
#include <QStringEncoder>

namespace quillorbit::linux_adapter {
namespace {

// QString's own conversions write "?" for half a surrogate pair and swallow a leading U+FEFF.
constexpr auto eFlags =
    QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom;

}  // namespace

std::string LinuxCodePage::WideCharToMultiByte(std::u16string_view sText) const {
  QStringEncoder encode(QStringConverter::Utf8, eFlags);
  const QByteArray sBytes = encode(QStringView(sText.data(), static_cast<qsizetype>(sText.size())));
  return sBytes.toStdString();
}

std::u16string LinuxCodePage::MultiByteToWideChar(std::string_view sText) const {
  QStringDecoder decode(QStringConverter::Utf8, eFlags);
  const QString sUnits = decode(QByteArrayView(sText.data(), static_cast<qsizetype>(sText.size())));
  return sUnits.toStdU16String();
}

}  // namespace quillorbit::linux_adapter
