// When a reply is complete: for exchanges that end with its last byte.
#pragma once

#include <cstddef>
#include <string_view>

namespace pelvan {

/// Whether the bytes are one whole reply to the request and nothing else: from its address, to its
/// function or an exception to it, as long as the reply itself says, with a CRC that fits. Whether
/// it is the right one, `can_answer` tells.
[[nodiscard]] bool is_whole_reply(std::string_view request, std::string_view received);

/// Bytes of the shortest reply, an exception: fewer are noise.
inline constexpr std::size_t kShortestReply = 5;

/// Bytes of what came beside the undamaged answer that it begins or ends with; 0 without one.
[[nodiscard]] std::size_t bytes_beside_answer(std::string_view request, std::string_view reply);

} // namespace pelvan
