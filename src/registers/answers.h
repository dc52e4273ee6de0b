// Whether what comes back over Modbus is the answer to the request that was sent last, and whether
// more came than was asked for.
#pragma once

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
/// register before, until an answer comes behind that to the next one or between two requests.
class AnswerBalance {
  public:
    /// A request before which `stray` bytes stood on the line, and what came of it. True when,
    /// beside its own answer, a whole one came that nobody asked for.
    [[nodiscard]] bool exchanged(const std::string& request, const std::string& reply,
                                 std::size_t stray);
    /// Bytes that came while the line fell silent; true when nobody asked for a whole answer of
    /// them.
    [[nodiscard]] bool surplus(std::size_t discarded);
    /// Nothing can be under way any more.
    void settle() { owed_ = 0; }

  private:
    [[nodiscard]] bool take(std::size_t bytes);

    long owed_ = 0; // bytes that may still come
};

} // namespace pelvan
