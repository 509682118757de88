#include "platform/linux/window/toolkit.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

#include <sys/signalfd.h>

#include <QMessageBox>
#include <QPushButton>

#include "platform/linux/window/display_loss.h"
#include "platform/linux/window/form.h"
#include "platform/linux/window/title.h"
#include "platform/linux/window/units.h"
#include "platform/top_level_windows.h"

namespace quillorbit::linux_adapter {
namespace {

sigset_t EndingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&set, signal);
  return set;
}

/// Sets up the process before the toolkit is created, and connects to the display where that is an
/// X server.
DisplayConnection Prepare() {
  // Blocked here, they are blocked in every thread that the toolkit starts, and only signalfd()
  // takes them.
  const sigset_t endingSignals = EndingSignals();
  sigprocmask(SIG_BLOCK, &endingSignals, nullptr);

  // Windows of other programs, and this program's own for them, are X11's, also under Wayland.
  setenv("QT_QPA_PLATFORM", "xcb", 0);
  // Qt's own event loop answers a socket sooner than the one on glib.
  setenv("QT_NO_GLIB", "1", 0);
  if (std::string(getenv("QT_QPA_PLATFORM")) != "xcb") return nullptr;

  if (DisplayConnection connection = ConnectDisplay()) {
    ForestallExitOfToolkit();
    return connection;
  }
  const char* sDisplay = getenv("DISPLAY");
  throw std::runtime_error(sDisplay == nullptr
                               ? "there is no display to open a window on (DISPLAY is not set)"
                               : "the display \"" + std::string(sDisplay) + "\" cannot be opened");
}

}  // namespace

LinuxToolkit::LinuxToolkit(int& argc, char** argv, LinuxResources& resources)
    : m_resources(resources),
      m_firstConnection(Prepare()),
      m_application(argc, argv),
      m_windowCommands([this](platform::WindowHandle hWnd, WindowCommand eCommand) {
        if (LinuxForm* const pForm = FormOf(hWnd)) pForm->Obey(eCommand);
      }) {
  // Not before the toolkit is connected: a server that loses its last client starts afresh, and
  // those who connect meanwhile fail.
  m_firstConnection.reset();
  QApplication::setQuitOnLastWindowClosed(false);
  // The panel's row has the designed height; the desktop's own style could need more.
  QApplication::setStyle("Fusion");
  ConnectSignals();
  // A session manager's end closes the visible windows and quits.
  QObject::connect(&m_application, &QCoreApplication::aboutToQuit, &m_application,
                   [this] { EndOfSession(); });
}

LinuxToolkit::~LinuxToolkit() = default;

void LinuxToolkit::ConnectSignals() {
  const sigset_t set = EndingSignals();
  m_signals = FileDescriptor(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!m_signals.IsOpen()) throw std::system_error(errno, std::generic_category(), "signalfd");
  m_signalNotifier = std::make_unique<QSocketNotifier>(m_signals.Get(), QSocketNotifier::Read);
  QObject::connect(m_signalNotifier.get(), &QSocketNotifier::activated, m_signalNotifier.get(),
                   [this] {
                     signalfd_siginfo info;
                     while (read(m_signals.Get(), &info, sizeof info) == sizeof info) continue;
                     EndOfSession();
                   });
}

void LinuxToolkit::EndOfSession() {
  const std::set<LinuxForm*> forms = m_loadedForms;  // each leaves the set as it unloads
  for (LinuxForm* pForm : forms) pForm->RequestUnload(platform::UnloadReason::AppWindows);
  End();
}

std::unique_ptr<platform::Form> LinuxToolkit::NewForm(const platform::FormDesign& design) {
  const platform::IconHandle hIcon =
      design.sIcon == nullptr
          ? 0
          : m_resources.LoadImageA(0, design.sIcon, platform::IMAGE_ICON,
                                   m_resources.GetSystemMetrics(platform::SM_CXSMICON),
                                   m_resources.GetSystemMetrics(platform::SM_CYSMICON),
                                   platform::LR_SHARED);
  auto form = std::make_unique<LinuxForm>(design, hIcon, [this](LinuxForm& unloaded) {
    m_loadedForms.erase(&unloaded);
    if (m_loadedForms.empty()) End();
  });
  m_loadedForms.insert(form.get());
  return form;
}

QWidget* LinuxToolkit::BoxOwner() const {
  if (QWidget* const pActive = QApplication::activeWindow()) return pActive;
  for (const LinuxForm* const pForm : m_loadedForms)
    if (pForm->Visible()) return QWidget::find(pForm->hWnd());
  return nullptr;
}

platform::MsgBoxAnswer LinuxToolkit::MsgBox(std::string_view sPrompt, std::uint32_t lFlags,
                                            std::string_view sTitle) {
  const bool bChoice = (lFlags & platform::MB_YESNO) != 0;
  QMessageBox box(BoxOwner());
  box.setWindowModality(Qt::WindowModal);  // the tray keeps working
  box.setTextFormat(Qt::PlainText);        // the text may come from a profile
  box.setText(ToQString(sPrompt));
  SetTitle(box, sTitle);
  box.setIcon((lFlags & platform::MB_ICONQUESTION) != 0 ? QMessageBox::Question
                                                        : QMessageBox::Information);
  if (bChoice) {
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::Yes);
    box.setEscapeButton(QMessageBox::No);
  }
  const int iButton = box.exec();
  if (!bChoice) return platform::IDOK;
  return iButton == QMessageBox::Yes ? platform::IDYES : platform::IDNO;
}

LinuxForm* LinuxToolkit::FormOf(platform::WindowHandle hWnd) const {
  for (LinuxForm* const pForm : m_loadedForms)
    if (pForm->hWnd() == hWnd) return pForm;
  return nullptr;
}

void LinuxToolkit::SetIcon(platform::WindowHandle hWnd, std::uint32_t lKind,
                           platform::IconHandle hIcon) {
  LinuxForm* const pForm = FormOf(hWnd);
  if (pForm == nullptr) return;
  const QPixmap image = QPixmap::fromImage(m_resources.Image(hIcon));
  if (lKind == platform::ICON_BIG)
    pForm->SetLargeIcon(image);
  else
    pForm->SetSmallIcon(image);
}

void LinuxToolkit::Beep() { QApplication::beep(); }

int LinuxToolkit::Run() {
  // The program may have been ended before the loop began.
  return m_bEnded || m_loadedForms.empty() ? 0 : QApplication::exec();
}

void LinuxToolkit::End() {
  m_bEnded = true;
  QApplication::exit(0);
}

}  // namespace quillorbit::linux_adapter
