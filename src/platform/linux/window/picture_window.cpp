#include "platform/linux/window/picture_window.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <stdexcept>

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <xcb/shm.h>

#include "platform/linux/desktop/x11.h"
#include "platform/linux/process/file_descriptor.h"

namespace quillorbit::linux_adapter {
namespace {

/// File descriptors, and so the memory behind them, go through no other socket.
bool IsLocal(xcb_connection_t* pConnection) {
  sockaddr_storage address{};
  socklen_t nSize = sizeof address;
  return getsockname(xcb_get_file_descriptor(pConnection), reinterpret_cast<sockaddr*>(&address),
                     &nSize) == 0 &&
         address.ss_family == AF_UNIX;
}

const xcb_visualtype_t* FindVisual(const xcb_setup_t* pSetup, xcb_visualid_t visual) {
  for (auto screen = xcb_setup_roots_iterator(pSetup); screen.rem > 0; xcb_screen_next(&screen))
    for (auto depth = xcb_screen_allowed_depths_iterator(screen.data); depth.rem > 0;
         xcb_depth_next(&depth))
      for (auto type = xcb_depth_visuals_iterator(depth.data); type.rem > 0;
           xcb_visualtype_next(&type))
        if (type.data->visual_id == visual) return type.data;
  return nullptr;
}

}  // namespace

/// A picture in memory, and the pixmap that the server has of it.
class PictureWindow::Buffer {
 public:
  Buffer(PictureWindow& owner, QSize size) : m_owner(owner), m_pixmap(xcb_generate_id(Server())) {
    m_nBytes = std::size_t{4} * static_cast<std::size_t>(size.width()) *
               static_cast<std::size_t>(size.height());
    if (owner.m_bSharedMemory) Share();
    picture = m_pShared == nullptr ? QImage(size, QImage::Format_RGB32)
                                   : QImage(static_cast<uchar*>(m_pShared), size.width(),
                                            size.height(), QImage::Format_RGB32);
    const auto nWidth = static_cast<std::uint16_t>(size.width());
    const auto nHeight = static_cast<std::uint16_t>(size.height());
    if (m_pShared != nullptr && owner.m_bSharedPixmaps &&
        x11::Succeeds(Server(),
                      xcb_shm_create_pixmap_checked(Server(), m_pixmap, owner.m_window, nWidth,
                                                    nHeight, owner.m_nDepth, m_segment, 0)))
      return;
    xcb_create_pixmap(Server(), owner.m_nDepth, m_pixmap, owner.m_window, nWidth, nHeight);
    m_context = xcb_generate_id(Server());
    xcb_create_gc(Server(), m_context, m_pixmap, 0, nullptr);
  }
  ~Buffer() {
    if (m_context != 0) xcb_free_gc(Server(), m_context);
    xcb_free_pixmap(Server(), m_pixmap);
    if (m_pShared == nullptr) return;
    xcb_shm_detach(Server(), m_segment);
    munmap(m_pShared, m_nBytes);
  }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  /// The pixmap with the picture in it.
  [[nodiscard]] xcb_pixmap_t Pixmap() {
    const auto nWidth = static_cast<std::uint16_t>(picture.width());
    const auto nHeight = static_cast<std::uint16_t>(picture.height());
    if (m_context != 0 && m_pShared != nullptr)
      xcb_shm_put_image(Server(), m_pixmap, m_context, nWidth, nHeight, 0, 0, nWidth, nHeight, 0, 0,
                        m_owner.m_nDepth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0, m_segment, 0);
    else if (m_context != 0)
      Send();
    return m_pixmap;
  }

  QImage picture;

 private:
  [[nodiscard]] xcb_connection_t* Server() const { return m_owner.m_connection.get(); }

