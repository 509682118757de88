#include "base/Trace.h"

namespace quillorbit {

void Trace(std::string_view /*sText*/) {}

}  // namespace quillorbit
