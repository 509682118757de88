#pragma once

#include <chrono>

#include "platform/linux/process/file_writer.h"
#include "platform/xml_document.h"

namespace quillorbit::linux_adapter {

/// XML by libxml2 and libxslt.
///
/// Beyond the interface's contract:
/// - Nodes stay valid for as long as anybody holds them.
/// - A file or text of more than 1 MiB is not well formed, and no larger file is saved.
/// - load() says on the standard error why it refuses a file that is there and not empty; save()
///   keeps such a file beside the new one, as NAME.refused (whole_file.h).
/// - save() leaves the rest to a thread once the disk has taken its first step, or has taken too
///   long for it (file_writer.h).
/// - A text given as UTF-8 declares UTF-8, whatever it says, and so does a document without a
///   declaration.
class LinuxXmlLibrary final : public platform::XmlLibrary {
 public:
  /// The stick stands still while save() waits for the disk, but at most so long.
  static constexpr std::chrono::milliseconds mostWait{4};

  explicit LinuxXmlLibrary(std::chrono::milliseconds mostSaveWait = mostWait);
  /// Finishes saving.
  ~LinuxXmlLibrary() override;
  /// Waits until everything that was saved is on the disk.
  void FinishSaving() { m_writer.Finish(); }
  /// The library has to outlive its documents.
  [[nodiscard]] std::unique_ptr<platform::DOMDocument> NewDOMDocument() override;

 private:
  FileWriter m_writer;
};

}  // namespace quillorbit::linux_adapter
