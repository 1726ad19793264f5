// Between the system's UTF-16 and the host's UTF-8. A malformed sequence becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace platform {

std::u16string ToUtf16(std::string_view text);
std::string ToUtf8(std::u16string_view text);

}  // namespace platform
