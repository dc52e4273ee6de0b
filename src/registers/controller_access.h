// Single registers of the controller at one address: read and written with the transfer's own
// retries, refusals recorded, the user asked when the line stays silent. What is read and written,
// and in which order, is the business of the transfers.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "protocols/modbus/modbus.h"
#include "registers/answers.h"
#include "registers/device_address.h"
#include "registers/read_ahead.h"
#include "registers/transfer_errors.h"
#include "serial/link.h"

namespace pelvan {

enum class Verdict {
    NoReply,
    /// By the controller, or by the request's builder: then nothing was sent.
    Refused,
    /// Anything that is not the answer to the request.
    Damaged,
    Accepted
};

struct Reply {
    Verdict verdict = Verdict::NoReply;
    /// The reply in decimal, or the builder's words; empty when there is no reply.
    std::string text;

    [[nodiscard]] bool is(Verdict other) const { return verdict == other; }
};

/// The reply to a read, and what stands in it where a value stands: also in a damaged reply.
struct Reading {
    Reply reply;
    std::string value; // "ERROR" when there is no reply

    [[nodiscard]] bool failed() const;
};

/// Model and serial number of a controller as texts of their registers; empty where unknown.
using Identity = std::array<std::string, 3>;

/// Looks after what is selected in a controller, which it may forget when it starts anew.
class SelectionKeeper {
  public:
    enum class Kept { NotNeeded, Yes, Unsure };
    virtual ~SelectionKeeper() = default;
    /// Before a request to the register, behind one that was not answered by its own whole answer.
    /// Unsure: the request would not reach what it is meant for, and is not sent.
    virtual Kept look_after(float register_number) = 0;
};

class ControllerAccess {
  public:
    /// `together`: neighbours are read with one request where `read_ahead` tells of them.
    ControllerAccess(Link& link, Modbus& modbus, const DeviceAddress& address,
                     TransferListener& listener, const CancelFlag& cancel, TransferErrors& errors,
                     bool together = false)
        : link_(link), modbus_(modbus), address_(address), listener_(listener), cancel_(cancel),
          errors_(errors), together_(together), ahead_(link, modbus) {}

    /// The register that is read so many registers after the one that is read next; nothing at the
    /// end, and where something else comes first.
    using Upcoming = std::function<std::optional<float>(std::size_t index)>;
    /// Says what is read next, and what behind it: neighbours are then read together, if that was
    /// asked for, and their reads need no request. Blocks for one exchange (250 ms and the time of
    /// the bytes, 500 ms at most).
    void read_ahead(float register_number, const Upcoming& upcoming);

    /// A register's value after up to three attempts (blocks up to 2 s, longer on a line that never
    /// falls silent). A value that only a later attempt got is read again.
    ///
    /// What is cut out of a damaged reply or an exception is returned like a value; the register
    /// gets a line among the errors then.
    [[nodiscard]] Reading ReadDataFromControl(float Register_No);
    /// Asks the user and reads again while there is no reply; failed when the user gives up.
    [[nodiscard]] Reading CheckCommErrorRead(float Register_No, Reading response);
    /// The two together.
    [[nodiscard]] Reading read(float register_number) {
        return CheckCommErrorRead(register_number, ReadDataFromControl(register_number));
    }

    /// Writes a register with up to five attempts (blocks up to 3 s, longer on a line that never
    /// falls silent). A refusal is recorded, a damaged reply listed.
    [[nodiscard]] Reply WriteDataToControl(float Register_No, float DataValue);
    /// Asks the user and writes again while there is no reply; none when the user gives up.
    [[nodiscard]] Reply CheckCommErrorWrite(float Register_No, float DataValue, Reply response);
    /// The two together.
    [[nodiscard]] Reply write(float register_number, float value) {
        return CheckCommErrorWrite(register_number, value,
                                   WriteDataToControl(register_number, value));
    }
    /// One write, once, recorded nowhere (blocks up to 1 s, longer on a line that never falls
    /// silent).
    [[nodiscard]] Reply write_once(float register_number, float value);

    /// A register's value, read again while replies are damaged, up to three times; lists and tells
    /// nothing. Asks the user while there is no reply.
    [[nodiscard]] Reading read_whole(float register_number);

    /// The model's number, which decides what is erased and written: read until a reply is whole.
    /// Asks the user while none is; failed when the user gives up (a damaged reply is listed then).
    [[nodiscard]] Reading read_model();

    /// Puts the controller's presets back and waits until it answers again, up to thirteen reads.
    /// False when it never answers, or the transfer is cancelled.
    [[nodiscard]] bool DefaultControl();

    /// A number that the transfer itself works with, so read until a reply is whole: 0 when the
    /// controller refuses or three replies are damaged (listed then); nothing when the user gives
    /// up.
    [[nodiscard]] std::optional<int> read_number(float register_number);

