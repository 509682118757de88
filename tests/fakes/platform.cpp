#include "fakes/platform.h"

namespace quillorbit::fakes {

FakePlatform::FakePlatform() { xml.store.texts["the stylesheet"] = std::make_shared<XmlTree>(); }

FakePlatform::~FakePlatform() = default;

}  // namespace quillorbit::fakes
