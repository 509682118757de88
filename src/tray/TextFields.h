#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "platform/code_page.h"
#include "platform/shell.h"

namespace quillorbit {

// The texts in the notification record.

/// The wide form: the text's UTF-16 units at the start of the field's first `nBytes`, cut so that a
/// NUL follows, and zeros behind. An empty text leaves the field as it was.
void CopyToTextField(std::span<char16_t> field, std::u16string_view sText, std::size_t nBytes);

/// The ANSI form, before its conversion: the text, cut or filled with blanks to the field's length.
void CopyToFixedField(std::span<char16_t> field, std::u16string_view sText);

/// The text up to the first NUL, or the whole field when it has none.
[[nodiscard]] std::u16string_view FieldText(std::span<const char16_t> field);

/// The record with its texts in the system's code page, each cut to its field's bytes.
[[nodiscard]] platform::NOTIFYICONDATAA ToAnsi(const platform::NOTIFYICONDATAW& wide,
                                               const platform::CodePage& codePage);

}  // namespace quillorbit
