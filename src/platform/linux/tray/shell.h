#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/process/resources.h"
#include "platform/linux/tray/tray_icon.h"
#include "platform/linux/window/toolkit.h"
#include "platform/shell.h"

namespace quillorbit::linux_adapter {

/// The notification area of the desktop. All that it shows it takes from the records; the menu is
/// that of the record's window, for hosts that show menus themselves.
class LinuxShell final : public platform::Shell {
 public:
  /// The session bus has an address as in DBUS_SESSION_BUS_ADDRESS; it is empty when there is none.
  LinuxShell(LinuxToolkit& toolkit, const LinuxResources& resources, std::string sBusAddress);

  /// The system's ANSI code page here is UTF-8.
  bool Shell_NotifyIconA(std::uint32_t lMessage, const platform::NOTIFYICONDATAA& data) override;
  bool Shell_NotifyIconW(std::uint32_t lMessage, const platform::NOTIFYICONDATAW& data) override;

 private:
  template <class Char>
  bool NotifyIcon(std::uint32_t lMessage, const platform::NotifyIconData<Char>& data);
  template <class Char>
  bool Add(const platform::NotifyIconData<Char>& data);
  template <class Char>
  void Modify(TrayIcon& icon, const platform::NotifyIconData<Char>& data) const;

  LinuxToolkit& m_toolkit;
  const LinuxResources& m_resources;
  std::string m_sBusAddress;
  std::map<std::pair<platform::WindowHandle, std::uint32_t>, std::unique_ptr<TrayIcon>> m_icons;
  std::vector<std::unique_ptr<TrayIcon>> m_removed;  ///< one may be in the report that removed it
};

}  // namespace quillorbit::linux_adapter
