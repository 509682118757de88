#include "tray/frmSysTray.h"

#include "base/FormClass.h"
#include "base/Numbers.h"
#include "base/Utf16.h"
#include "tray/TextFields.h"

namespace quillorbit {
namespace {

using namespace platform;  // many of its names are used here

constexpr std::uint32_t NotifyCallbackMessage = WM_MOUSEMOVE;
constexpr std::uint32_t lShellVersion = 3;
constexpr FormDesign design = {.sName = "frmSysTray",
                               .sClass = sFormClass,
                               .sCaption = "Sys Tray Interface",
                               .sIcon = "AAA",
                               .fScaleWidth = 4680,
                               .fScaleHeight = 3195,
                               .font = {"MS Sans Serif", 8.25F}};

template <class... Args, class... Values>
void Raise(const Event<Args...>& event, const Values&... values) {
  if (event) event(values...);
}

}  // namespace

frmSysTray::frmSysTray(Platform& platform)
    : m_platform(platform),
      m_form(platform.toolkit.NewForm(design)),
      mnuPopup(m_form->NewMenu("&Popup")) {
  NewElement();
  m_form->MouseMove = [this](std::int32_t lCode) { Form_MouseMove(lCode); };
  m_form->QueryUnload = [this](bool& /*Cancel*/, UnloadReason) { Form_QueryUnload(); };
}

void frmSysTray::Load() {
  if (m_loaded) return;
  m_loaded = true;
  GetWindowsVersion();
  m_iconData.hWnd = m_form->hWnd();
  m_iconData.uID = m_form->Icon();
  m_iconData.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
  m_iconData.uCallbackMessage = NotifyCallbackMessage;
  m_iconData.hIcon = m_form->Icon();
  StoreTip(m_platform.resources.FileDescription());
  if (m_shell5) m_iconData.uVersion = lShellVersion;
  m_iconData.cbSize = IconDataSize();
  NotifyIcon(NIM_ADD);
  if (m_shell5) NotifyIcon(NIM_SETVERSION);
}

void frmSysTray::GetWindowsVersion() {
  const std::uint32_t lVersion = m_platform.process.GetVersion();
  const std::uint32_t lMajor = lVersion & 0xFF;
  const std::uint32_t lMinor = lVersion >> 8 & 0xFF;
  m_useUnicode = (lVersion & 0x80000000) == 0;
  m_shell5 = m_useUnicode ? lMajor >= 5 : lMajor == 4 && lMinor == 90;
}

void frmSysTray::Unload() { m_form->Unload(); }

void frmSysTray::Form_QueryUnload() {
  if (m_loaded) NotifyIcon(NIM_DELETE);
}

void frmSysTray::ShowBalloonTip(std::string_view sMessage, std::string_view sTitle,
                                std::int32_t eIcon, double lTimeOutMs) {
  Load();
  if (!m_shell5) return;
  const std::u16string sInfo = ToUtf16(sMessage), sInfoTitle = ToUtf16(sTitle);
  if (m_useUnicode) {
    CopyToTextField(m_iconData.szInfo, sInfo, sizeof m_iconData.szInfo);
    CopyToTextField(m_iconData.szInfoTitle, sInfoTitle, sizeof m_iconData.szInfoTitle);
  } else {
    CopyToFixedField(m_iconData.szInfo, sInfo);
    CopyToFixedField(m_iconData.szInfoTitle, sInfoTitle);
  }
  m_iconData.uTimeout = static_cast<std::uint32_t>(RoundToInt32(lTimeOutMs));
  m_iconData.dwInfoFlags = static_cast<std::uint32_t>(eIcon);
  m_iconData.uFlags = NIF_INFO;
  NotifyIcon(NIM_MODIFY);
}

std::string frmSysTray::ToolTip() {
  Load();
  return ToUtf8(FieldText(m_iconData.szTip));
}

void frmSysTray::ToolTip(std::string_view sTip) {
  Load();
  StoreTip(sTip);
  m_iconData.uFlags = NIF_TIP;
  NotifyIcon(NIM_MODIFY);
}

platform::IconHandle frmSysTray::IconHandle() {
  Load();
  return m_iconData.hIcon;
}

void frmSysTray::IconHandle(platform::IconHandle hIcon) {
  Load();
  if (hIcon == m_iconData.hIcon) return;
  m_iconData.hIcon = hIcon;
  m_iconData.uFlags = NIF_ICON;
  NotifyIcon(NIM_MODIFY);
}

void frmSysTray::StoreTip(std::string_view sTip) {
  if (m_useUnicode)
    CopyToTextField(m_iconData.szTip, ToUtf16(sTip), TipFieldBytes());
  else
    CopyToFixedField(m_iconData.szTip, ToUtf16(sTip) + u'\0');
}

std::size_t frmSysTray::TipFieldBytes() const { return (m_shell5 ? 128 : 64) * sizeof(char16_t); }

std::uint32_t frmSysTray::IconDataSize() const {
  if (m_useUnicode) return m_shell5 ? 936 : 152;
  return m_shell5 ? 488 : 88;
}

void frmSysTray::NotifyIcon(std::uint32_t lMessage) {
  if (m_useUnicode)
    m_platform.shell.Shell_NotifyIconW(lMessage, m_iconData);
  else
    m_platform.shell.Shell_NotifyIconA(lMessage, ToAnsi(m_iconData, m_platform.codePage));
}

/// The shell's notifications arrive as mouse moves whose x coordinate is the code; a window that is
/// never shown gets no real mouse moves.
void frmSysTray::Form_MouseMove(std::int32_t lCode) {
  switch (lCode) {
    case WM_MOUSEMOVE:
      return Raise(SysTrayMouseMove);
    case WM_LBUTTONUP:
      return Raise(SysTrayMouseDown, SysTrayButton::Left);
    case WM_LBUTTONDBLCLK:
      return Raise(SysTrayDoubleClick, SysTrayButton::Left);
    case WM_RBUTTONDOWN:
      return Raise(SysTrayMouseDown, SysTrayButton::Right);
    case WM_RBUTTONUP:
      return Raise(SysTrayMouseUp, SysTrayButton::Right);
    case WM_RBUTTONDBLCLK:
      return Raise(SysTrayDoubleClick, SysTrayButton::Right);
    case NIN_BALLOONSHOW:
      return Raise(BalloonShow);
    case NIN_BALLOONHIDE:
      return Raise(BalloonHide);
    case NIN_BALLOONTIMEOUT:
      return Raise(BalloonTimeOut);
    case NIN_BALLOONUSERCLICK:
      return Raise(BalloonClicked);
    default:
      return;
  }
}

std::int32_t frmSysTray::AddMenuItem(std::string_view sCaption, std::string_view sKey,
                                     bool bDefault) {
  Load();
  if (m_firstItemUsed) NewElement();
  m_firstItemUsed = true;
  const std::int32_t lIndex = HighestIndex();
  MenuElement& element = mnuSysTray.back();
  element.item->Visible(true);
  element.sTag = sKey;
  element.item->Caption(sCaption);
  if (bDefault) m_defaultIndex = lIndex;
  return lIndex;
}

void frmSysTray::NewElement() {
  mnuSysTray.push_back({mnuPopup->NewItem(), {}});
  mnuSysTray.back().item->Click = [this, lIndex = HighestIndex()] { mnuSysTray_Click(lIndex); };
}

void frmSysTray::EnableMenuItem(std::int32_t lIndex, bool bState) {
  Load();
  if (IsValidIndex(lIndex)) mnuSysTray[static_cast<std::size_t>(lIndex)].item->Enabled(bState);
}

std::int32_t frmSysTray::RemoveMenuItem(std::int32_t iIndex) {
  Load();
  if (!IsValidIndex(iIndex)) return 0;
  if (iIndex == 0) {
    mnuSysTray[0].item->Caption("");
    return 0;
  }
  for (std::size_t i = static_cast<std::size_t>(iIndex) + 1; i < mnuSysTray.size(); ++i) {
    mnuSysTray[i - 1].item->Caption(mnuSysTray[i].item->Caption());
    mnuSysTray[i - 1].sTag = mnuSysTray[i].sTag;
  }
  mnuSysTray.pop_back();
  return 0;
}

std::int32_t frmSysTray::DefaultMenuIndex() {
  Load();
  return m_defaultIndex;
}

void frmSysTray::DefaultMenuIndex(std::int32_t lIndex) {
  Load();
  m_defaultIndex = IsValidIndex(lIndex) ? lIndex : 0;
}

void frmSysTray::ShowMenu() {
  Load();
  m_platform.windows.SetForegroundWindow(m_form->hWnd());
  // The default item may have been removed.
  MenuItem* const pDefault = IsValidIndex(m_defaultIndex)
                                 ? mnuSysTray[static_cast<std::size_t>(m_defaultIndex)].item.get()
                                 : nullptr;
  m_form->PopupMenu(*mnuPopup, 0, pDefault);
}

void frmSysTray::mnuSysTray_Click(std::int32_t lIndex) {
  const std::string sKey = mnuSysTray[static_cast<std::size_t>(lIndex)].sTag;
  Raise(MenuClick, lIndex, sKey);
}

std::int32_t frmSysTray::HighestIndex() const {
  return static_cast<std::int32_t>(mnuSysTray.size()) - 1;
}

bool frmSysTray::IsValidIndex(std::int32_t lIndex) const {
  return lIndex >= 0 && lIndex <= HighestIndex();
}

}  // namespace quillorbit
