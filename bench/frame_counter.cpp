#include "frame_counter.h"

#include <cstdlib>
#include <stdexcept>

#include <xcb/damage.h>

namespace quillorbit::bench {
namespace {

constexpr int nLeastHeight = 200;  // pixels; the lamps and labels below the view are lower

}  // namespace

void FrameCounter::Watch(std::uint32_t nWindow) {
  m_connection.reset(xcb_connect(nullptr, nullptr));
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

void FrameCounter::Count() {
  if (!m_connection) return;
  while (auto* pEvent = xcb_poll_for_event(m_connection.get())) {
    const bool bDamage = (pEvent->response_type & 0x7F) == m_nFirstEvent + XCB_DAMAGE_NOTIFY;
    if (bDamage && reinterpret_cast<xcb_damage_notify_event_t*>(pEvent)->area.height > nLeastHeight)
      ++m_nFrames;
    free(pEvent);
  }
}

}  // namespace quillorbit::bench
