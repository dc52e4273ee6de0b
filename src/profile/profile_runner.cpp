#include "profile/profile_runner.h"

#include <algorithm>
#include <array>
#include <set>

#include "profile/profile_difference.h"
#include "protocols/modbus/crc.h"
#include "protocols/modbus/whole_reply.h"
#include "registers/setup_file.h"

namespace pelvan {
namespace {

/// What a reading is made of.
constexpr std::array kRead{
    RegisterRole::State,         RegisterRole::Profile,          RegisterRole::Step,
    RegisterRole::HoursLeft,     RegisterRole::MinutesLeft,      RegisterRole::SecondsLeft,
    RegisterRole::JumpsDone,     RegisterRole::PresentSetPoint1, RegisterRole::PresentSetPoint2,
    RegisterRole::PresentEvents, RegisterRole::ProcessValue1,    RegisterRole::ProcessValue2};

/// Writing which profile to start may be repeated: nothing happens by it.
constexpr int kAttempts = 3;

/// How often the line must fall silent after a command of unknown outcome before its state is read.
constexpr int kSilences = 3;

constexpr std::int16_t kReadHolding = 3;
constexpr std::int16_t kWriteSingle = 6;
constexpr unsigned char kExceptionBit = 0x80;

unsigned char byte_at(const std::string& frame, std::size_t at) {
    return static_cast<unsigned char>(frame[at]);
}

/// Registers that follow one another, to be read in one request.
struct Group {
    int first = 0;
    int count = 0;
};

std::vector<Group> groups_of(const ProfileFormat& format) {
    std::set<int> numbers;
    for (const RegisterRole role : kRead)
        if (const ProfileField* field = format.run_field(role)) numbers.insert(field->number);
    std::vector<Group> groups;
    for (const int number : numbers) {
        if (groups.empty() || groups.back().first + groups.back().count != number)
            groups.push_back({number, 0});
        ++groups.back().count;
    }
    return groups;
}

/// The numbers of registers that were read, by their roles.
class RunValues {
  public:
    RunValues(const ProfileFormat& format, const std::map<int, int>& values)
        : format_(format), values_(values) {}

    [[nodiscard]] std::optional<int> raw(RegisterRole role) const {
        const ProfileField* field = format_.run_field(role);
        const auto value = field ? values_.find(field->number) : values_.end();
        if (value == values_.end() || is_skip_mark(std::to_string(value->second)))
            return std::nullopt;
        return value->second;
    }
    [[nodiscard]] std::optional<double> real(RegisterRole role) const {
        const auto number = raw(role);
        if (!number) return std::nullopt;
        return format_.run_field(role)->value(*number);
    }
    [[nodiscard]] std::optional<int> seconds_left() const {
        const auto hours = raw(RegisterRole::HoursLeft);
        const auto minutes = raw(RegisterRole::MinutesLeft);
        const auto seconds = raw(RegisterRole::SecondsLeft);
        if (!hours && !minutes && !seconds) return std::nullopt;
        return (hours.value_or(0) * 60 + minutes.value_or(0)) * 60 + seconds.value_or(0);
    }

