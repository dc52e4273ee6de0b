#include "transfer/controller_access.h"

#include <algorithm>
#include <array>

#include "platform/run_time_error.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "transfer/setup_file.h"

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

constexpr char kCrcMark[] = "<--CRC ERROR!";

} // namespace

std::int16_t ControllerAccess::address() const {
    return int16_from(leading_number(address_.Text()));
}

std::string ControllerAccess::request(std::int16_t function, float register_number, float value) {
    std::array<float, 3> values{0, value, kValueListEnd};
    return modbus_.ModbusBuildRequest(function, address(), register_number, values);
}

std::string ControllerAccess::exchange(const std::string& frame) {
    const std::string bytes =
        link_.transmit(kModbusChannel, frame, kReplyWaitMs, kModbusQuietChars);
    return modbus_.ModbusDecodeDecimal(0, bytes);
}

bool ControllerAccess::reply_begins(const std::string& text) const {
    return reply_.starts_with(std::to_string(address()) + " " + text + " ") &&
           reply_.find(kCrcMark) == std::string::npos;
}

bool ControllerAccess::read_reply(float register_number) {
    reply_.clear();
    whole_ = false;
    const std::string frame = request(kReadHolding, register_number, 1);
    if (is_refusal(frame)) {
        services_.dialogs.message_box(frame);
        return false;
    }
    for (int attempt = 0; attempt < kReadAttempts && reply_.empty(); ++attempt)
        reply_ = exchange(frame);
    whole_ = reply_begins("3 2");
    return !reply_.empty();
}

std::string ControllerAccess::value_in_reply() const {
    // The value begins behind "address 3 2". What stands there is taken whatever the reply is: of
    // an exception its code, of a reply with a wrong CRC the number with the mark begun, and
    // nothing when no blank follows. A setup holds exactly that; the list of errors says which
    // registers it happened to.
    const std::size_t start = address_.Text().size() + 4;
    const std::string rest = trim(start < reply_.size() ? reply_.substr(start) : std::string());
    const auto blank = rest.find(' ');
    return blank == std::string::npos ? std::string() : rest.substr(0, blank);
}

std::string ControllerAccess::ReadDataFromControl(float Register_No) {
    if (!read_reply(Register_No)) return kReadFailed;
    std::string value = value_in_reply();
    if (!whole_) list_error(reply_, Register_No, value);
    return value;
}

std::string ControllerAccess::CheckCommErrorRead(float Register_No, std::string response) {
    while (response == kReadFailed && ask_retry())
        response = ReadDataFromControl(Register_No);
    return response;
}

std::string ControllerAccess::read_model() {
    return CheckCommErrorRead(kModelRegister, ReadDataFromControl(kModelRegister));
}

bool ControllerAccess::WriteDataToControl(float Register_No, float DataValue,
                                          TextWriter& TextFile) {
    Outcome outcome = Outcome::NoReply;
    for (int i = 0; i < kWriteAttempts && outcome == Outcome::NoReply; ++i)
        outcome = write_once(Register_No, DataValue);
    if (outcome == Outcome::NoReply) return false;
    judge_write(Register_No, DataValue, TextFile);
    return true;
}

void ControllerAccess::judge_write(float register_number, float value, TextWriter& file) {
    // Characters 3 to 5 hold the function only while the address has one digit: with a longer
    // address no refusal is recognised here, so the error file stays empty and refusals do not
    // count. The list of errors gets them all the same, as any reply that is not the echo.
    const bool refused = reply_.size() > 2 && reply_.compare(2, 3, "134") == 0;
    // A value or register that cannot be sent at all is a refusal too; asking the user to retry
    // would never end.
    if (refused || is_refusal(reply_))
        record_refusal(register_number, value, file);
    else if (!last_accepted_)
        list_damaged(register_number, value);
}

