#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fakes/call_log.h"
#include "platform/xml_document.h"

namespace quillorbit::fakes {

/// One element, or a document, which has no name.
struct XmlTree {
  std::string sName;
  std::string sText;
  std::vector<std::shared_ptr<XmlTree>> children;
};

/// The documents that exist outside the program: files by path, and what a transformation made, by
/// the text that stands for it. There is no parser here.
struct XmlStore {
  CallLog& log;
  std::map<std::string, std::shared_ptr<XmlTree>, std::less<>> files, texts;
};

template <class Interface>
class FakeNode : public Interface {
 public:
  FakeNode(XmlStore& s, std::shared_ptr<XmlTree> t) : store(s), tree(std::move(t)) {}

  std::string text() const override { return tree->sText; }
  void text(std::string_view s) override { tree->sText = s; }
  std::unique_ptr<platform::IXMLDOMNode> selectSingleNode(std::string_view sName) override {
    for (const auto& child : tree->children)
      if (child->sName == sName)
        return std::make_unique<FakeNode<platform::IXMLDOMNode>>(store, child);
    return nullptr;
  }
  void appendChild(platform::IXMLDOMNode& child) override {
    tree->children.push_back(dynamic_cast<FakeNode<platform::IXMLDOMNode>&>(child).tree);
  }
  std::string transformNode(platform::DOMDocument&) override {
    store.log.Call("xml.transformNode");
    const std::string sText = "transformed " + std::to_string(store.texts.size());
    store.texts[sText] = tree;
    return sText;
  }

  XmlStore& store;
  std::shared_ptr<XmlTree> tree;
};

class FakeDocument : public FakeNode<platform::DOMDocument> {
 public:
  explicit FakeDocument(XmlStore& s) : FakeNode(s, std::make_shared<XmlTree>()) {}

  std::unique_ptr<platform::IXMLDOMNode> createElement(std::string_view sName) override {
    return std::make_unique<FakeNode<platform::IXMLDOMNode>>(
        store, std::make_shared<XmlTree>(XmlTree{std::string(sName), {}, {}}));
  }
  bool load(const std::string& sPath) override {
    store.log.Call("xml.load ", sPath);
    return Become(store.files, sPath);
  }
  bool loadXML(std::string_view sXml) override {
    store.log.Call("xml.loadXML ", sXml);
    return Become(store.texts, sXml);
  }
  void save(const std::string& sPath) override {
    store.log.Call("xml.save ", sPath);
    store.files[sPath] = tree;
  }

 private:
  template <class Source>
  bool Become(const Source& source, std::string_view sKey) {
    const auto found = source.find(sKey);
    tree = found == source.end() ? std::make_shared<XmlTree>() : found->second;
    return found != source.end();
  }
};

class FakeXmlLibrary : public platform::XmlLibrary {
 public:
  explicit FakeXmlLibrary(CallLog& log) : store{log, {}, {}} {}
  std::unique_ptr<platform::DOMDocument> NewDOMDocument() override {
    return std::make_unique<FakeDocument>(store);
  }

  XmlStore store;
};

}  // namespace quillorbit::fakes
