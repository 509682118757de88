#pragma once

#include "platform/xml_document.h"

namespace quillorbit::linux_adapter {

/// XML by libxml2 and libxslt. Nothing that these libraries have to say reaches standard error.
///
/// Beyond the interface's contract: nodes stay valid for as long as anybody holds them; an XML text
/// of more than ten million bytes is not well formed; a text given as UTF-8 declares UTF-8,
/// whatever stands in it, and so does a document without a declaration.
class LinuxXmlLibrary final : public platform::XmlLibrary {
 public:
  LinuxXmlLibrary();
  [[nodiscard]] std::unique_ptr<platform::DOMDocument> NewDOMDocument() override;
};

}  // namespace quillorbit::linux_adapter
