#pragma once

#include <map>
#include <string>

#include "platform/d3dx8/x_tokens.h"

namespace quillorbit::d3dx8 {

/// The beginning of an object, "Type Name { <GUID>", or a whole reference to one, "{ Name <GUID>
/// }".
struct XObject {
  bool bReference = false;
  std::string sType;  ///< in lower case: exporters differ
  std::string sName;  ///< may be empty, as the GUID
  std::string sGuid;
};

/// The objects that an object contains behind its values, or a file at its top. They are read one
/// by one: whoever gets one has to read it to its end, by SkipRest() at the latest.
class XObjects {
 public:
  explicit XObjects(XTokens& tokens) : m_tokens(tokens) {}

  /// False at the end of the file.
  bool NextAtTop(XObject& object);
  /// False at the end of the surrounding object.
  bool NextInside(XObject& object);
  /// Skips what is left of an object.
  void SkipRest();

 private:
  XObject Begin();
  XObject Reference();
  std::string TakeGuidIfAny();

  XTokens& m_tokens;
};

/// Objects by their names and GUIDs. Of those with the same name the last one counts.
template <class Pointer>
class XNamed {
 public:
  void Add(const XObject& object, const Pointer& p) {
    if (!object.sName.empty()) m_names[object.sName] = p;
    if (!object.sGuid.empty()) m_guids[object.sGuid] = p;
  }
  /// Null when there is no such object up to here.
  [[nodiscard]] Pointer Find(const XObject& reference) const {
    if (const auto i = m_names.find(reference.sName); i != m_names.end()) return i->second;
    if (const auto i = m_guids.find(reference.sGuid); i != m_guids.end()) return i->second;
    return nullptr;
  }

 private:
  std::map<std::string, Pointer> m_names, m_guids;
};

}  // namespace quillorbit::d3dx8
