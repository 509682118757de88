#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace quillorbit::platform {}

namespace quillorbit::fakes {

using namespace platform;

// Short names, so that the signature of a recorded call takes a line
using u32 = std::uint32_t;
using i32 = std::int32_t;
using View = std::string_view;
template <class T>
using Ref = std::shared_ptr<T>;
template <class T>
using Own = std::unique_ptr<T>;

/// The calls that crossed the seam, in order, each as a line "Name first, second, ...", or
/// "object.Name first, second, ..." for an object with a name. It can make any one of them fail.
class CallLog {
 public:
  /// Records a call, and throws std::system_error where FailAt says so.
  template <class... Args>
  void Call(View sObject, View sName, const Args&... args) {
    if (m_muted) return;
    std::ostringstream line;
    line << sObject << (sObject.empty() ? "" : ".") << sName;
    [[maybe_unused]] const char* sSeparator = " ";
    ((line << std::exchange(sSeparator, ", ") << args), ...);
    Note(line.str());
    if (m_calls.size() == m_failAt)
      throw std::system_error(std::make_error_code(std::errc::io_error));
  }
  /// Records what cannot fail.
  void Note(View sLine) {
    if (!m_muted) m_calls.emplace_back(sLine);
  }

  [[nodiscard]] const std::vector<std::string>& Calls() const { return m_calls; }
  /// The calls since the last Take; those to come are not made to fail.
  std::vector<std::string> Take() {
    m_failAt = 0;
    return std::exchange(m_calls, {});
  }

  /// Makes the nth call since the last Take fail, counted from 1.
  void FailAt(std::size_t nCall) { m_failAt = nCall; }
  /// While muted it records nothing and takes no memory.
  void Mute(bool bMuted) { m_muted = bMuted; }

 private:
  std::vector<std::string> m_calls;
  std::size_t m_failAt = 0;
  bool m_muted = false;
};

/// The base of a fake: of a service, or of an object with a name.
template <class Interface>
struct Fake : Interface {
  explicit Fake(CallLog& l, View s = {}) : log(l), sName(s) {}

  template <class... Args>
  void Call(View sOperation, const Args&... args) {
    log.Call(sName, sOperation, args...);
  }
  /// Records a call, and returns what it answers.
  template <class Value, class... Args>
  Value Answer(Value value, View sOperation, const Args&... args) {
    Call(sOperation, args...);
    return value;
  }
  /// Records "name.Property value" and keeps the value.
  template <class Value, class New>
  void Set(View sProperty, Value& value, const New& newValue) {
    Call(sProperty, newValue);
    value = newValue;
  }

  CallLog& log;
  const std::string sName;
};

}  // namespace quillorbit::fakes
