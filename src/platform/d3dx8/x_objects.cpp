#include "platform/d3dx8/x_objects.h"

#include <cstddef>

namespace quillorbit::d3dx8 {

bool XObjects::NextAtTop(XObject& object) {
  switch (m_tokens.Peek().kind) {
    case XToken::Kind::End:
      return false;
    case XToken::Kind::Word:
      object = Begin();
      return true;
    default:
      m_tokens.Refuse("there has to be the name of a type here");
  }
}

bool XObjects::NextInside(XObject& object) {
  switch (m_tokens.Peek().kind) {
    case XToken::Kind::Close:
      m_tokens.Take();
      return false;
    case XToken::Kind::Open:
      object = Reference();
      return true;
    case XToken::Kind::Word:
      object = Begin();
      return true;
    case XToken::Kind::End:
      m_tokens.Refuse("the file ends inside an object");
    default:
      m_tokens.Refuse("there has to be an object or \"}\" here");
  }
}

XObject XObjects::Begin() {
  XObject object;
  for (const char c : m_tokens.Take().text)
    object.sType += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  if (m_tokens.Peek().kind == XToken::Kind::Word) object.sName = m_tokens.Take().text;
  if (m_tokens.Take().kind != XToken::Kind::Open)
    m_tokens.Refuse("a \"{\" is expected behind the type and name of an object");
  object.sGuid = TakeGuidIfAny();
  return object;
}

XObject XObjects::Reference() {
  m_tokens.Take();
  XObject reference;
  reference.bReference = true;
  if (m_tokens.Peek().kind == XToken::Kind::Word) reference.sName = m_tokens.Take().text;
  reference.sGuid = TakeGuidIfAny();
  if (m_tokens.Take().kind != XToken::Kind::Close)
    m_tokens.Refuse("a reference is a name, a GUID or both between braces");
  return reference;
}

std::string XObjects::TakeGuidIfAny() {
  if (m_tokens.Peek().kind != XToken::Kind::Guid) return {};
  return std::string(m_tokens.Take().text);
}

void XObjects::SkipRest() {
  for (std::size_t nOpen = 1; nOpen > 0;) {
    const XToken::Kind kind = m_tokens.Take().kind;
    if (kind == XToken::Kind::Open) ++nOpen;
    if (kind == XToken::Kind::Close) --nOpen;
    if (kind == XToken::Kind::End) m_tokens.Refuse("the file ends inside an object");
  }
}

}  // namespace quillorbit::d3dx8
