#include "registers/controller_access.h"

#include <utility>

#include "platform/run_time_error.h"
#include "protocols/modbus/whole_reply.h"
#include "registers/setup_file.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr float kReplyWaitMs = 250;
constexpr std::int16_t kReadHolding = 3;
constexpr std::int16_t kWriteSingle = 6;
constexpr int kReadAttempts = 3;
constexpr int kWriteAttempts = 5;
constexpr int kRestartReads = 13;

/// The erase: two keys, then the reset itself.
constexpr float kEraseKey1 = 1789;
constexpr float kEraseValue1 = 1512;
constexpr float kEraseKey2 = 1415;
constexpr float kEraseValue2 = 1600;
constexpr float kEraseRegister = 1602;
constexpr float kEraseValue = 800;

/// How often the line must fall silent (for 250 ms each time) before another request follows one
/// that may still be answered.
constexpr int kSilences = 3;

constexpr char kCameTwice[] = "A reply came twice";
constexpr char kCrcMark[] = "<--CRC ERROR!";

std::string whole_number(float value) {
    return std::to_string(static_cast<long>(round_half_even(static_cast<double>(value))));
}

} // namespace

bool Reading::failed() const {
    return value == kReadFailed;
}

std::string ControllerAccess::request(std::int16_t function, float register_number, float value) {
    std::array<float, 3> values{0, value, kValueListEnd};
    return modbus_.ModbusBuildRequest(function, address_.number(), register_number, values);
}

/// Before another attempt at the same request a short silence will do: a late answer is then the
/// right one. Any other request would take it for its own.
void ControllerAccess::await_silence(const std::string& next) {
    if (doubtful_.empty()) return;
    const int silences = next == doubtful_ ? 1 : kSilences;
    for (int i = 0; i < silences && fall_silent(); ++i) {
    }
    if (next == doubtful_) return;
    doubtful_.clear();
    balance_.settle();
    settled_ = true;
}

/// False when the line did not fall silent.
bool ControllerAccess::fall_silent() {
    const Silence silence = link_.let_fall_silent();
    check_surplus(silence.discarded);
    answered_late_ = answered_late_ || silence.discarded > 0;
    return silence.silent;
}

void ControllerAccess::check_surplus(std::size_t discarded) {
    if (balance_.surplus(discarded)) lose_step(kCameTwice);
}

/// Who was silent may have started anew, and show another profile and step than those selected.
bool ControllerAccess::look_after_selection(const std::string& frame) {
    using enum SelectionKeeper::Kept;
    if (!selection_unsure_ || keeper_ == nullptr) return true;
    SelectionKeeper* const keeper = std::exchange(keeper_, nullptr); // its own requests need none
    const SelectionKeeper::Kept kept = keeper->look_after(register_in(frame));
    keeper_ = keeper;
    selection_unsure_ = kept != Yes;
    return kept != Unsure;
}

std::string ControllerAccess::exchange(const std::string& frame, float wait_ms) {
    if (!look_after_selection(frame)) return {};
    await_silence(frame);
    if (std::exchange(settled_, false)) first_unsure_ = register_in(frame);
    std::string reply =
        link_.transmit(kModbusChannel, frame, wait_ms, kModbusQuietChars,
                       [&](std::string_view received) { return is_whole_reply(frame, received); });
    if (const std::string remark = link_.take_remark(); !remark.empty()) errors_.note(remark);
    const bool sound = is_sound(reply, frame);
    if (!sound && link_.device_lost()) reply.clear(); // the rest went with the adapter
    // What comes behind a write is no answer to a read, and behind a reset may be anything.
    const std::size_t stray = read_before_ ? link_.stray_bytes() : 0;
    if (balance_.exchanged(frame, reply, stray)) lose_step(kCameTwice);
    read_before_ = is_read(frame);
    if (!sound) doubtful_ = frame;
    selection_unsure_ = selection_unsure_ || !sound;
    return reply;
}

std::string ControllerAccess::send(const std::string& frame) {
    std::string reply = exchange(frame, kReplyWaitMs);
    if (together_) ahead_.sent(frame, is_sound(reply, frame) ? reply : std::string());
    return reply;
}

