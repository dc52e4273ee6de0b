#include "serial/echo_filter.h"

#include "text/bytes.h"

namespace pelvan {

const char* echo_trouble(Echo echo) {
    switch (echo) {
    case Echo::Missing:
    case Echo::Silent:
        return "no echo";
    case Echo::Cut:
        return "echo cut";
    case Echo::Differs:
        return "echo differs";
    case Echo::None:
    case Echo::Whole:
        break;
    }
    return "";
}

void EchoFilter::begin(double now_ms) {
    echo_ = Echo::None;
    if (now_ms <= due_ms_) return;
    awaited_.clear();
    matched_ = 0;
}

void EchoFilter::sent(std::string_view bytes, double due_ms) {
    earlier_ = awaited_.size();
    awaited_ += bytes;
    due_ms_ = due_ms;
    came_whole_ = differs_ = false; // what differed before stood on the line before
}

std::string EchoFilter::receive(std::string_view bytes) {
    std::string others;
    for (const char byte : bytes) {
        if (awaited_.empty()) {
            others += byte;
            echoes_ = echoes_ || came_whole_;
        } else if (byte != awaited_[matched_]) {
            take_as_other(byte, others);
        } else if (++matched_ == awaited_.size()) {
            awaited_.clear();
            matched_ = 0;
            came_whole_ = true;
        }
    }
    return others;
}

/// What was taken for the echo so far may have been the beginning of a reply.
void EchoFilter::take_as_other(char byte, std::string& others) {
    difference_ = {matched_ < earlier_ ? 0 : matched_ - earlier_ + 1, hex_bytes({&byte, 1}),
                   hex_bytes({&awaited_[matched_], 1}), awaited_};
    others += awaited_.substr(0, matched_) + byte;
    differs_ = true;
    awaited_.clear();
    matched_ = 0;
}

/// A damaged echo ends as the reply behind it does, and where a protocol has no check passes for
/// one with it. Most of its bytes are right.
bool EchoFilter::resembles_echo(std::string_view reply) const {
    const std::string& expected = difference_.expected;
    if (reply.size() < expected.size()) return false;
    std::size_t same = 0;
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (reply[i] == expected[i]) ++same;
    return 2 * same > expected.size();
}

bool EchoFilter::judge(std::string_view reply, bool whole_frame, double now_ms) {
    // A line that has echoed may have got another converter: two such replies in a row say so.
    const bool bare = differs_ && whole_frame && !resembles_echo(reply);
    if (bare || came_whole_) bare_replies_ = bare ? bare_replies_ + 1 : 0;
    if (bare_replies_ > 1) echoes_ = false;
    const bool unechoed = whole_frame && !echoes_;
    if (differs_)
        echo_ = bare && unechoed ? Echo::Missing : Echo::Differs;
    else if (came_whole_)
        echo_ = reply.empty() && unechoed_ && !echoes_ ? Echo::Missing : Echo::Whole;
    else if (awaited_.empty() || now_ms < due_ms_)
        echo_ = Echo::None;
    else
        echo_ = matched_ == 0 ? Echo::Silent : Echo::Cut;
    unechoed_ = unechoed_ || echo_ == Echo::Missing;
    if (echo_ == Echo::Cut) difference_.at = matched_ < earlier_ ? 0 : matched_ - earlier_;
    return echo_ != Echo::Differs;
}

std::string EchoFilter::remark() const {
    switch (echo_) {
    case Echo::Missing:
        if (came_whole_)
            return "This line does not seem to echo, as its settings say: an answer that is like "
                   "its command is taken for the echo. What was sent may have been carried out.";
        return "The reply came without an echo: this line does not seem to echo, as its settings "
               "say.";
    case Echo::Silent:
        return "Nothing came, not even the echo of what was sent: look at the converter, its power "
               "and its wiring.";
    case Echo::Cut:
        return "The echo broke off after " + std::to_string(difference_.at) + " bytes.";
    case Echo::Differs:
        break;
    case Echo::None:
    case Echo::Whole:
        return {};
    }
    const std::string where = difference_.at == 0 ? std::string("that of the command before")
                                                  : "byte " + std::to_string(difference_.at);
    return "The echo differs (" + where + " came as " + difference_.came + ", not " +
           difference_.sent + "): two were sending at once, or the line is disturbed" +
           (echoes_ && bare_replies_ == 0 ? "" : ", or does not echo") +
           ". What came does not count.";
}

} // namespace pelvan
