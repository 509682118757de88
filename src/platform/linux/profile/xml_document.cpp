#include "platform/linux/profile/xml_document.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <QList>
#include <QString>
#include <QStringDecoder>
#include <libxml/chvalid.h>
#include <libxml/tree.h>

#include "platform/linux/process/whole_file.h"
#include "platform/linux/profile/xml_library.h"

namespace quillorbit::linux_adapter {
namespace {

/// One content of a document. Loading gives the document another one; nodes of the old one keep
/// that alive.
class Content {
 public:
  explicit Content(XmlDocPointer doc) : m_doc(std::move(doc)) {
    if (!m_doc) throw std::bad_alloc();
  }
  ~Content() {
    for (const xmlNodePtr pNode : m_detached) xmlFreeNode(pNode);
  }
  Content(const Content&) = delete;
  Content& operator=(const Content&) = delete;

  [[nodiscard]] xmlDocPtr Doc() const { return m_doc.get(); }

  /// Makes this content the owner of a node that is not in the tree.
  void Keep(xmlNodePtr pNode) { m_detached.push_back(pNode); }
  /// Moves a node of this content to the end of another one's children.
  void Append(xmlNodePtr pParent, xmlNodePtr pChild) {
    std::erase(m_detached, pChild);
    xmlUnlinkNode(pChild);
    xmlAddChild(pParent, pChild);
  }
  /// Removes all children from the tree. They stay alive, for a caller may hold them.
  void DetachChildren(xmlNodePtr pParent) {
    while (const xmlNodePtr pChild = pParent->children) {
      Keep(pChild);
      xmlUnlinkNode(pChild);
    }
  }

 private:
  XmlDocPointer m_doc;
  std::vector<xmlNodePtr> m_detached;
};

using ContentPointer = std::shared_ptr<Content>;

/// A document begins like a node and counts as one.
xmlNodePtr AsNode(xmlDocPtr pDoc) { return reinterpret_cast<xmlNodePtr>(pDoc); }

const xmlChar* Chars(const std::string& s) { return reinterpret_cast<const xmlChar*>(s.c_str()); }

/// XML excludes some characters, and bytes that are not characters.
void CheckText(std::string_view sText) {
  if (sText.size() > nXmlLimit) throw std::runtime_error("the text is too long");
  QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString text = utf8(QByteArrayView(sText));
  if (utf8.hasError()) throw std::runtime_error("the text is not UTF-8");
  const auto codes = text.toUcs4();
  if (!std::all_of(codes.begin(), codes.end(), [](uint code) { return xmlIsCharQ(code); }))
    throw std::runtime_error("the text has a character that XML cannot hold");
}

std::string TextOf(xmlNodePtr pNode) {
  xmlChar* const pText = xmlNodeGetContent(pNode);
  if (pText == nullptr) return {};
  std::string sText(reinterpret_cast<const char*>(pText));
  xmlFree(pText);
  return sText;
}

void SetText(Content& content, xmlNodePtr pNode, std::string_view sText) {
  if (pNode->type != XML_ELEMENT_NODE)
    throw std::runtime_error("a document has no text of its own");
  CheckText(sText);
  content.DetachChildren(pNode);
  if (sText.empty()) return;
  // Not xmlNodeSetContent(), which takes "&" for the beginning of an entity.
  const xmlNodePtr pText =
      xmlNewDocTextLen(content.Doc(), reinterpret_cast<const xmlChar*>(sText.data()),
                       static_cast<int>(sText.size()));
  if (pText == nullptr) throw std::bad_alloc();
  xmlAddChild(pNode, pText);
}

xmlNodePtr ChildElement(xmlNodePtr pNode, std::string_view sName) {
  for (xmlNodePtr pChild = pNode->children; pChild != nullptr; pChild = pChild->next)
    if (pChild->type == XML_ELEMENT_NODE &&
        (pChild->ns == nullptr || pChild->ns->prefix == nullptr) &&
        reinterpret_cast<const char*>(pChild->name) == sName)
      return pChild;
  return nullptr;
}

bool IsWithin(xmlNodePtr pNode, xmlNodePtr pAncestor) {
  while (pNode != nullptr && pNode != pAncestor) pNode = pNode->parent;
  return pNode != nullptr;
}

/// What a node and a document, which is a node too, have in common.
class NodeHandle {
 public:
  NodeHandle(ContentPointer content, xmlNodePtr pNode)
      : m_content(std::move(content)), m_pNode(pNode) {}

  [[nodiscard]] const ContentPointer& Owner() const { return m_content; }
  [[nodiscard]] xmlNodePtr Node() const { return m_pNode; }

 protected:
  ~NodeHandle() = default;
  void Refer(ContentPointer content, xmlNodePtr pNode) {
    m_content = std::move(content);
    m_pNode = pNode;
  }

 private:
  ContentPointer m_content;
  xmlNodePtr m_pNode;
};

void AppendChild(const NodeHandle& parent, const NodeHandle* pChild) {
  if (pChild == nullptr || pChild->Owner() != parent.Owner())
    throw std::runtime_error("the child is a node of another document");
  const xmlDocPtr pDoc = parent.Owner()->Doc();
  if (pChild->Node() == AsNode(pDoc) || IsWithin(parent.Node(), pChild->Node()))
    throw std::runtime_error("the child is a document, or contains the parent");
  const xmlNodePtr pRoot = xmlDocGetRootElement(pDoc);
  if (parent.Node() == AsNode(pDoc) && pRoot != nullptr && pRoot != pChild->Node())
    throw std::runtime_error("a document has one root element");
  parent.Owner()->Append(parent.Node(), pChild->Node());
}

template <class Interface>
class LinuxNodeOf : public Interface, public NodeHandle {
 public:
  using NodeHandle::NodeHandle;

