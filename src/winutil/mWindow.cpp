#include "winutil/mWindow.h"

namespace quillorbit {

void EnumerateWindows(IEnumWindowsSink& /*sink*/) {}

}  // namespace quillorbit