    /// Waits until no late answer is to be expected, so that nobody takes one for his own.
    void leave_line();
    /// Listens for 250 ms or more, and asks for the model again, to learn whether every answer so
    /// far was the one to its own request; false (and listed) when a reply came twice, or the
    /// model's is another than at the beginning, so that values read may be those of other
    /// registers, or when another controller answers by now. A controller that is silent now proves
    /// nothing, which is listed; it costs up to 4 s.
    [[nodiscard]] bool in_step();
    /// False when `in_step` got no answer.
    [[nodiscard]] bool proved() const { return proved_; }
    static constexpr char kUnproved[] =
        "Not checked at the end, for want of an answer: whether all values are those of their own "
        "registers, and of one controller.";
    /// When `in_step` is false because another controller answered than at the beginning, or may
    /// have, what tells it from that one; else empty.
    [[nodiscard]] const std::string& met_another() const { return met_another_; }
    /// Whether bytes came when nothing was waited for any more: answers that are later than 250 ms.
    [[nodiscard]] bool answered_late() const { return answered_late_; }
    /// Asks for the model and the serial number; false, and told, when they are another
    /// controller's. One that is silent passes.
    [[nodiscard]] bool is_same_controller();
    /// The same at the end of the work, where nothing comes that it could be asked behind: listed
    /// when it is silent, or does not tell its serial number any more.
    [[nodiscard]] bool ends_with_same_controller();

    /// False when a line that should echo answered without an echo: the answer to a write, which is
    /// like its request, would count as the echo.
    [[nodiscard]] bool can_confirm_writes() const { return link_.echo() != Echo::Missing; }
    static constexpr char kNoEcho[] =
        "This line does not echo, as its settings say it does, so that no write could be "
        "confirmed. Nothing was written. Switch the echo off in Port Settings.";

    /// The model's and the serial number's registers; blocks for their reads and asks nobody.
    [[nodiscard]] Identity read_identity();
    /// The controller that the work is for: when the line was silent and answers again, the work
    /// ends if it is another one.
    void remember_controller(const Identity& identity) { identity_ = identity; }
    [[nodiscard]] const Identity& identity() const { return identity_; }

    /// Null for nobody; borrowed. Returns who it was before.
    SelectionKeeper* set_keeper(SelectionKeeper* keeper);
    /// Whether a register holds the value, by one request; nothing without a whole answer. One that
    /// the controller refuses does not.
    [[nodiscard]] std::optional<bool> holds(float register_number, float value);

    /// "Comm Error!" with Retry and Cancel; false also when the transfer was cancelled meanwhile.
    [[nodiscard]] bool ask_retry(const std::string& text = kCommError);

    static constexpr float kModelRegister = 0;
    static constexpr char kCommError[] = "Comm Error!";
    static constexpr char kCheckPort[] =
        "Download has been canceled. Need to check Comm Port Settings.";

  private:
    [[nodiscard]] std::string request(std::int16_t function, float register_number, float value);
    void await_silence(const std::string& next);
    [[nodiscard]] std::string exchange(const std::string& frame, float wait_ms);
    [[nodiscard]] bool look_after_selection(const std::string& frame);
    [[nodiscard]] bool fall_silent();
    void check_surplus(std::size_t discarded);
    void check_own_answers();
    void lose_step(const std::string& why);
    [[nodiscard]] std::string another_controller(const Identity& now) const;
    [[nodiscard]] std::string send(const std::string& frame);
    [[nodiscard]] std::string send_until_answered(const std::string& frame);
    [[nodiscard]] bool begins(const std::string& reply, const std::string& text) const;
    [[nodiscard]] Reading read_unlisted(float register_number);
    [[nodiscard]] std::string value_in(const std::string& reply) const;
    [[nodiscard]] Reading read_until_whole(float register_number);
    void tell_unsent(const Reading& reading);
    void list_silent(const Reply& reply, float register_number, float value);
    void judge_write(const Reply& reply, float register_number, float value);

    Link& link_;
    Modbus& modbus_;
    const DeviceAddress address_;
    TransferListener& listener_;
    const CancelFlag& cancel_;
    TransferErrors& errors_;
    const bool together_;
    ReadAhead ahead_;
    /// The request to which a late answer may still come; empty when there is none.
    std::string doubtful_;
    AnswerBalance balance_;
    float first_unsure_ = 0; // register read first since the balance was settled
    bool settled_ = true;
    bool read_before_ = false; // the last request was a read
    bool in_step_ = true;
    std::string met_another_;
    bool answered_late_ = false;
    Identity identity_;
    bool proved_ = true;
    SelectionKeeper* keeper_ = nullptr;
    bool selection_unsure_ = false;     // a request was not answered since it was looked after
    bool unverified_ = false;           // it was silent when its identity was looked at
    std::optional<std::size_t> untold_; // of the identity, by somebody who answered
};

} // namespace pelvan
