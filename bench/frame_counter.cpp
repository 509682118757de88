#include "frame_counter.h"

#include <cstdlib>
#include <stdexcept>

#include <sys/socket.h>

#include <xcb/damage.h>

namespace quillorbit::bench {
namespace {

constexpr int nLeastHeight = 200;        // pixels; the lamps and labels below the view are lower
constexpr std::uint8_t nMoreBit = 0x80;  // in an event's level: more rectangles of this drawing

}  // namespace

FrameCounter::FrameCounter() : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
  if (xcb_connection_has_error(m_connection.get())) throw std::runtime_error("no display");
}

/// A window's damage is that of the windows inside it too.
void FrameCounter::Watch(std::uint32_t nWindow) {
  xcb_connection_t* const pConnection = m_connection.get();
  const auto* pExtension = xcb_get_extension_data(pConnection, &xcb_damage_id);
  if (pExtension == nullptr || pExtension->present == 0)
    throw std::runtime_error("the X server has no DAMAGE extension");
  m_nFirstEvent = pExtension->first_event;
  free(xcb_damage_query_version_reply(pConnection, xcb_damage_query_version(pConnection, 1, 1),
                                      nullptr));
  xcb_damage_create(pConnection, xcb_generate_id(pConnection), nWindow,
                    XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
  xcb_flush(pConnection);
}

void FrameCounter::Restart() {
  Count();
  m_nFrames = 0;
}

void FrameCounter::Count() {
  while (auto* pEvent = xcb_poll_for_event(m_connection.get())) {
    if ((pEvent->response_type & 0x7F) == m_nFirstEvent + XCB_DAMAGE_NOTIFY) {
      const auto& damage = *reinterpret_cast<xcb_damage_notify_event_t*>(pEvent);
      m_bTall = m_bTall || damage.area.height > nLeastHeight;
      if ((damage.level & nMoreBit) == 0) {
        m_nFrames += m_bTall ? 1 : 0;
        m_bTall = false;
      }
    }
    free(pEvent);
  }
}

int FrameCounter::ServerProcess() const {
  ucred server{};
  socklen_t nLength = sizeof server;
  const int fd = xcb_get_file_descriptor(m_connection.get());
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &server, &nLength) != 0 || server.pid <= 0)
    throw std::runtime_error("the X server is not on this machine");
  return server.pid;
}

}  // namespace quillorbit::bench
