// Whether what comes back over Modbus is the answer to the request that was sent last, and whether
// more came than was asked for.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

namespace pelvan {

/// Bytes of the longest answer to a request, which is a whole one of function 3 or 6.
[[nodiscard]] std::size_t longest_reply(const std::string& request);

/// The register that a request begins with.
[[nodiscard]] float register_in(const std::string& request);

/// Whether the reply, whole or not, is one to this request, exceptions included; else it is a late
/// one to an earlier request.
[[nodiscard]] bool answers(const std::string& reply, const std::string& request);

/// Whether it is an undamaged answer.
[[nodiscard]] bool is_sound(const std::string& reply, const std::string& request);

/// Whether more bytes of answers came than the requests so far account for: a reply that comes
/// twice is taken for the answer to the next request, and from there on every value is that of the
/// register before.
class AnswerBalance {
  public:
    /// A request of which `reply` came back; a sound reply of `longest` bytes or less is its whole
    /// answer.
    void exchanged(std::size_t longest, std::size_t reply, bool sound) {
        const auto owed = static_cast<long>(longest);
        owed_ += sound ? 0 : owed - static_cast<long>(reply);
    }
    /// Bytes that came while the line fell silent; true when nobody asked for them.
    [[nodiscard]] bool surplus(std::size_t discarded) {
        owed_ = std::max(owed_, 0L) - static_cast<long>(discarded);
        return owed_ < 0;
    }
    /// Nothing can be under way any more.
    void settle() { owed_ = 0; }

  private:
    long owed_ = 0; // bytes that may still come
};

} // namespace pelvan