void ControllerAccess::read_ahead(float register_number, const Upcoming& upcoming) {
    if (!together_) return;
    const std::string single = request(kReadHolding, register_number, 1);
    if (is_refusal(single) || ahead_.holds(single)) return;
    int count = 1;
    for (; count < kMostNeighbours; ++count) {
        const auto next = upcoming(static_cast<std::size_t>(count));
        if (!next || *next != register_number + static_cast<float>(count)) break;
    }
    bool of_another = false;
    ahead_.fetch(single, count, [&](const std::string& frame, float more_ms) {
        const std::string reply = exchange(frame, kReplyWaitMs + more_ms);
        const bool sound = is_sound(reply, frame);
        of_another = of_another || (!sound && is_whole_reply(frame, reply));
        return sound ? reply : std::string();
    });
    if (of_another) check_own_answers();
}

/// Up to three attempts. When each of them got a reply, and none the right one, the last of these;
/// nothing when one got none.
std::string ControllerAccess::send_until_answered(const std::string& frame) {
    if (auto held = ahead_.take(frame)) return std::move(*held);
    bool silent = false;
    std::string reply;
    for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
        reply = send(frame);
        silent = silent || reply.empty();
        if (!answers(reply, frame)) continue;
        if (attempt == 0) return reply;
        // What came now may be the late answer to the first attempt: its own is to be read too.
        const std::string again = send(frame);
        return answers(again, frame) ? again : reply;
    }
    return silent ? std::string() : reply;
}

void ControllerAccess::leave_line() {
    await_silence({});
}

SelectionKeeper* ControllerAccess::set_keeper(SelectionKeeper* keeper) {
    return std::exchange(keeper_, keeper);
}

std::optional<bool> ControllerAccess::holds(float register_number, float value) {
    const std::string reply =
        modbus_.ModbusDecodeDecimal(0, send(request(kReadHolding, register_number, 1)));
    if (begins(reply, "3 2")) return value_in(reply) == plain_single(value);
    return begins(reply, "131") ? std::optional(false) : std::nullopt;
}

/// Whether the reply comes from the address, goes on with the text, and is undamaged.
bool ControllerAccess::begins(const std::string& reply, const std::string& text) const {
    return reply.starts_with(std::to_string(address_.number()) + " " + text + " ") &&
           reply.find(kCrcMark) == std::string::npos;
}

Reading ControllerAccess::read_unlisted(float register_number) {
    const std::string frame = request(kReadHolding, register_number, 1);
    if (is_refusal(frame)) return {{Verdict::Refused, frame}, kReadFailed};
    const std::string text = modbus_.ModbusDecodeDecimal(0, send_until_answered(frame));
    if (text.empty()) return {{}, kReadFailed};
    const Verdict verdict = begins(text, "3 2")   ? Verdict::Accepted
                            : begins(text, "131") ? Verdict::Refused
                                                  : Verdict::Damaged;
    return {{verdict, text}, value_in(text)};
}

std::string ControllerAccess::value_in(const std::string& reply) const {
    // The value begins behind "address 3 2". What stands there is taken whatever the reply is: of
    // an exception its code, of a reply with a wrong CRC the number with the mark begun, and
    // nothing when no space follows. A setup holds exactly that; the list of errors says which
    // registers it happened to.
    const std::size_t start = address_.width() + 4;
    const std::string rest = trim(start < reply.size() ? reply.substr(start) : std::string());
    const auto space = rest.find(' ');
    return space == std::string::npos ? std::string() : rest.substr(0, space);
}

/// Tells what is wrong with a request that could not be sent.
void ControllerAccess::tell_unsent(const Reading& reading) {
    if (reading.failed() && reading.reply.is(Verdict::Refused)) listener_.tell(reading.reply.text);
}

Reading ControllerAccess::ReadDataFromControl(float Register_No) {
    Reading reading = read_unlisted(Register_No);
    tell_unsent(reading);
    if (!reading.failed() && !reading.reply.is(Verdict::Accepted))
        errors_.list(reading.reply.text, Register_No, reading.value);
    return reading;
}

Reading ControllerAccess::CheckCommErrorRead(float Register_No, Reading response) {
    while (response.failed() && ask_retry())
        response = ReadDataFromControl(Register_No);
    if (unverified_ && !response.failed() && !is_same_controller()) return {{}, kReadFailed};
    return response;
}

Reply ControllerAccess::WriteDataToControl(float Register_No, float DataValue) {
    Reply reply;
    for (int i = 0; i < kWriteAttempts && reply.is(Verdict::NoReply); ++i)
        reply = write_once(Register_No, DataValue);
    judge_write(reply, Register_No, DataValue);
    return reply;
}

