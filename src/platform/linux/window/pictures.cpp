#include "platform/linux/window/pictures.h"

#include <exception>
#include <utility>

#include <QCoreApplication>
#include <QPainter>

namespace quillorbit::linux_adapter {

Pictures::Pictures(std::shared_ptr<PictureExchange> exchange) : m_exchange(std::move(exchange)) {
  const std::lock_guard lock(m_exchange->mutex);
  m_exchange->pMaker = this;
}

QImage& Pictures::Next(QSize size) {
  m_bDirect = HasWindow() && m_exchange->size.load() == size;
  if (m_bDirect) return m_window->Next(size);
  if (m_picture.size() != size) m_picture = QImage(size, QImage::Format_RGB32);
  return m_picture;
}

void Pictures::Show() {
  if (m_bDirect) return ShowInWindow();
  if (!m_window) return HandOver();
  QImage& stretched = m_window->Next(m_exchange->size);
  {
    QPainter painter(&stretched);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(stretched.rect(), m_picture);
  }
  ShowInWindow();
}

void Pictures::ShowInWindow() {
  m_window->Show();
  if (std::exchange(m_bInFrame, true)) return;
  const std::lock_guard lock(m_exchange->mutex);
  if (m_exchange->pSurface != nullptr)
    QCoreApplication::postEvent(m_exchange->pSurface, new QEvent(PictureExchange::inFrameEvent));
}

/// The first time it makes one, if that is possible.
bool Pictures::HasWindow() {
  if (!std::exchange(m_bWindowTried, true)) {
    try {
      if (const xcb_window_t frame = m_exchange->frame; frame != 0) m_window.emplace(frame);
    } catch (const std::exception&) {
      // The toolkit can show pictures on whatever display it has.
    }
  }
  if (m_window && !m_window->IsOpen()) m_window.reset();
  return m_window.has_value();
}

void Pictures::HandOver() {
  const std::lock_guard lock(m_exchange->mutex);
  if (m_exchange->pMaker != this || m_exchange->pSurface == nullptr) return;
  m_exchange->picture.swap(m_picture);
  if (!std::exchange(m_exchange->bCame, true))
    QCoreApplication::postEvent(m_exchange->pSurface, new QEvent(PictureExchange::toPaintEvent));
}

}  // namespace quillorbit::linux_adapter
