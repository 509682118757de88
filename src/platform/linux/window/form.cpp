#include "platform/linux/window/form.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <QCloseEvent>
#include <QWindow>

#include "platform/linux/desktop/x11.h"
#include "platform/linux/window/menu.h"
#include "platform/linux/window/timer.h"
#include "platform/linux/window/title.h"

namespace quillorbit::linux_adapter {
namespace {

/// The widgets that take the focus by Tab, hidden ones included, in the order of their controls'
/// tab indexes.
std::vector<QWidget*> TabStops(const QWidget& window) {
  std::vector<QWidget*> stops;
  for (QWidget* pChild : window.findChildren<QWidget*>()) {
    if (pChild->property(sTabIndexProperty).isValid() && (pChild->focusPolicy() & Qt::TabFocus))
      stops.push_back(pChild);
  }
  std::sort(stops.begin(), stops.end(), [](const QWidget* a, const QWidget* b) {
    return a->property(sTabIndexProperty).toInt() < b->property(sTabIndexProperty).toInt();
  });
  return stops;
}

}  // namespace

/// The widget, which raises the form's events.
class LinuxForm::Window final : public QWidget {
 public:
  explicit Window(LinuxForm& owner) : m_owner(owner) {}

  /// The window manager's frame is known once the window is on the screen, or earlier if the window
  /// manager answers the request for it. Until then the outer size counts as the client area's.
  void SetOuterWidth(int nWidth) { SetOuterSize({nWidth, OuterSize().height()}); }
  void SetOuterHeight(int nHeight) { SetOuterSize({OuterSize().width(), nHeight}); }

 private:
  [[nodiscard]] QSize OuterSize() const {
    return m_outerSize.value_or(size().grownBy(FrameMargins()));
  }

  void SetOuterSize(QSize outer) {
    if (!isVisible()) AskForFrame();
    m_outerSize = outer;
    resize(outer.shrunkBy(FrameMargins()));
    if (!isVisible()) RaiseResize();  // the toolkit would report it when it is shown
  }

  [[nodiscard]] QMargins FrameMargins() const {
    const QMargins margins = windowHandle()->frameMargins();
    return margins.isNull() ? m_frameToCome : margins;
  }

  void AskForFrame() {
    xcb_connection_t* const pConnection = x11::ToolkitConnection();
    if (pConnection == nullptr || m_bFrameAskedFor) return;
    m_bFrameAskedFor = true;
    const auto window = static_cast<xcb_window_t>(winId());
    const auto frame = x11::RequestFrameExtents(pConnection, window);
    if (!frame) return;
    const auto toPixels = [&](std::uint32_t n) { return qRound(n / devicePixelRatioF()); };
    m_frameToCome = {toPixels(frame->left), toPixels(frame->top), toPixels(frame->right),
                     toPixels(frame->bottom)};
  }

  /// Subtracts the frame from the requested size, once the frame is known.
  void FitFrame() {
    if (!m_outerSize || !isVisible() || windowHandle()->frameMargins().isNull()) return;
    const QSize client = std::exchange(m_outerSize, std::nullopt)->shrunkBy(FrameMargins());
    if (!isMaximized() && !isFullScreen()) resize(client);
  }

  /// Raises Paint when the window system has exposed the form, even where controls cover all of it,
  /// and not from a paint event: the handler may draw.
  bool eventFilter(QObject* pObject, QEvent* pEvent) override {
    const bool bExposed = pObject == windowHandle() && pEvent->type() == QEvent::Expose &&
                          windowHandle()->isExposed();
    if (bExposed && !m_owner.m_bUnloaded && m_owner.Paint) m_owner.Paint();
    return QWidget::eventFilter(pObject, pEvent);
  }

  bool event(QEvent* pEvent) override {
    const bool bHandled = QWidget::event(pEvent);
    switch (pEvent->type()) {
      case QEvent::Move:
      case QEvent::Resize:
      case QEvent::WindowActivate:
        FitFrame();
        break;
      default:
        break;
    }
    return bHandled;
  }

  void resizeEvent(QResizeEvent*) override { RaiseResize(); }

  void changeEvent(QEvent* pEvent) override {
    QWidget::changeEvent(pEvent);
    if (pEvent->type() == QEvent::WindowStateChange) RaiseResize();
  }

  /// The window manager's close command comes from outside; a close from inside is the session's.
  void closeEvent(QCloseEvent* pEvent) override {
    m_owner.RequestUnload(pEvent->spontaneous() ? platform::UnloadReason::ControlMenu
                                                : platform::UnloadReason::AppWindows);
    pEvent->setAccepted(m_owner.m_bUnloaded);
  }

  void RaiseResize() {
    if (m_owner.m_bUnloaded) return;
    DockChildren(*this);
    if (m_owner.Resize) m_owner.Resize();
  }

