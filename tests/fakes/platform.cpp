#include "fakes/platform.h"

namespace quillorbit::fakes {

FakePlatform::FakePlatform() = default;
FakePlatform::~FakePlatform() = default;

void FakePlatform::StoreProfile(const std::vector<std::pair<std::string, std::string>>& elements,
                                const std::string& sRoot) {
  auto root = std::make_shared<XmlTree>(XmlTree{sRoot, {}, {}});
  for (const auto& [sName, sText] : elements)
    root->children.push_back(std::make_shared<XmlTree>(XmlTree{sName, sText, {}}));
  xml.store.files[sProfile] = std::make_shared<XmlTree>(XmlTree{{}, {}, {root}});
}

std::string FakePlatform::StoredElement(const std::string& sName) {
  for (const auto& element : xml.store.files.at(sProfile)->children.at(0)->children)
    if (element->sName == sName) return element->sText;
  return "(missing)";
}

}  // namespace quillorbit::fakes