bool ControllerAccess::CheckCommErrorWrite(float Register_No, float DataValue,
                                           TextWriter& TextFile) {
    bool answered = false;
    while (!answered && ask_retry())
        answered = WriteDataToControl(Register_No, DataValue, TextFile);
    return answered;
}

ControllerAccess::Outcome ControllerAccess::write_once(float Register_No, float DataValue) {
    last_accepted_ = false;
    const std::string frame = request(kWriteSingle, Register_No, DataValue);
    reply_ = is_refusal(frame) ? frame : exchange(frame);
    write_reply_ = reply_;
    if (reply_.empty()) return Outcome::NoReply;
    if (is_refusal(frame) || reply_begins("134")) return Outcome::Refused;
    const auto value = static_cast<long>(round_half_even(static_cast<double>(DataValue)));
    const auto number = static_cast<long>(round_half_even(static_cast<double>(Register_No)));
    last_accepted_ = reply_begins("6 " + std::to_string(number) + " " + std::to_string(value));
    return last_accepted_ ? Outcome::Accepted : Outcome::Damaged;
}

void ControllerAccess::record_refusal(float Register_No, float DataValue, TextWriter& TextFile) {
    const std::string number = plain_single(Register_No);
    const std::string value = plain_single(DataValue);
    if (run_.error_count == 0) TextFile.writeline("Response From Control\tReg No\tValue\t");
    TextFile.writeline(write_reply_ + "\t" + number + "\t" + value + "\tError");
    const int position = std::min(static_cast<int>(run_.error_count), errors_.ListCount());
    errors_.AddItem(write_reply_ + "               " + number + "           " + value + "    Error",
                    position);
    run_.error_count += 1;
    ++run_.faults;
}

bool ControllerAccess::DefaultControl(TextWriter& TextFile, const std::function<void()>& pause) {
    // Nothing depends on how these writes end: what counts is that the controller answers
    // afterwards.
    static_cast<void>(WriteDataToControl(kEraseKey1, kEraseValue1, TextFile));
    static_cast<void>(WriteDataToControl(kEraseKey2, kEraseValue2, TextFile));
    const std::string frame = request(kWriteSingle, kEraseRegister, kEraseValue);
    if (!is_refusal(frame)) link_.transmit(kModbusChannel, frame, kReplyWaitMs, kModbusQuietChars);
    for (int i = 0; i < kRestartReads && !run_.cancel; ++i) {
        if (ReadDataFromControl(kModelRegister) != kReadFailed) return true;
        pause();
    }
    return false;
}

std::optional<int> ControllerAccess::read_number(float Register_No) {
    for (int damaged = 0;;) {
        if (!read_reply(Register_No)) {
            if (!ask_retry()) return std::nullopt;
            continue;
        }
        const std::string value = value_in_reply();
        if (whole_) return static_cast<int>(leading_number(value));
        if (++damaged < kReadAttempts && !reply_begins("131")) continue;
        list_error(reply_, Register_No, value);
        return 0;
    }
}

bool ControllerAccess::ask_retry(const std::string& text) {
    if (services_.dialogs.message_box(text, {}, MessageButtons::RetryCancel) !=
        MessageAnswer::Retry)
        return false;
    // A line that stays silent is asked for again and again: the window must not stand still.
    services_.desktop.let_events_run();
    return !run_.cancel;
}

void ControllerAccess::list_error(const std::string& response, float register_number,
                                  const std::string& value, const std::string& kind) {
    errors_.AddItem(response + "               " + plain_single(register_number) + "           " +
                    value + "    " + kind);
    ++run_.faults;
}

void ControllerAccess::list_damaged(float register_number, float value) {
    list_error(write_reply_, register_number, plain_single(value));
}

void ControllerAccess::list_line(const std::string& line) {
    constexpr std::size_t kShown = 80;
    errors_.AddItem("Line without a register number: " + line.substr(0, kShown));
    ++run_.faults;
}

} // namespace pelvan
