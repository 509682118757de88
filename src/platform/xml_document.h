#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quillorbit::platform {

class DOMDocument;

/// One node of an XML document. A node stays valid as long as the document that it came from keeps
/// its content. Failures throw std::runtime_error.
class IXMLDOMNode {
 public:
  virtual ~IXMLDOMNode() = default;

  /// The text of the node and of everything below it, UTF-8, blanks kept.
  [[nodiscard]] virtual std::string text() const = 0;
  virtual void text(std::string_view sText) = 0;
  /// The first child element of that name, or none.
  [[nodiscard]] virtual std::unique_ptr<IXMLDOMNode> selectSingleNode(std::string_view sName) = 0;
  /// Makes a node of the same document this node's last child.
  virtual void appendChild(IXMLDOMNode& child) = 0;
  /// The text that the XSLT 1.0 stylesheet makes of this node's document, UTF-8.
  [[nodiscard]] virtual std::string transformNode(DOMDocument& stylesheet) = 0;
};

/// An XML document, the platform's DOM. A new one is empty.
///
/// It never reads anything but the one file it is told to: a document whose DOCTYPE has
/// declarations or names another file counts as not well formed.
class DOMDocument : public IXMLDOMNode {
 public:
  [[nodiscard]] virtual std::unique_ptr<IXMLDOMNode> createElement(std::string_view sName) = 0;
  /// Replaces the content by a file's, in whatever encoding the file declares. False, with the
  /// content dropped, when the file cannot be read or is not well formed.
  virtual bool load(const std::string& sPath) = 0;
  /// Likewise from a text in UTF-8.
  virtual bool loadXML(std::string_view sXml) = 0;
  /// Writes the document in the encoding that it declares. A file of that name is replaced as a
  /// whole or, when anything fails, left as it was: std::system_error says so as far as it is known
  /// at once. The platform may do the rest later; load() gives the new content already.
  virtual void save(const std::string& sPath) = 0;
};

class XmlLibrary {
 public:
  virtual ~XmlLibrary() = default;
  [[nodiscard]] virtual std::unique_ptr<DOMDocument> NewDOMDocument() = 0;
};

}  // namespace quillorbit::platform
