#include "protocols/full/full_protocol.h"

#include <utility>

#include "text/control_characters.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr float kPollTimeoutMs = 200;
constexpr float kReplyTimeoutMs = 2000;
constexpr float kNoReplyTimeoutMs = 1; // after bytes that nobody answers
constexpr std::int16_t kQuietChars = 8;
constexpr std::int16_t kEndOfResponseQuietChars = 1;

constexpr char kErrorQuery[] = "? ER2";

struct DeviceError {
    int code;
    const char* text;
};

// The gaps (9 to 19, 29, 36, 37) are no oversight: controllers give these numbers no meaning, and
// they are reported as unknown.
constexpr DeviceError kDeviceErrors[] = {
    {0, kFullNoError},
    {1, "Transmit buffer overflow"},
    {2, "Receive buffer overflow"},
    {3, "Framing error"},
    {4, "Overrun error"},
    {5, "Parity error"},
    {6, "Talking out of turn"},
    {7, "Invalid reply"},
    {8, "Noise error"},
    {20, "Command not found"},
    {21, "Parameter not found"},
    {22, "Incomplete command line"},
    {23, "Invalid character"},
    {24, "Number of character overflow"},
    {25, "Input out of limit"},
    {26, "Read only command"},
    {27, "Write only command"},
    {28, "Parameter not active"},
    {30, "Request to RUN invalid"},
    {31, "Request to HOLD invalid"},
    {32, "Command invalid in RUN mode"},
    {33, "Command invalid in HOLD mode"},
    {34, "Output 3 is not an Event"},
    {35, "Output 4 is not an Event"},
    {38, "Asterisk not allowed"},
    {39, "Infinite loop error"},
    {40, "Output 2 is not an Event"},
    {41, "Asterisk expected"},
};

/// "0".."9" for 0 to 9, "A".."W" for 10 to 32.
char address_character(std::int16_t address) {
    return static_cast<char>(address < 10 ? address + '0' : address + 55);
}

bool is_acknowledged(const std::string& reply) {
    return reply.size() == 1 && reply[0] == kAck;
}

bool ends_response(const std::string& reply) {
    return !reply.empty() && reply.back() == kEtx;
}

/// That of a response whose end is there. Only the end decides what is done with it.
bool is_damaged(std::string_view response) {
    constexpr char kFraming[] = {kStx, kEtx};
    const std::size_t next = response.find_first_of({kFraming, sizeof kFraming}, 1);
    return response.front() != kStx || next != response.size() - 1;
}

std::string framed(const std::string& command) {
    return kStx + command + kEtx;
}

const char* device_error_text(double code) {
    for (const DeviceError& error : kDeviceErrors)
        if (code == error.code) return error.text;
    return "Unknown Error";
}

} // namespace

std::string full_poll_bytes(std::int16_t address) {
    return {address_character(address), kEnq};
}

std::string full_poll_answer(std::int16_t address) {
    return {address_character(address), kAck};
}

bool ends_full_message(std::string_view received) {
    if (received.empty()) return false;
    const char last = received.back();
    if (last == kEtx || last == kEot) return true;
    return received.front() != kStx && (last == kAck || last == kNak);
}

std::string FullProtocol::send(const std::string& bytes, float timeout_ms,
                               std::int16_t quiet_chars) {
    return link_.transmit(kFullChannel, bytes, timeout_ms, quiet_chars, ends_full_message);
}

bool FullProtocol::full_poll(std::int16_t address) {
    if (address < 0 || address > kFullMaxAddress) {
        dialogs_.message_box("Device address is not valid. Defaulting to 1");
        address = 1;
    }
    return send(full_poll_bytes(address), kPollTimeoutMs, kQuietChars) == full_poll_answer(address);
}

bool FullProtocol::full_send_message(const std::string& command, float timeout_ms) {
    return is_acknowledged(send(framed(command), timeout_ms, kQuietChars));
}

std::string FullProtocol::full_read_response() {
    const std::string reply = send({kEot}, kReplyTimeoutMs, kQuietChars);
    if (!ends_response(reply)) return kFullNotReceived;
    response_damaged_ = is_damaged(reply);
    static_cast<void>(send({kEot}, kNoReplyTimeoutMs, kEndOfResponseQuietChars));
    return reply.size() < 2 ? std::string() : reply.substr(1, reply.size() - 2);
}

std::string FullProtocol::full_nak_retry() {
    // What the device repeats only shows that it is able to: it is read by a turn-around of its
    // own.
    if (ends_response(send({kNak}, kReplyTimeoutMs, kQuietChars))) return full_read_response();
    return kFullNakNotReceived;
}

void FullProtocol::full_end() {
    static_cast<void>(send(kFullEnd, kNoReplyTimeoutMs, kQuietChars));
}

std::string FullProtocol::full_error_query() {
    if (!full_send_message(kErrorQuery, kReplyTimeoutMs)) return kFullNoErrorCode;
    const std::string data = full_read_response();
    if (data == kFullNotReceived) return kFullNoErrorCode;
    return device_error_text(leading_number(data));
}

FullReply FullProtocol::full_command(const std::string& command, std::int16_t address,
                                     float timeout_ms) {
    // A device that does not answer its poll was not selected: there is nothing to end.
    if (!full_poll(address)) return {kFullNotConnected};
    FullReply reply =
        full_send_message(command, timeout_ms) ? answer_of(command) : FullReply{full_error_query()};
    full_end();
    return reply;
}

FullReply FullProtocol::answer_of(const std::string& command) {
    const char first = command.empty() ? '\0' : command[0];
    if (first == '=') return {"MESSAGE COMPLETED", true};
    if (first != '?') {
        // Looked at only after the device has acknowledged: what the user entered is always sent,
        // so that a device's own reaction to it can be seen.
        dialogs_.message_box("Beginning of comms command not valid (= or ?)");
        return {};
    }
    std::string response = full_read_response();
    if (response == kFullNotReceived) response = full_nak_retry();
    const bool came = response != kFullNakNotReceived && response != kFullNotReceived;
    return {std::move(response), came, came && response_damaged_};
}

} // namespace pelvan
