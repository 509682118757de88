#pragma once

#include "fakes/call_log.h"
#include "platform/xml_document.h"

namespace quillorbit::fakes {

/// One element, or a document, which has no name.
struct XmlTree {
  std::string sName, sText;
  std::vector<Ref<XmlTree>> children;
};

/// The files by path, and the last result of a transformation. There is no parser here.
struct XmlStore {
  std::map<std::string, Ref<XmlTree>> files;
  Ref<XmlTree> transformed;
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
    store.transformed = tree;
    return Answer("transformed 1", __func__);
  }
  Own<IXMLDOMNode> createElement(View s) override {
    return std::make_unique<FakeNode>(log, store, std::make_shared<XmlTree>(std::string(s)));
  }
  bool load(const std::string& sPath) override {
    Call(__func__, sPath);
    if (store.files.contains(sPath)) tree = store.files.at(sPath);
    return store.files.contains(sPath);
  }
  bool loadXML(View sXml) override {
    if (sXml == "transformed 1") tree = store.transformed;
    return Answer(true, __func__, sXml);
  }
  void save(const std::string& sPath) override {
    Call(__func__, sPath);
    store.files[sPath] = tree;
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
