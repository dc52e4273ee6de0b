// The series of the two protocols that carry command texts: Full and Xon.
#include <algorithm>

#include "badrequests/protocol_series.h"
#include "platform/serial_line.h"
#include "protocols/full/full_protocol.h"
#include "text/bytes.h"
#include "text/control_characters.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::int16_t kXonChannel = 2;
constexpr double kReplyTimeoutMs = 2000;
constexpr std::int16_t kQuietChars = 8;
constexpr long kMaxFullAddress = 32;
constexpr std::size_t kTooLong = 100; // characters; commands have a dozen
constexpr char kXonRefusal[] = "ERROR";
constexpr char kLineEnds[] = "\r\n";
constexpr char kUnknown[] = "? ZZZZZ";

constexpr char kNoCheck[] = "messages of this protocol have no check";
constexpr char kNoLength[] = "messages of this protocol have no length in them";
constexpr char kNoTimes[] = "the protocol sets no time between two characters";
constexpr char kEndsItself[] = "what follows a message's end is the next message";

char address_character(long address) {
    return static_cast<char>(address < 10 ? '0' + address : 'A' + address - 10);
}

std::string too_long() {
    return "? " + std::string(kTooLong, 'Z');
}

/// A command that reads, whatever part of it arrives: the sign of a write stands nowhere in it.
bool is_read_text(const std::string& text, std::string& refusal) {
    const bool printable =
        std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '='; });
    if (text.size() > 1 && text[0] == '?' && printable) return true;
    refusal = "The command must begin with ? and only read, such as \"? C1\".";
    return false;
}

class FullSeries : public ProtocolSeries {
  public:
    FullSeries(long address, long other, std::string command, Link& link, Dialogs& dialogs)
        : address_(address), other_(other), command_(std::move(command)), full_(link, dialogs) {}

    [[nodiscard]] Asked whom() const override { return {kFullChannel}; }
    [[nodiscard]] std::int16_t quiet_chars() const override { return kQuietChars; }
    [[nodiscard]] std::string title() const override {
        return "Full, address " + std::to_string(address_) + ", " + command_;
    }
    [[nodiscard]] std::string shown(std::string_view bytes) const override {
        return ascii_in_brackets(bytes);
    }
    [[nodiscard]] std::string good_text() const override { return command_; }
    [[nodiscard]] std::vector<BadRequest> requests(const std::string& settings) const override;
    [[nodiscard]] Reaction reaction(const std::string& reply) const override;
    [[nodiscard]] GoodReply ask(const AskLine& line) override;

  private:
    [[nodiscard]] std::string poll(long address) const {
        return {address_character(address), kEnq};
    }
    /// To the controller that has been selected, and released afterwards.
    [[nodiscard]] BadRequest message(const char* name, Expected expected,
                                     const std::string& bytes) const {
        BadRequest request{name, expected, {bytes}};
        request.opening = poll(address_);
        request.opening_reply = {address_character(address_), kAck};
        request.closing = {kLineFeed, kEot};
        return request;
    }

    long address_;
    long other_;
    std::string command_;
    FullProtocol full_;
};

std::vector<BadRequest> FullSeries::requests(const std::string& settings) const {
    using enum Expected;
    return {not_applicable("Wrong check", kNoCheck),
            message("ETX missing", Silence, kStx + command_),
            message("Unknown command", Refusal, kStx + std::string(kUnknown) + kEtx),
            message("Command too long", Either, kStx + too_long() + kEtx),
            {"Message without a poll", Silence, {kStx + command_ + kEtx}},
            {"One byte alone (ENQ)", Silence, {std::string(1, kEnq)}},
            not_applicable("One byte too long", kEndsItself),
            not_applicable("Pause inside", kNoTimes),
            not_applicable("Wrong length", kNoLength),
            {"Other address", Silence, {poll(other_)}, true},
            with_other_parity({{}, Silence, {poll(address_)}}, settings, false)};
}

Reaction FullSeries::reaction(const std::string& reply) const {
    using enum Reaction::Kind;
    if (reply.empty()) return {};
    const std::string text = shown(reply);
    if (reply == std::string(1, kNak) || reply == std::string(1, kEot)) return {Refusal, text};
    if (reply == std::string(1, kAck) || reply[0] == kStx) return {Answer, text};
    const bool begins = reply.find(kStx) != reply.npos ||
                        reply.find({address_character(address_), kAck}) != reply.npos;
    if (reply.size() != 2 || reply[1] != kAck) return {begins ? Damaged : Noise, text};
    return {reply[0] == address_character(address_) ? Answer : Foreign, text};
}