  [[nodiscard]] std::string text() const override { return TextOf(Node()); }
  void text(std::string_view sText) override { SetText(*Owner(), Node(), sText); }
  [[nodiscard]] std::unique_ptr<platform::IXMLDOMNode> selectSingleNode(
      std::string_view sName) override;
  void appendChild(platform::IXMLDOMNode& child) override {
    AppendChild(*this, dynamic_cast<NodeHandle*>(&child));
  }
  [[nodiscard]] std::string transformNode(platform::DOMDocument& stylesheet) override {
    return TransformXml(*Owner()->Doc(),
                        *dynamic_cast<const NodeHandle&>(stylesheet).Owner()->Doc());
  }
};

class LinuxNode final : public LinuxNodeOf<platform::IXMLDOMNode> {
 public:
  using LinuxNodeOf::LinuxNodeOf;
};

template <class Interface>
std::unique_ptr<platform::IXMLDOMNode> LinuxNodeOf<Interface>::selectSingleNode(
    std::string_view sName) {
  const xmlNodePtr pChild = ChildElement(Node(), sName);
  return pChild == nullptr ? nullptr : std::make_unique<LinuxNode>(Owner(), pChild);
}

/// The document in a file; null when there is no such file or it is empty. Throws
/// std::runtime_error, which names the file, when it cannot be used.
XmlDocPointer ReadDocument(const std::string& sPath) {
  const std::string sXml = ReadWholeFile(sPath, nXmlLimit);
  if (sXml.empty()) return nullptr;
  XmlDocPointer doc = ParseXml(sXml, XmlEncoding::declared);
  if (!doc)
    throw std::runtime_error(sPath +
                             " is not well-formed XML, or has too many attributes or entities");
  return doc;
}

/// What a save does with the file that it replaces. Called in the writer's thread.
OldFile OldFileAt(const std::string& sPath) {
  try {
    (void)ReadDocument(sPath);
    return OldFile::replaced;
  } catch (const std::runtime_error&) {
    return OldFile::kept;  // a user may have edited it, with one mistake
  }
}

class LinuxDocument final : public LinuxNodeOf<platform::DOMDocument> {
 public:
  explicit LinuxDocument(FileWriter& writer) : LinuxNodeOf(nullptr, nullptr), m_writer(writer) {
    Hold(nullptr);
  }

  [[nodiscard]] std::unique_ptr<platform::IXMLDOMNode> createElement(
      std::string_view sName) override {
    const std::string sTerminated(sName);
    if (sTerminated.find('\0') != std::string::npos ||
        xmlValidateNCName(Chars(sTerminated), 0) != 0)
      throw std::runtime_error("\"" + sTerminated + "\" is not an element's name");
    const xmlNodePtr pNode = xmlNewDocNode(Owner()->Doc(), nullptr, Chars(sTerminated), nullptr);
    if (pNode == nullptr) throw std::bad_alloc();
    Owner()->Keep(pNode);
    return std::make_unique<LinuxNode>(Owner(), pNode);
  }

  bool load(const std::string& sPath) override {
    if (const auto sUnwritten = m_writer.Unwritten(sPath))
      return Hold(ParseXml(*sUnwritten, XmlEncoding::declared));
    try {
      return Hold(ReadDocument(sPath));
    } catch (const std::runtime_error& failure) {
      std::fprintf(stderr, "quillorbit: %s, so it is ignored\n", failure.what());
      return Hold(nullptr);
    }
  }

  bool loadXML(std::string_view sXml) override { return Hold(ParseXml(sXml, XmlEncoding::utf8)); }

  void save(const std::string& sPath) override {
    const xmlDocPtr pDoc = Owner()->Doc();
    const std::string sXml = xmlDocGetRootElement(pDoc) == nullptr ? "" : SerializeXml(*pDoc);
    if (sXml.empty())
      throw std::system_error(std::make_error_code(std::errc::invalid_argument),
                              "the document has no XML form");
    if (sXml.size() > nXmlLimit)  // load() would refuse it
      throw std::system_error(std::make_error_code(std::errc::file_too_large), sPath);
    m_writer.Write(sPath, sXml);
  }

 private:
  /// Replaces the document's content; without a new one it is empty, and this returns false.
  bool Hold(XmlDocPointer doc) {
    const bool bWellFormed = doc != nullptr;
    if (!doc) doc.reset(xmlNewDoc(Chars("1.0")));
    auto content = std::make_shared<Content>(std::move(doc));
    const xmlNodePtr pNode = AsNode(content->Doc());
    Refer(std::move(content), pNode);
    return bWellFormed;
  }

  FileWriter& m_writer;
};

}  // namespace

LinuxXmlLibrary::LinuxXmlLibrary(std::chrono::milliseconds mostSaveWait)
    : m_writer(OldFileAt, mostSaveWait) {
  InitXmlLibraries();
}

LinuxXmlLibrary::~LinuxXmlLibrary() = default;

std::unique_ptr<platform::DOMDocument> LinuxXmlLibrary::NewDOMDocument() {
  return std::make_unique<LinuxDocument>(m_writer);
}

}  // namespace quillorbit::linux_adapter
