#pragma once

#include "platform/xml_document.h"

namespace quillorbit::linux_adapter {

/// XML by libxml2 and libxslt.
///
/// Beyond the interface's contract:
/// - Nodes stay valid for as long as anybody holds them.
/// - A file or text of more than 1 MiB is not well formed, and no larger file is saved.
/// - load() says on the standard error why it refuses a file that is there and not empty; save()
///   keeps such a file beside the new one, as NAME.refused (whole_file.h).
/// - A text given as UTF-8 declares UTF-8, whatever it says, and so does a document without a
///   declaration.
class LinuxXmlLibrary final : public platform::XmlLibrary {
 public:
  LinuxXmlLibrary();
  [[nodiscard]] std::unique_ptr<platform::DOMDocument> NewDOMDocument() override;
};

}  // namespace quillorbit::linux_adapter
