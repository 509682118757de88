#pragma once

#include <cerrno>
#include <concepts>
#include <string>
#include <system_error>

namespace quillorbit::tools {

/// The failure in errno, as "what: reason".
[[nodiscard]] inline std::system_error SystemError(const std::string& sWhat) {
  return {errno, std::generic_category(), sWhat};
}

/// The result of a system call; throws when it is negative.
template <std::signed_integral Result>
Result Checked(Result result, const std::string& sWhat) {
  if (result < 0) throw SystemError(sWhat);
  return result;
}

}  // namespace quillorbit::tools