  LinuxForm& m_owner;
  std::optional<QSize> m_outerSize;  ///< wanted, until the frame has been taken off
  QMargins m_frameToCome;            ///< as the window manager has announced it
  bool m_bFrameAskedFor = false;
};

LinuxForm::LinuxForm(const platform::FormDesign& design, platform::IconHandle hIcon,
                     std::function<void(LinuxForm&)> onUnloaded)
    : m_window(std::make_unique<Window>(*this)),
      m_hIcon(hIcon),
      m_onUnloaded(std::move(onUnloaded)) {
  m_window->setObjectName(ToQString(design.sName));
  Caption(design.sCaption);
  m_window->setFont(ToQFont(design.font));
  m_window->resize(ToPixels(design.fScaleWidth), ToPixels(design.fScaleHeight));
  MarkWindow(hWnd(), design.sClass);
  m_window->windowHandle()->installEventFilter(m_window.get());
}

LinuxForm::~LinuxForm() { m_bUnloaded = true; }

platform::WindowHandle LinuxForm::hWnd() const {
  return static_cast<platform::WindowHandle>(m_window->winId());
}

void LinuxForm::Caption(std::string_view sCaption) {
  m_sCaption = sCaption;
  SetTitle(*m_window, sCaption);
}

bool LinuxForm::Visible() const { return m_window->isVisible(); }

void LinuxForm::Show() {
  if (m_bUnloaded) return;
  const std::vector<QWidget*> stops = TabStops(*m_window);
  for (std::size_t i = 1; i < stops.size(); ++i) QWidget::setTabOrder(stops[i - 1], stops[i]);
  if (m_window->focusWidget() == nullptr) {
    const auto first =
        std::ranges::find_if(stops, [&](QWidget* p) { return p->isVisibleTo(m_window.get()); });
    if (first != stops.end()) (*first)->setFocus();
  }
  m_window->show();
  x11::Flush();  // it comes up while its first picture is drawn
  // The window manager decides how a program's first window comes up.
  if (std::exchange(m_bShownBefore, true)) BringToFront();
}

void LinuxForm::BringToFront() {
  if (!m_window->isVisible()) return;
  m_window->raise();
  m_window->activateWindow();
  ActivateWindow(hWnd());
}

void LinuxForm::Obey(WindowCommand eCommand) {
  if (m_bUnloaded) return;
  switch (eCommand) {
    case WindowCommand::Restore:
      return WindowState(platform::WindowState::Normal);
    case WindowCommand::Show:
      return Show();
    case WindowCommand::Foreground:
      return BringToFront();
  }
}

void LinuxForm::SetLargeIcon(const QPixmap& image) {
  m_largeIcon = image;
  ShowIcons();
}

void LinuxForm::SetSmallIcon(const QPixmap& image) {
  m_smallIcon = image;
  ShowIcons();
}

void LinuxForm::ShowIcons() {
  QIcon icon;
  for (const QPixmap& image : {m_smallIcon, m_largeIcon})
    if (!image.isNull()) icon.addPixmap(image);
  m_window->setWindowIcon(icon);
}

void LinuxForm::Hide() { m_window->hide(); }

platform::WindowState LinuxForm::WindowState() const {
  if (m_window->isMinimized()) return platform::WindowState::Minimized;
  return m_window->isMaximized() ? platform::WindowState::Maximized : platform::WindowState::Normal;
}

void LinuxForm::WindowState(platform::WindowState eState) {
  switch (eState) {
    case platform::WindowState::Normal:
      return m_window->setWindowState(Qt::WindowNoState);
    case platform::WindowState::Minimized:
      return m_window->setWindowState(Qt::WindowMinimized);
    case platform::WindowState::Maximized:
      return m_window->setWindowState(Qt::WindowMaximized);
  }
}

void LinuxForm::Width(float fWidth) { m_window->SetOuterWidth(ToPixels(fWidth)); }

void LinuxForm::Height(float fHeight) { m_window->SetOuterHeight(ToPixels(fHeight)); }

float LinuxForm::ScaleWidth() const { return ToTwips(m_window->width()); }

float LinuxForm::ScaleHeight() const { return ToTwips(m_window->height()); }

std::unique_ptr<platform::Timer> LinuxForm::NewTimer(int iInterval, bool bEnabled) {
  return std::make_unique<LinuxTimer>(m_bUnloaded, iInterval, bEnabled);
}

std::unique_ptr<platform::Menu> LinuxForm::NewMenu(std::string_view sCaption) {
  auto menu = std::make_unique<LinuxMenu>(sCaption);
  m_menu = menu->Widget();
  return menu;
}

void LinuxForm::PopupMenu(platform::Menu& menu, std::uint32_t /*lFlags*/,
                          platform::MenuItem* pDefaultItem) {
  if (!m_bUnloaded) static_cast<LinuxMenu&>(menu).Popup(pDefaultItem);
}

void LinuxForm::RequestUnload(platform::UnloadReason eReason) {
  if (m_bUnloaded) return;
  bool bCancel = false;
  if (QueryUnload) QueryUnload(bCancel, eReason);
  // The question may have waited for an answer, and the form been unloaded meanwhile.
  if (bCancel || m_bUnloaded) return;
  m_bUnloaded = true;
  if (Unloaded) Unloaded();
  m_window->setEnabled(false);  // its controls raise nothing more
  m_window->hide();
  m_onUnloaded(*this);
}

QWidget* LinuxForm::ContainerWidget() { return m_window.get(); }

}  // namespace quillorbit::linux_adapter
