// A two-wire converter gives back what is sent: this takes the echo out of what comes, and checks
// it byte for byte. What is expected stands over from one exchange to the next, for an exchange
// that nobody answers ends before its echo is there.
//
// From the first byte on that differs nothing more is taken out: only the reply as a whole tells
// whether the line does not echo at all or whether somebody else was sending.
#pragma once

#include <string>
#include <string_view>

namespace pelvan {

/// What became of the echo in an exchange.
enum class Echo {
    None,    // nothing was expected, or it may still come
    Whole,   // as it was sent
    Missing, // a whole reply came without it, on a line that has not echoed yet; or what came is as
             // it was sent, behind such a reply
    Silent,  // nothing came at all
    Cut,     // it broke off
    Differs  // other bytes came: two were sending, or noise
};

class EchoFilter {
  public:
    // Moments are those of `TickSource::precise_ms`.

    /// An exchange begins. An echo that should have been there long ago is expected no more.
    void begin(double now_ms);
    /// The bytes have gone out; their echo is there at `due_ms` at the latest.
    void sent(std::string_view bytes, double due_ms);
    /// Of bytes that came, those that are no echo.
    [[nodiscard]] std::string receive(std::string_view bytes);
    /// Whether bytes of an echo may still come.
    [[nodiscard]] bool awaits() const { return !awaited_.empty(); }

    /// Judges the exchange by its reply, of which is known whether it is one whole frame. False
    /// when the reply must not count. What there is to tell is `remark` then.
    [[nodiscard]] bool judge(std::string_view reply, bool whole_frame, double now_ms);
    [[nodiscard]] Echo echo() const { return echo_; }
    /// Whether the line echoes for sure. Else what is like a command may be its answer.
    [[nodiscard]] bool echoes() const { return echoes_; }
    /// What was wrong with the echo, in sentences; empty when nothing was.
    [[nodiscard]] std::string remark() const;

  private:
    void take_as_other(char byte, std::string& others);
    [[nodiscard]] bool resembles_echo(std::string_view reply) const;

    std::string awaited_;     // of this exchange, behind what is left of those before
    std::size_t matched_ = 0; // of it have come
    std::size_t earlier_ = 0; // of it are those of exchanges before
    double due_ms_ = 0;
    bool came_whole_ = false;
    bool differs_ = false;
    bool echoes_ = false;   // an echo with something behind it was heard on this line
    bool unechoed_ = false; // a reply without an echo was
    int bare_replies_ = 0;  // whole frames in a row where the echo should have been
    Echo echo_ = Echo::None;
    struct Difference {
        std::size_t at = 0; // counted from 1 in what was sent; 0: in what was sent before
        std::string came;
        std::string sent;
        std::string expected; // in all
    };
    Difference difference_;
};

/// "no echo", "echo cut", "echo differs"; empty where nothing is wrong.
[[nodiscard]] const char* echo_trouble(Echo echo);

} // namespace pelvan
