// What a terminal is shown: everything that the commands print goes through here, so that no byte
// of a reply, a file or a file's name reaches it as a control.
#pragma once

#include <functional>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace pelvan {

/// The text with line ends and well-formed UTF-8 as they are, and every byte of anything else
/// (control characters, those of the second set too, and stray bytes) as "\\x1B".
[[nodiscard]] std::string shown_text(std::string_view text);

/// A stream that writes into another what a terminal may be shown of it.
class ShownStream : public std::ostream {
  public:
    /// `failed` is called whenever a write does not get through.
    explicit ShownStream(std::ostream& target, std::function<void()> failed = {})
        : std::ostream(nullptr), buffer_(target, std::move(failed)) {
        rdbuf(&buffer_);
    }

  private:
    class Buffer : public std::streambuf {
      public:
        Buffer(std::ostream& target, std::function<void()> failed)
            : target_(target), failed_(std::move(failed)) {}

      protected:
        int_type overflow(int_type c) override;
        std::streamsize xsputn(const char* text, std::streamsize size) override;
        int sync() override;

      private:
        bool write(std::string_view text);
        bool worked();
        std::ostream& target_;
        std::function<void()> failed_;
    };
    Buffer buffer_;
};

} // namespace pelvan
