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
  std::map<std::string, Ref<XmlTree>, std::less<>> files, texts;
};

/// A document, and also an element of one.
struct FakeNode : Fake<DOMDocument> {
  FakeNode(CallLog& l, XmlStore& s, Ref<XmlTree> t = std::make_shared<XmlTree>())
      : Fake(l, "xml"), store(s), tree(std::move(t)) {}
  std::string text() const override { return tree->sText; }
  void text(View s) override { tree->sText = s; }
  Own<IXMLDOMNode> selectSingleNode(View s) override {
    for (const auto& child : tree->children)
      if (child->sName == s) return std::make_unique<FakeNode>(log, store, child);
    return nullptr;
  }
  void appendChild(IXMLDOMNode& child) override {
    tree->children.push_back(dynamic_cast<FakeNode&>(child).tree);
  }
  std::string transformNode(DOMDocument&) override {
    Call(__func__);
    const std::string sText = "transformed " + std::to_string(store.texts.size());
    store.texts[sText] = tree;
    return sText;
  }
  Own<IXMLDOMNode> createElement(View s) override {
    return std::make_unique<FakeNode>(log, store, std::make_shared<XmlTree>(std::string(s)));
  }
  bool load(const std::string& sPath) override { return Become(store.files, __func__, sPath); }
  bool loadXML(View sXml) override { return Become(store.texts, __func__, sXml); }
  void save(const std::string& sPath) override {
    Call(__func__, sPath);
    store.files[sPath] = tree;
  }
  bool Become(const decltype(XmlStore::files)& source, View sCall, View sKey) {
    Call(sCall, sKey);
    const auto found = source.find(sKey);
    tree = found == source.end() ? std::make_shared<XmlTree>() : found->second;
    return found != source.end();
  }

  XmlStore& store;
  Ref<XmlTree> tree;
};

struct FakeXmlLibrary : Fake<XmlLibrary> {
  using Fake::Fake;
  Own<DOMDocument> NewDOMDocument() override { return std::make_unique<FakeNode>(log, store); }
  XmlStore store;
};

}  // namespace quillorbit::fakes
