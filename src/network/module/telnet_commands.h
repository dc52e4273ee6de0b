// What a telnet server sends before it has agreed to RFC 2217: its commands are wanted, the bytes
// of its serial port are not yet. The library would take such bytes for a sign that nothing will be
// agreed on, and use a processor up while it waits.
#pragma once

#include <cstddef>

namespace pelvan {

class TelnetCommands {
  public:
    /// Keeps the commands of a piece and closes the gaps; the new length. A piece may end within a
    /// command. `bytes` needs room for one byte more than `count`.
    std::size_t keep(unsigned char* bytes, std::size_t count);
    /// Whether the last piece ended with a byte that has been kept back.
    [[nodiscard]] bool holds_escape() const { return state_ == State::Escape; }
    /// Leaves the next piece whole, with the byte that was kept back before it; the new length.
    std::size_t rest(unsigned char* bytes, std::size_t count);

  private:
    enum class State { Data, Escape, Option, Block, BlockEscape };
    void take(unsigned char byte, unsigned char*& end);
    State state_ = State::Data;
};

} // namespace pelvan
