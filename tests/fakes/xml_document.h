#pragma once

#include "fakes/call_log.h"
#include "platform/xml_document.h"

namespace quillorbit::fakes {

/// One element, or a document, which has no name.
struct XmlTree {
  std::string sName, sText;
  std::vector<Ref<XmlTree>> children;
};

/// The documents that exist outside the program: the files by path, and the results of
/// transformations by the text that stands for them. There is no parser here.
struct XmlStore {
  CallLog& log;
  std::map<std::string, Ref<XmlTree>, std::less<>> files, texts;
};

/// A document, and also an element of one.
struct FakeNode : DOMDocument {
  FakeNode(XmlStore& s, Ref<XmlTree> t) : store(s), tree(std::move(t)) {}
  std::string text() const override { return tree->sText; }
  void text(View s) override { tree->sText = s; }
  Own<IXMLDOMNode> selectSingleNode(View sName) override {
    for (const auto& child : tree->children)
      if (child->sName == sName) return std::make_unique<FakeNode>(store, child);
    return nullptr;
  }
  void appendChild(IXMLDOMNode& child) override {
    tree->children.push_back(dynamic_cast<FakeNode&>(child).tree);
  }
  std::string transformNode(DOMDocument&) override {
    store.log.Call("xml.transformNode");
    const std::string sText = "transformed " + std::to_string(store.texts.size());
    store.texts[sText] = tree;
    return sText;
  }
  Own<IXMLDOMNode> createElement(View sName) override {
    return std::make_unique<FakeNode>(store, std::make_shared<XmlTree>(std::string(sName)));
  }
  bool load(const std::string& s) override { return Become("xml.load", store.files, s); }
  bool loadXML(View s) override { return Become("xml.loadXML", store.texts, s); }
  void save(const std::string& sPath) override {
    store.log.Call("xml.save", sPath);
    store.files[sPath] = tree;
  }
  bool Become(View sCall, const decltype(XmlStore::files)& source, View sKey) {
    store.log.Call(sCall, sKey);
    const auto found = source.find(sKey);
    tree = found == source.end() ? std::make_shared<XmlTree>() : found->second;
    return found != source.end();
  }

  XmlStore& store;
  Ref<XmlTree> tree;
};

struct FakeXmlLibrary : XmlLibrary {
  explicit FakeXmlLibrary(CallLog& log) : store{log, {}, {}} {}
  Own<DOMDocument> NewDOMDocument() override {
    return std::make_unique<FakeNode>(store, std::make_shared<XmlTree>());
  }
  XmlStore store;
};

}  // namespace quillorbit::fakes