  /// Without the memory or the server's access to it, the picture is sent.
  void Share() {
    FileDescriptor file(memfd_create("quillorbit picture", MFD_CLOEXEC));
    if (!file.IsOpen() || ftruncate(file.Get(), static_cast<off_t>(m_nBytes)) != 0) return;
    void* const pShared =
        mmap(nullptr, m_nBytes, PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
    if (pShared == MAP_FAILED) return;
    m_segment = xcb_generate_id(Server());
    const auto attached = xcb_shm_attach_fd_checked(Server(), m_segment, file.Release(), 0);
    if (x11::Succeeds(Server(), attached))
      m_pShared = pShared;
    else
      munmap(pShared, m_nBytes);
  }

  /// In as many rows at a time as a request can hold.
  void Send() {
    const auto nBytesPerLine = static_cast<std::size_t>(picture.bytesPerLine());
    const std::size_t nMost = 4 * std::size_t{xcb_get_maximum_request_length(Server())} - 64;
    const int nRows = static_cast<int>(std::max<std::size_t>(1, nMost / nBytesPerLine));
    for (int y = 0; y < picture.height(); y += nRows) {
      const int nHeight = std::min(nRows, picture.height() - y);
      xcb_put_image(Server(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_pixmap, m_context,
                    static_cast<std::uint16_t>(picture.width()),
                    static_cast<std::uint16_t>(nHeight), 0, static_cast<std::int16_t>(y), 0,
                    m_owner.m_nDepth,
                    static_cast<std::uint32_t>(nBytesPerLine) * static_cast<std::uint32_t>(nHeight),
                    picture.constScanLine(y));
    }
  }

  PictureWindow& m_owner;
  std::size_t m_nBytes = 0;
  void* m_pShared = nullptr;
  xcb_shm_seg_t m_segment = 0;
  const xcb_pixmap_t m_pixmap;
  xcb_gcontext_t m_context = 0;  ///< where the picture has to be put into the pixmap
};

PictureWindow::PictureWindow(xcb_window_t frame)
    : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect), m_frame(frame) {
  FindDepth();
  FindSharedMemory();
  m_window = xcb_generate_id(m_connection.get());
  xcb_create_window(m_connection.get(), XCB_COPY_FROM_PARENT, m_window, m_frame, 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
}

PictureWindow::~PictureWindow() = default;

void PictureWindow::FindDepth() {
  xcb_connection_t* const pServer = m_connection.get();
  const auto geometryRequest = xcb_get_geometry(pServer, m_frame);
  const auto attributesRequest = xcb_get_window_attributes(pServer, m_frame);
  const x11::Reply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(pServer, geometryRequest, nullptr));
  const x11::Reply<xcb_get_window_attributes_reply_t> attributes(
      xcb_get_window_attributes_reply(pServer, attributesRequest, nullptr));
  if (!geometry || !attributes) throw std::runtime_error("the window is gone");
  m_nDepth = geometry->depth;

  const xcb_setup_t* const pSetup = xcb_get_setup(pServer);
  const xcb_visualtype_t* const pVisual = FindVisual(pSetup, attributes->visual);
  const std::span formats(xcb_setup_pixmap_formats(pSetup),
                          static_cast<std::size_t>(xcb_setup_pixmap_formats_length(pSetup)));
  const bool b32Bits = std::ranges::any_of(formats, [&](const xcb_format_t& format) {
    return format.depth == m_nDepth && format.bits_per_pixel == 32 && format.scanline_pad == 32;
  });
  if (pVisual == nullptr || !b32Bits || pSetup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST ||
      pVisual->red_mask != 0xFF0000 || pVisual->green_mask != 0xFF00 || pVisual->blue_mask != 0xFF)
    throw std::runtime_error("the window has pixels of another form");
}

void PictureWindow::FindSharedMemory() {
  xcb_connection_t* const pServer = m_connection.get();
  const auto* const pExtension = xcb_get_extension_data(pServer, &xcb_shm_id);
  if (pExtension == nullptr || pExtension->present == 0 || !IsLocal(pServer)) return;
  const x11::Reply<xcb_shm_query_version_reply_t> version(
      xcb_shm_query_version_reply(pServer, xcb_shm_query_version(pServer), nullptr));
  // File descriptors came with 1.2.
  m_bSharedMemory = version && (version->major_version > 1 || version->minor_version >= 2);
  m_bSharedPixmaps = m_bSharedMemory && version->shared_pixmaps != 0;
}

bool PictureWindow::IsOpen() const { return xcb_connection_has_error(m_connection.get()) == 0; }

QImage& PictureWindow::Next(QSize size) {
  xcb_connection_t* const pServer = m_connection.get();
  if (m_bWaiting)
    x11::Reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus_reply(pServer, m_shown, nullptr));
  m_bWaiting = false;
  // What is reported of a window whose frame is gone meanwhile.
  while (auto* const pError = xcb_poll_for_event(pServer)) std::free(pError);
  auto& next = m_buffers[m_iNext];
  if (!next || next->picture.size() != size) {
    next.reset();
    next = std::make_unique<Buffer>(*this, size);
  }
  return next->picture;
}

void PictureWindow::Show() {
  xcb_connection_t* const pServer = m_connection.get();
  Buffer& buffer = *m_buffers[m_iNext];
  const std::uint32_t background = buffer.Pixmap();
  xcb_change_window_attributes(pServer, m_window, XCB_CW_BACK_PIXMAP, &background);
  const auto& other = m_buffers[1 - m_iNext];
  if (other && other->picture.size() == buffer.picture.size()) {
    xcb_clear_area(pServer, 0, m_window, 0, 0, 0, 0);
  } else {
    // What the new size exposes is painted with the background; what stays is not.
    const std::array size = {static_cast<std::uint32_t>(buffer.picture.width()),
                             static_cast<std::uint32_t>(buffer.picture.height())};
    xcb_configure_window(pServer, m_window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size.data());
    xcb_clear_area(pServer, 0, m_window, 0, 0, 0, 0);
    xcb_map_window(pServer, m_window);
  }
  m_shown = xcb_get_input_focus(pServer);
  m_bWaiting = true;
  xcb_flush(pServer);
  m_iNext = 1 - m_iNext;
}

}  // namespace quillorbit::linux_adapter
