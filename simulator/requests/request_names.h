// The names of the requests, as the trace and the faults use them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace simulator {

// "BEGIN_BUFFER" for 0x80002000 and so on; the code in hexadecimal for one that no request has.
std::string RequestName(uint32_t code);

// The code of a request by that name, in any case. Nothing when there is none.
std::optional<uint32_t> RequestCode(std::string_view name);

}  // namespace simulator
