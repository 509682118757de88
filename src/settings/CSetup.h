#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/process.h"
#include "platform/resources.h"
#include "platform/xml_document.h"

namespace quillorbit {

/// The program's settings and user-visible texts, and the profile file that keeps them.
///
/// The profile is XML with the root "quillorbit_profile" and the elements "port", "samples",
/// "debug" and "msg0" to "msg12", in this order. By default it lies beside the program file and
/// has its name, with the extension ".setup".
class CSetup {
 public:
  /// Fills in the defaults.
  CSetup(platform::Process& process, platform::Resources& resources, platform::XmlLibrary& xml);

  std::int32_t Port = 5000;   ///< UDP port; not checked here
  std::int32_t Samples = 30;  ///< filter setting; 0 leaves X and Y unfiltered; not checked here
  bool DebugMode = false;     ///< whether the view shows its statistics

  /// A user-visible text by its index in the message table; empty for an index outside it.
  [[nodiscard]] std::string_view Msg(std::int16_t Index) const;

  /// Reads a profile, the default one when `file` is empty. False, with nothing changed, when it
  /// cannot be read or is not well formed. Settings that the profile lacks become their default;
  /// texts that it lacks stay as they are. Throws std::overflow_error when "port" or "samples" does
  /// not fit 32 bits; the elements before it are in force then.
  bool Load(const std::string& file = {});
  /// Writes the profile, the default one when `file` is empty. Returns true; throws when the
  /// profile cannot be made, or when it is known at once that it cannot be written. Whatever fails
  /// leaves the old file whole.
  bool Save(const std::string& file = {});

  /// Builds the profile into an empty document.
  void Serialize(platform::DOMDocument& Src) const;
  /// Takes the settings and texts out of a document; errors as for Load.
  void Deserialize(platform::IXMLDOMNode& Src);

 private:
  [[nodiscard]] std::string ProfilePath(const std::string& file) const;

  platform::Process& m_process;
  platform::XmlLibrary& m_xml;
  std::string IndentStylesheet;  ///< empty when the program file lacks it; then Save fails
  std::array<std::string, 13> MessageTexts;
};

}  // namespace quillorbit
