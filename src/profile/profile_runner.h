// What runs in a controller: read at intervals, started, held, resumed, moved on and ended. Every
// command is sent once. When its reply is missing or damaged nobody knows whether it was carried
// out, and nothing more is sent until the state has been read again.
//
// A poll and a command are short and claim nothing; a line that another tool has is left alone, and
// that is said. One thread; no call but `hold` and `end` may come from inside a reading or writing
// of profiles.
#pragma once

#include "profile/run_reading.h"
#include "protocols/modbus/modbus.h"
#include "registers/controller_access.h"
#include "serial/link.h"

namespace pelvan {

enum class PollEnd {
    Read,
    /// Somebody else has the line, or profiles are being read or written.
    Skipped,
    /// No whole reply.
    Lost,
    /// The controller refused, or said what the .pds does not know.
    Refused
};

struct RunPoll {
    PollEnd how = PollEnd::Lost;
    std::optional<RunReading> reading;
    std::string sentence; // why there is no reading
};

enum class CommandEnd {
    /// Confirmed by the reply, or by the state that was read afterwards.
    Done,
    Refused,
    /// Nothing was sent that a controller could have acted on.
    NotSent,
    /// It may have been carried out or not.
    NotKnown
};

struct CommandOutcome {
    CommandEnd how = CommandEnd::NotSent;
    std::string sentence;
    RunPoll after; // the state, read behind the command; skipped where none was sent
};

class ProfileRunner {
  public:
    /// All are borrowed.
    ProfileRunner(Link& link, Modbus& modbus, const DeviceAddress& address,
                  const ProfileFormat& format);

    /// Reads what runs. Blocks for a few exchanges, each up to 2 s; the first that is lost ends it,
    /// when the line has fallen silent (at most 1 s).
    [[nodiscard]] RunPoll poll();

    /// Writes which profile and step, then sends the command. Blocks as a command and a poll.
    [[nodiscard]] CommandOutcome start(int profile, int step);
    /// Any command but the start. Blocks for the exchange, at most 3 s of silence when it is lost,
    /// and a poll.
    [[nodiscard]] CommandOutcome command(RunCommand command);

    /// A command was sent and no state has been read since: none may follow.
    [[nodiscard]] bool in_doubt() const { return in_doubt_; }
    /// Whether the model's .pds has the command.
    [[nodiscard]] bool knows(RunCommand command) const {
        return format_.command(command).has_value();
    }

  private:
    struct Answer {
        Verdict verdict = Verdict::NoReply;
        std::vector<int> values;
        std::string exception; // its code
    };
    [[nodiscard]] std::string line_refusal() const;
    [[nodiscard]] bool own_work_goes_on() const;
    [[nodiscard]] Answer exchange(std::int16_t function, int first, int value, int values);
    [[nodiscard]] Answer judged(const std::string& request, const std::string& reply, int values);
    [[nodiscard]] RunPoll read_state();
    [[nodiscard]] std::string refusal(RunCommand command) const;
    [[nodiscard]] std::string write_start(RegisterRole role, int value);
    [[nodiscard]] CommandOutcome send(RunCommand command, int profile);

    Link& link_;
    Modbus& modbus_;
    const DeviceAddress address_;
    const ProfileFormat& format_;
    bool in_doubt_ = false;
    std::optional<RunReading> last_; // as the last poll read it
};

} // namespace pelvan
