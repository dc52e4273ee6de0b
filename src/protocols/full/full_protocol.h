// The Full protocol (ANSI X3.28): the dialogue that carries a command text of the controllers to
// one of them and its answer back. A read begins with "?", a write with "="; what the texts mean is
// the controller's business. Every outcome is a text. Nothing is remembered between commands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/dialogs.h"
#include "serial/link.h"

namespace pelvan {

inline constexpr std::int16_t kFullChannel = 0;
/// Time that the console gives a controller to acknowledge a command.
inline constexpr float kFullCommandTimeoutMs = 5000;

/// The outcomes that say that nothing usable came back.
inline constexpr char kFullNotConnected[] = "COULDN'T CONNECT TO DEVICE";
inline constexpr char kFullNotReceived[] = "NOT RECEIVED";
inline constexpr char kFullNakNotReceived[] = "NAK NOT RECEIVED";
/// The device knows of no error: it acknowledged the command too late, or not audibly.
inline constexpr char kFullNoError[] = "No comms error";
inline constexpr char kFullNoErrorCode[] = "DEVICE ERROR COULDN'T BE DETECTED";

inline constexpr std::int16_t kFullMaxAddress = 32;
/// Releases a device that has answered its poll; nobody answers it.
inline constexpr char kFullEnd[] = "\n\4";

/// The poll of an address 0..32, and the one answer to it.
[[nodiscard]] std::string full_poll_bytes(std::int16_t address);
[[nodiscard]] std::string full_poll_answer(std::int16_t address);

/// How a command ended.
struct FullReply {
    /// The text to show.
    std::string text;
    /// The write was acknowledged or the read answered: a text that a controller returns may look
    /// like an outcome.
    bool completed = false;
    /// A read was answered, but not with one STX, text and ETX: the text may lack characters, or
    /// hold those of another response.
    bool damaged = false;
};

/// Whether the bytes are a whole message of a device: a response ends with its ETX, all else with
/// ACK, NAK or EOT.
[[nodiscard]] bool ends_full_message(std::string_view received);

class FullProtocol {
  public:
    FullProtocol(Link& link, Dialogs& dialogs) : link_(link), dialogs_(dialogs) {}

    /// One complete exchange; the result is the text to show: the data of a read, "MESSAGE
    /// COMPLETED" of a write, or what went wrong.
    ///
    /// A silent device costs 200 ms and the quiet pause; `timeout_ms` is for the acknowledgement of
    /// the command. An address outside 0..32 and a command that begins with neither "=" nor "?"
    /// show a message box; the latter is sent all the same, and its result is empty.
    [[nodiscard]] FullReply full_command(const std::string& command, std::int16_t address,
                                         float timeout_ms);

    // The steps of the exchange.

    /// Selects the device; true when it answered with its own address.
    [[nodiscard]] bool full_poll(std::int16_t address);
    /// Sends the framed command; true when it was acknowledged.
    [[nodiscard]] bool full_send_message(const std::string& command, float timeout_ms);
    /// Turns the line round and takes the response; "NOT RECEIVED" when it lacks its end.
    [[nodiscard]] std::string full_read_response();
    /// Asks for the response once more.
    [[nodiscard]] std::string full_nak_retry();
    /// Releases the device.
    void full_end();
    /// Asks the device why it refused a command and returns the reason in words.
    [[nodiscard]] std::string full_error_query();

  private:
    [[nodiscard]] std::string send(const std::string& bytes, float timeout_ms,
                                   std::int16_t quiet_chars);
    [[nodiscard]] FullReply answer_of(const std::string& command);

    Link& link_;
    Dialogs& dialogs_;
    bool response_damaged_ = false; // the last one
};

} // namespace pelvan