  private:
    const ProfileFormat& format_;
    const std::map<int, int>& values_;
};

RunReading reading_of(RunState state, const RunValues& values) {
    RunReading reading;
    reading.state = state;
    reading.profile = values.raw(RegisterRole::Profile).value_or(0);
    reading.step = values.raw(RegisterRole::Step).value_or(0);
    reading.seconds_left = values.seconds_left();
    reading.jumps_done = values.raw(RegisterRole::JumpsDone);
    reading.set_points = {values.real(RegisterRole::PresentSetPoint1),
                          values.real(RegisterRole::PresentSetPoint2)};
    reading.process_values = {values.real(RegisterRole::ProcessValue1),
                              values.real(RegisterRole::ProcessValue2)};
    reading.events = values.raw(RegisterRole::PresentEvents);
    return reading;
}

/// Whether the state is one that only the command, or an earlier one like it, can have led to. A
/// start shows where nothing ran before; the next step may have come by itself.
bool shows(RunCommand command, const RunReading& reading, const std::optional<RunReading>& before,
           int profile) {
    const bool goes = reading.state == RunState::Running || reading.state == RunState::Waiting;
    switch (command) {
    case RunCommand::Start:
        return goes && reading.profile == profile && before && !before->active();
    case RunCommand::Hold:
        return reading.state == RunState::Held;
    case RunCommand::Resume:
        return goes;
    case RunCommand::End:
        return !reading.active();
    case RunCommand::Next:
        break;
    }
    return false;
}

/// Whether the command cannot have been carried out, given the state behind it. A step that a
/// profile was moved on to may be any.
bool contradicts(RunCommand command, const RunReading& reading) {
    const bool goes = reading.state == RunState::Running || reading.state == RunState::Waiting;
    switch (command) {
    case RunCommand::Start: // one without time may have ended already, or jumped elsewhere
        return reading.state == RunState::Off;
    case RunCommand::Hold:
        return goes;
    case RunCommand::Resume:
        return reading.state == RunState::Held;
    case RunCommand::End:
        return reading.active();
    case RunCommand::Next:
        break;
    }
    return false;
}

std::string register_text(int number) {
    return " (register " + std::to_string(number) + ")";
}

/// "the command hold".
std::string words(RunCommand command) {
    return "the command " + std::string(run_word(command));
}

} // namespace

ProfileRunner::ProfileRunner(Link& link, Modbus& modbus, const DeviceAddress& address,
                             const ProfileFormat& format)
    : link_(link), modbus_(modbus), address_(address), format_(format) {}

/// A reader or writer of this tool's has claimed the line.
bool ProfileRunner::own_work_goes_on() const {
    return link_.refusal().empty() && !link_.channels().line_use().refusal(nullptr).empty();
}

std::string ProfileRunner::line_refusal() const {
    return own_work_goes_on() ? "Profiles are being read or written." : link_.refusal();
}

/// What a reply is to its request: of a read so many values, of a write the request again.
ProfileRunner::Answer ProfileRunner::judged(const std::string& request, const std::string& reply,
                                            int values) {
    Answer answer;
    if (reply.empty()) return answer;
    answer.verdict = Verdict::Damaged;
    // Whatever the decoder makes of it: it leaves the values behind and says what is no number.
    static_cast<void>(modbus_.ModbusDecodeSmartDecimal(0, reply));
    constexpr std::size_t kException = 5;
    const std::size_t whole =
        values == 0 ? request.size() : kException + 2U * static_cast<std::size_t>(values);
    if (reply.size() < kException || reply[0] != request[0] || !has_valid_crc(reply)) return answer;
    if (byte_at(reply, 1) == (byte_at(request, 1) | kExceptionBit) && reply.size() == kException) {
        answer.verdict = Verdict::Refused;
        answer.exception = std::to_string(byte_at(reply, 2));
    } else if (values == 0 ? reply == request
                           : reply[1] == request[1] && reply.size() == whole &&
                                 byte_at(reply, 2) == 2 * values) {
        answer.verdict = Verdict::Accepted;
        for (int i = 1; i <= values; ++i)
            answer.values.push_back(
                static_cast<int>(modbus_.state().gReplyValues.at(static_cast<std::size_t>(i))));
    }
    return answer;
}

/// `values` is what a read asks for, 0 in a write.
ProfileRunner::Answer ProfileRunner::exchange(std::int16_t function, int first, int value,
                                              int values) {
    std::array<float, 3> list{0, static_cast<float>(value), kValueListEnd};
    const std::string request =
        modbus_.ModbusBuildRequest(function, address_.number(), static_cast<float>(first), list);
    if (is_refusal(request)) return {Verdict::Refused, {}, request};
    Answer answer =
        judged(request,
               link_.transmit(
                   kModbusChannel, request, kModbusTimeoutMs, kModbusQuietChars,
                   [&](std::string_view received) { return is_whole_reply(request, received); }),
               values);
    // The answer may still come, and must not be taken for that to the next request.
    if (answer.verdict == Verdict::NoReply || answer.verdict == Verdict::Damaged)
        link_.let_fall_silent();
    return answer;
}

RunPoll ProfileRunner::poll() {
    if (std::string refused = line_refusal(); !refused.empty())
        return {PollEnd::Skipped, {}, std::move(refused)};
    return read_state();
}

RunPoll ProfileRunner::read_state() {
    if (!format_.runs())
        return {PollEnd::Refused, {}, "The model's .pds file does not say how its state is read."};
    std::map<int, int> values;
    const int state_register = format_.run_field(RegisterRole::State)->number;
    for (const Group& group : groups_of(format_)) {
        const Answer answer = exchange(kReadHolding, group.first, group.count, group.count);
        for (std::size_t i = 0; i < answer.values.size(); ++i)
            values[group.first + static_cast<int>(i)] = answer.values[i];
        if (answer.verdict == Verdict::NoReply)
            return {PollEnd::Lost, {}, "No reply" + register_text(group.first) + "."};
        if (answer.verdict == Verdict::Damaged)
            return {PollEnd::Lost, {}, "Damaged reply" + register_text(group.first) + "."};
    }
    const auto raw = values.find(state_register);
    if (raw == values.end())
        return {PollEnd::Refused,
                {},
                "The controller refused to tell its state" + register_text(state_register) + "."};
    const auto state = format_.state(raw->second);
    if (!state)
        return {PollEnd::Refused,
                {},
                "The .pds file does not know the state " + std::to_string(raw->second) + "."};
    in_doubt_ = false;
    last_ = reading_of(*state, RunValues(format_, values));
    return {PollEnd::Read, last_, {}};
}

std::string ProfileRunner::refusal(RunCommand command) const {
    const bool always = command == RunCommand::Hold || command == RunCommand::End;
    if (!knows(command)) return "The model's .pds file does not have " + words(command) + ".";
    if (std::string refused = link_.refusal(); !refused.empty()) return refused;
    if (own_work_goes_on() && !always) return line_refusal();
    if (in_doubt_)
        return "What became of the last command is not known until the state has been read.";
    return {};
}

/// A sentence when the register does not hold the value for certain.
std::string ProfileRunner::write_start(RegisterRole role, int value) {
    const ProfileField* field = format_.run_field(role);
    if (!field) return {}; // the controller has no choice there
    const std::string text =
        field->name + " = " + std::to_string(value) + register_text(field->number);
    Answer answer;
    for (int i = 0; i < kAttempts; ++i) {
        answer = exchange(kWriteSingle, field->number, value, 0);
        if (answer.verdict == Verdict::Accepted) return {};
        if (answer.verdict == Verdict::Refused)
            return "Not started: the controller refused " + text + " with exception " +
                   answer.exception + ".";
    }
    return "Not started: no whole reply to " + text + ".";
}

CommandOutcome ProfileRunner::start(int profile, int step) {
    CommandOutcome outcome;
    outcome.after.how = PollEnd::Skipped;
    outcome.sentence = refusal(RunCommand::Start);
    if (outcome.sentence.empty())
        outcome.sentence = write_start(RegisterRole::StartProfile, profile);
    if (outcome.sentence.empty()) outcome.sentence = write_start(RegisterRole::StartStep, step);
    return outcome.sentence.empty() ? send(RunCommand::Start, profile) : outcome;
}

CommandOutcome ProfileRunner::command(RunCommand command) {
    CommandOutcome outcome;
    outcome.after.how = PollEnd::Skipped;
    outcome.sentence = refusal(command);
    return outcome.sentence.empty() ? send(command, 0) : outcome;
}

CommandOutcome ProfileRunner::send(RunCommand command, int profile) {
    // An answer to a request of this tool's reading or writing may be on its way.
    const auto fall_silent = [this] {
        for (int i = 0; i < kSilences && link_.let_fall_silent().silent; ++i) {
        }
    };
    if (own_work_goes_on()) fall_silent();
    in_doubt_ = true;
    const std::optional<RunReading> before = last_;
    const Answer answer = exchange(kWriteSingle, format_.run_field(RegisterRole::Command)->number,
                                   *format_.command(command), 0);
    const bool told = answer.verdict == Verdict::Accepted || answer.verdict == Verdict::Refused;
    if (!told) fall_silent();
    CommandOutcome outcome;
    outcome.after = read_state();
    const auto denied = [&] {
        return answer.verdict == Verdict::Accepted && outcome.after.reading &&
               contradicts(command, *outcome.after.reading);
    };
    if (denied()) { // the controller may need a moment
        fall_silent();
        outcome.after = read_state();
    }
    const auto& reading = outcome.after.reading;
    const std::string state = reading ? run_sentence(*reading) : outcome.after.sentence;
    if (denied()) {
        outcome.how = CommandEnd::NotKnown;
        outcome.sentence =
            "The controller took " + words(command) + ", but its state does not show it. " + state;
    } else if (answer.verdict == Verdict::Accepted) {
        outcome.how = CommandEnd::Done;
        outcome.sentence = reading ? state
                                   : "The controller took " + words(command) +
                                         "; its state is not known. " + state;
    } else if (answer.verdict == Verdict::Refused) {
        outcome.how = CommandEnd::Refused;
        outcome.sentence = "The controller refused " + words(command) + " with exception " +
                           answer.exception + ". " + state;
    } else {
        const bool done = reading && shows(command, *reading, before, profile);
        outcome.how = done ? CommandEnd::Done : CommandEnd::NotKnown;
        outcome.sentence =
            "No whole reply to " + words(command) +
            (done ? ", but it was carried out. " : "; whether it was carried out is not known. ") +
            state;
    }
    return outcome;
}

} // namespace pelvan
