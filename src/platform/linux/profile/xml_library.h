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

/// For the whole process: keeps libxml2 and libxslt from writing to the standard error, and
/// stylesheets from using files and the network.
void InitXmlLibraries();

/// The longest XML text in bytes, which bounds the time and memory that a file can cost. A profile
/// has about a thousand.
inline constexpr std::size_t nXmlLimit = 1'048'576;

enum class XmlEncoding {
  declared,  ///< what the declaration or the byte order mark says
  utf8,      ///< UTF-8, whatever they say
};

/// Reads nothing but this text. Null when it is too long, is not well formed, or has a DOCTYPE with
/// declarations or the name of another file, which count as not well formed. An element with more
/// than a few hundred attributes or namespaces in scope does so too: their cost is quadratic.
[[nodiscard]] XmlDocPointer ParseXml(std::string_view sXml, XmlEncoding eEncoding);

/// The document's text in the encoding that it declares, or in UTF-8. Empty when that fails.
[[nodiscard]] std::string SerializeXml(_xmlDoc& document);

/// What the XSLT 1.0 stylesheet makes of the document, UTF-8. Throws std::runtime_error when
/// `stylesheet` is not a stylesheet, or fails.
[[nodiscard]] std::string TransformXml(_xmlDoc& document, const _xmlDoc& stylesheet);

}  // namespace quillorbit::linux_adapter
