#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillorbit::d3dx8 {

/// What both forms of an X file, text and binary, consist of. Separators are left out: values can
/// be told apart without them, and exporters do not agree where to put them.
struct XToken {
  enum class Kind {
    Word,  ///< a name; in a text also a number
    Text,  ///< without its quotes
    Guid,  ///< `text` is the same for the same GUID
    Integer,
    Float,
    Open,   ///< {
    Close,  ///< }
    Other,  ///< occurs in templates only
    End,
  };
  Kind kind;
  std::string_view text = {};  ///< valid until another token of this kind is read
  double dValue = 0;
};

/// Reads a file from its first token to its last. Throws D3DError, with the place in the file,
/// where the file is not as the format demands.
class XTokens {
 public:
  XTokens() = default;
  virtual ~XTokens() = default;
  XTokens(const XTokens&) = delete;
  XTokens& operator=(const XTokens&) = delete;

  /// The next token, which stays the next one.
  [[nodiscard]] const XToken& Peek();
  XToken Take();

  std::uint32_t TakeInteger();
  /// A finite number within +-1e18.
  float TakeFloat();
  std::string_view TakeText();
  /// How many things follow that consist of so many values each; never more than the rest of the
  /// file has room for, so that it is safe to make room for them.
  std::uint32_t TakeCount(std::uint32_t nValuesEach);
  /// Refuses a count that the rest of the file has no room for.
  void CheckCount(std::uint32_t nCount, std::uint32_t nValuesEach) const;

  /// Refuses the file because of the token read last.
  [[noreturn]] void Refuse(const std::string& sWhy) const;

 protected:
  virtual XToken Scan() = 0;
  /// How many values the rest of the file could hold at most.
  [[nodiscard]] virtual std::size_t ValuesLeft() const = 0;
  /// The place of the token that was read last: "line 3".
  [[nodiscard]] virtual std::string Place() const = 0;

 private:
  [[noreturn]] void RefuseToken(const char* pExpected, const XToken& token) const;
  [[nodiscard]] double Number(const XToken& token) const;

  XToken m_next{XToken::Kind::End};
  bool m_bPeeked = false;
};

}  // namespace quillorbit::d3dx8
