#include "platform/linux/tray/shell.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

#include "platform/linux/window/form.h"

namespace quillorbit::linux_adapter {
namespace {

/// A field's text up to its NUL, or the whole field when it has none.
template <class Char>
QString Text(std::span<const Char> field) {
  const auto nLength = std::find(field.begin(), field.end(), Char(0)) - field.begin();
  if constexpr (std::is_same_v<Char, char>)
    return QString::fromUtf8(field.data(), nLength);
  else
    return QString::fromUtf16(field.data(), nLength);
}

/// As much of the tip's field as the record's size covers.
template <class Char>
QString Tip(const platform::NotifyIconData<Char>& data) {
  constexpr std::size_t nOffset = offsetof(platform::NotifyIconData<Char>, szTip);
  if (data.cbSize <= nOffset) return {};
  const std::size_t nCovered = (data.cbSize - nOffset) / sizeof(Char);
  const std::span<const Char> field(data.szTip);
  return Text(field.first(std::min(nCovered, field.size())));
}

}  // namespace

LinuxShell::LinuxShell(LinuxToolkit& toolkit, const LinuxResources& resources,
                       std::string sBusAddress)
    : m_toolkit(toolkit), m_resources(resources), m_sBusAddress(std::move(sBusAddress)) {}

bool LinuxShell::Shell_NotifyIconA(std::uint32_t lMessage, const platform::NOTIFYICONDATAA& data) {
  return NotifyIcon(lMessage, data);
}

bool LinuxShell::Shell_NotifyIconW(std::uint32_t lMessage, const platform::NOTIFYICONDATAW& data) {
  return NotifyIcon(lMessage, data);
}

template <class Char>
bool LinuxShell::NotifyIcon(std::uint32_t lMessage, const platform::NotifyIconData<Char>& data) {
  if (lMessage == platform::NIM_ADD) return Add(data);
  const auto it = m_icons.find({data.hWnd, data.uID});
  if (it == m_icons.end()) return false;
  switch (lMessage) {
    case platform::NIM_MODIFY:
      Modify(*it->second, data);
      return true;
    case platform::NIM_DELETE:
      it->second->Remove();
      m_removed.push_back(std::move(it->second));
      m_icons.erase(it);
      return true;
    default:  // the icon behaves in one way, whatever version is set
      return lMessage == platform::NIM_SETVERSION;
  }
}

template <class Char>
bool LinuxShell::Add(const platform::NotifyIconData<Char>& data) {
  LinuxForm* const pForm = m_toolkit.FormOf(data.hWnd);
  if (pForm == nullptr || m_icons.contains({data.hWnd, data.uID})) return false;
  const bool bReports =
      (data.uFlags & platform::NIF_MESSAGE) != 0 && data.uCallbackMessage == platform::WM_MOUSEMOVE;
  auto icon = std::make_unique<TrayIcon>(
      m_sBusAddress, pForm->MenuWidget(), [this, hWnd = data.hWnd, bReports](std::uint32_t lCode) {
        LinuxForm* const pReceiver = bReports ? m_toolkit.FormOf(hWnd) : nullptr;
        if (pReceiver != nullptr && pReceiver->MouseMove)
          pReceiver->MouseMove(static_cast<std::int32_t>(lCode));
      });
  Modify(*icon, data);
  m_icons[{data.hWnd, data.uID}] = std::move(icon);
  return true;
}

template <class Char>
void LinuxShell::Modify(TrayIcon& icon, const platform::NotifyIconData<Char>& data) const {
  if ((data.uFlags & platform::NIF_TIP) != 0) icon.SetTip(Tip(data));
  if ((data.uFlags & platform::NIF_ICON) != 0) icon.SetImage(m_resources.Image(data.hIcon));
  if ((data.uFlags & platform::NIF_INFO) != 0 && data.cbSize == sizeof data)
    icon.ShowBalloon({.sTitle = Text(std::span<const Char>(data.szInfoTitle)),
                      .sText = Text(std::span<const Char>(data.szInfo)),
                      .lIcon = data.dwInfoFlags,
                      .lTimeout = data.uTimeout});
}

}  // namespace quillorbit::linux_adapter