GoodReply FullSeries::ask(const AskLine&) {
    using enum GoodReply::Kind;
    const FullReply reply = full_.full_command(command_, static_cast<std::int16_t>(address_),
                                               static_cast<float>(kReplyTimeoutMs));
    const std::string text = ascii_in_brackets(reply.text);
    if (reply.completed) return {reply.damaged ? Damaged : Answered, text};
    if (reply.text == kFullNotConnected) return {Nothing, text};
    const bool damaged = reply.text == kFullNoError || reply.text == kFullNoErrorCode ||
                         reply.text == kFullNakNotReceived;
    return {damaged ? Damaged : Refused, text};
}

class XonSeries : public ProtocolSeries {
  public:
    explicit XonSeries(std::string command) : command_(std::move(command)) {}

    [[nodiscard]] Asked whom() const override { return {kXonChannel}; }
    [[nodiscard]] std::int16_t quiet_chars() const override { return kQuietChars; }
    [[nodiscard]] std::string title() const override { return "Xon, " + command_; }
    [[nodiscard]] std::string shown(std::string_view bytes) const override {
        return ascii_in_brackets(bytes);
    }
    [[nodiscard]] std::string good_text() const override { return command_ + "<0D>"; }
    [[nodiscard]] std::vector<BadRequest> requests(const std::string& settings) const override;
    [[nodiscard]] Reaction reaction(const std::string& reply) const override;
    [[nodiscard]] GoodReply ask(const AskLine& line) override;

  private:
    std::string command_;
    std::string good_; // what the good request was answered with
};

std::vector<BadRequest> XonSeries::requests(const std::string& settings) const {
    using enum Expected;
    BadRequest cut{"Carriage return missing", Silence, {command_}};
    cut.closing = "\r"; // completes it: nothing else clears the line in the controller
    return {not_applicable("Wrong check", kNoCheck),
            cut,
            {"One byte alone (carriage return)", Either, {"\r"}},
            {"Unknown command", Refusal, {std::string(kUnknown) + "\r"}},
            {"Command too long", Either, {too_long() + "\r"}},
            not_applicable("One byte too long", kEndsItself),
            not_applicable("Pause inside", kNoTimes),
            not_applicable("Wrong length", kNoLength),
            not_applicable("Other address", "messages of this protocol have no address"),
            with_other_parity({{}, Silence, {command_ + "\r"}}, settings, false)};
}

/// Refusals have words of the controller's own; a reading is a number, or what the good request
/// got.
Reaction XonSeries::reaction(const std::string& reply) const {
    using enum Reaction::Kind;
    if (reply.empty()) return {};
    std::string text = reply;
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
        text.pop_back();
    const bool printable = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
    // Text has no frame that a part of it could be told by.
    if (!printable || text.size() == reply.size()) return {Noise, shown(reply)};
    const bool reads = !text.starts_with(kXonRefusal) && (is_numeric(text) || reply == good_);
    return {reads ? Answer : Refusal, text.empty() ? shown(reply) : text};
}

GoodReply XonSeries::ask(const AskLine& line) {
    using enum GoodReply::Kind;
    const std::string reply = line(command_ + "\r", kReplyTimeoutMs);
    if (reply.empty()) return {};
    const std::size_t last = reply.find_last_not_of(kLineEnds);
    const std::size_t before = last == reply.npos ? last : reply.find_last_of(kLineEnds, last);
    const std::string more = before == reply.npos ? std::string() : reply.substr(0, before + 1);
    const std::string answer = reply.substr(more.size());
    const Reaction said = reaction(answer);
    if (said.kind == Reaction::Kind::Noise) return {Damaged, said.text, more};
    if (said.text.starts_with(kXonRefusal)) return {Refused, said.text, more};
    good_ = answer;
    return {Answered, said.text, more};
}

} // namespace

std::unique_ptr<ProtocolSeries> make_full_series(const BadRequestOptions& options, Link& link,
                                                 Dialogs& dialogs, std::string& refusal) {
    long address = 0;
    long other = 0;
    if (!number_in(options.address, 0, kMaxFullAddress, "The address", address, refusal) ||
        !number_in(options.other_address, 0, kMaxFullAddress, "The other address", other,
                   refusal) ||
        !is_read_text(options.read, refusal))
        return nullptr;
    if (other == address) {
        refusal = kSameAddress;
        return nullptr;
    }
    return std::make_unique<FullSeries>(address, other, options.read, link, dialogs);
}

std::unique_ptr<ProtocolSeries> make_xon_series(const BadRequestOptions& options,
                                                std::string& refusal) {
    if (!is_read_text(options.read, refusal)) return nullptr;
    return std::make_unique<XonSeries>(options.read);
}

} // namespace pelvan
