#pragma once

#include <string>
#include <string_view>

#include "platform/d3dx8/x_tokens.h"

namespace quillorbit::d3dx8 {

/// The text form.
class XTextTokens : public XTokens {
 public:
  /// `text`, which has to outlive this, is the whole file or what it contained compressed; it is
  /// read from `nBegin` on.
  XTextTokens(std::string_view text, std::size_t nBegin) : m_text(text), m_nAt(nBegin) {}

 protected:
  XToken Scan() override;
  [[nodiscard]] std::size_t ValuesLeft() const override;
  [[nodiscard]] std::string Place() const override;

 private:
  void SkipBlanks();
  [[nodiscard]] bool AtComment() const;
  XToken ScanSign(XToken::Kind kind);
  XToken ScanText();
  XToken ScanGuid();
  XToken ScanWord();

  std::string_view m_text;
  std::size_t m_nAt;
  std::size_t m_nTokenAt = 0;
  std::string m_sGuid;
};

}  // namespace quillorbit::d3dx8