void ControllerAccess::list_silent(const Reply& reply, float register_number, float value) {
    if (reply.is(Verdict::NoReply)) errors_.list("No reply", register_number, value);
}

void ControllerAccess::judge_write(const Reply& reply, float register_number, float value) {
    if (reply.is(Verdict::NoReply)) return;
    // Characters 3 to 5 hold the function only while the address has one digit: with a longer
    // address no refusal is recognised here, so the error file stays empty and refusals do not
    // count. The list of errors gets them all the same, as any reply that is not the echo.
    const bool refused = reply.text.size() > 2 && reply.text.compare(2, 3, "134") == 0;
    // A value or register that cannot be sent at all is a refusal too; asking the user to retry
    // would never end.
    if (refused || is_refusal(reply.text))
        errors_.record(reply.text, register_number, value);
    else if (!reply.is(Verdict::Accepted))
        errors_.list(reply.text, register_number, value);
}

Reply ControllerAccess::CheckCommErrorWrite(float Register_No, float DataValue, Reply response) {
    while (response.is(Verdict::NoReply) && ask_retry())
        response = WriteDataToControl(Register_No, DataValue);
    if (unverified_ && !response.is(Verdict::NoReply) && !is_same_controller()) return {};
    return response;
}

Reply ControllerAccess::write_once(float register_number, float value) {
    const std::string frame = request(kWriteSingle, register_number, value);
    if (is_refusal(frame)) return {Verdict::Refused, frame};
    const std::string text = modbus_.ModbusDecodeDecimal(0, send(frame));
    if (text.empty()) return {};
    const std::string echo = "6 " + whole_number(register_number) + " " + whole_number(value);
    const Verdict verdict = begins(text, echo)    ? Verdict::Accepted
                            : begins(text, "134") ? Verdict::Refused
                                                  : Verdict::Damaged;
    return {verdict, text};
}

bool ControllerAccess::DefaultControl() {
    // It goes on however these writes end: what counts is that the controller answers afterwards.
    // But a reset that was not taken leaves old settings standing, so it is listed.
    list_silent(WriteDataToControl(kEraseKey1, kEraseValue1), kEraseKey1, kEraseValue1);
    list_silent(WriteDataToControl(kEraseKey2, kEraseValue2), kEraseKey2, kEraseValue2);
    const Reply reset = write_once(kEraseRegister, kEraseValue);
    list_silent(reset, kEraseRegister, kEraseValue);
    judge_write(reset, kEraseRegister, kEraseValue);
    for (int i = 0; i < kRestartReads && !cancel_.canceled; ++i) {
        if (!ReadDataFromControl(kModelRegister).failed()) return true;
        listener_.let_events_run();
    }
    return false;
}

/// Reads again while replies are damaged, up to three.
Reading ControllerAccess::read_until_whole(float register_number) {
    Reading reading = read_unlisted(register_number);
    for (int i = 1; i < kReadAttempts && reading.reply.is(Verdict::Damaged); ++i)
        reading = read_unlisted(register_number);
    return reading;
}

Reading ControllerAccess::read_whole(float register_number) {
    Reading reading = read_until_whole(register_number);
    while (reading.reply.is(Verdict::NoReply) && ask_retry())
        reading = read_until_whole(register_number);
    return reading;
}

Reading ControllerAccess::read_model() {
    Reading reading = read_until_whole(kModelRegister);
    tell_unsent(reading);
    while (!reading.reply.is(Verdict::Accepted) && ask_retry())
        reading = read_until_whole(kModelRegister);
    if (reading.reply.is(Verdict::Accepted)) return reading;
    if (!reading.failed()) errors_.list(reading.reply.text, kModelRegister, reading.value);
    return {reading.reply, kReadFailed};
}

std::optional<int> ControllerAccess::read_number(float register_number) {
    const Reading reading = read_whole(register_number);
    if (reading.reply.is(Verdict::NoReply)) return std::nullopt;
    if (reading.reply.is(Verdict::Accepted)) return static_cast<int>(leading_number(reading.value));
    errors_.list(reading.reply.text, register_number, reading.value);
    return 0;
}

bool ControllerAccess::ask_retry(const std::string& text) {
    if (!listener_.ask_retry(text)) return false;
    // A line that stays silent is asked for again and again: the window must not stand still.
    listener_.let_events_run();
    return !cancel_.canceled && is_same_controller();
}

} // namespace pelvan
