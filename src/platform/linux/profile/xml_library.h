#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

struct _xmlDoc;  // libxml2's xmlDoc

namespace quillorbit::linux_adapter {

struct XmlDocDeleter {
  void operator()(_xmlDoc* pDoc) const;
};
using XmlDocPointer = std::unique_ptr<_xmlDoc, XmlDocDeleter>;

/// Silences libxml2 and libxslt, and closes files and network to stylesheets, for this process.
void InitXmlLibraries();

/// The most bytes of XML that are taken: libxml2's own limit for one text. It bounds the time and
/// memory that a file can cost; a profile has about a thousand bytes.
inline constexpr std::size_t nXmlLimit = 10'000'000;

enum class XmlEncoding {
  declared,  ///< what the declaration or the byte order mark says
  utf8,      ///< UTF-8, whatever these say
};

/// Null when the text is not well formed, too long or has a DOCTYPE. Nothing else is read.
[[nodiscard]] XmlDocPointer ParseXml(std::string_view sXml, XmlEncoding eEncoding);

/// The document's text in the encoding that it declares, or in UTF-8. Empty when that fails.
[[nodiscard]] std::string SerializeXml(_xmlDoc& document);

/// What the XSLT 1.0 stylesheet makes of the document, UTF-8. Throws std::runtime_error when the
/// stylesheet is none or fails.
[[nodiscard]] std::string TransformXml(_xmlDoc& document, const _xmlDoc& stylesheet);

}  // namespace quillorbit::linux_adapter
