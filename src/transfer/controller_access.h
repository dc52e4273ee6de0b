// Single registers of the controller at the chosen address: read and written with the transfer's
// own retries, refusals recorded, the user asked when the line stays silent. What is read and
// written, and in which order, is the business of the transfers.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "forms/lists.h"
#include "platform/services.h"
#include "platform/text_file.h"
#include "protocols/modbus/modbus.h"
#include "serial/link.h"
#include "transfer/transfer_run.h"

namespace pelvan {

class ControllerAccess {
  public:
    /// The address is read from `address` whenever a request is built; `errors` gets the lines of
    /// the registers that something went wrong with.
    ControllerAccess(Services& services, Link& link, Modbus& modbus, const ComboBox& address,
                     ListBox& errors, TransferRun& run)
        : services_(services), link_(link), modbus_(modbus), address_(address), errors_(errors),
          run_(run) {}

    /// The register's value as text, or "ERROR" after three attempts without a reply.
    ///
    /// What is cut out of a damaged reply or an exception is returned like a value; the register
    /// gets a line among the errors then. Blocks up to 750 ms.
    [[nodiscard]] std::string ReadDataFromControl(float Register_No);
    /// Asks the user and reads again while the value is "ERROR"; "ERROR" when the user gives up.
    [[nodiscard]] std::string CheckCommErrorRead(float Register_No, std::string response);

    /// The model as the controller tells it; asks like `CheckCommErrorRead`.
    [[nodiscard]] std::string read_model();

    /// Writes a register with up to five attempts; false when no reply came (blocks up to 1.25 s).
    ///
    /// A refusal counts as answered: it is recorded in `TextFile` and among the errors.
    [[nodiscard]] bool WriteDataToControl(float Register_No, float DataValue, TextWriter& TextFile);
    /// Asks the user and writes again while a write got no reply; false when the user gives up.
    [[nodiscard]] bool CheckCommErrorWrite(float Register_No, float DataValue,
                                           TextWriter& TextFile);
    /// Whether the last write was echoed as it was sent.
    [[nodiscard]] bool last_write_accepted() const { return last_accepted_; }

    /// Puts the controller's presets back and waits until it answers again, up to thirteen reads.
    /// `pause` runs between them; false when it never answers.
    [[nodiscard]] bool DefaultControl(TextWriter& TextFile, const std::function<void()>& pause);

    enum class Outcome { NoReply, Refused, Damaged, Accepted };
    /// One write, once, recorded nowhere.
    [[nodiscard]] Outcome write_once(float Register_No, float DataValue);
    /// The write of `write_once` that was refused, recorded as `WriteDataToControl` does.
    void record_refusal(float Register_No, float DataValue, TextWriter& TextFile);

    /// A number that the transfer itself works with, so read until a reply is whole: 0 when the
    /// controller refuses or three replies are damaged (listed then); nothing when the user gives
    /// up.
    [[nodiscard]] std::optional<int> read_number(float Register_No);

    /// "Comm Error!" with Retry and Cancel; false also when the transfer was cancelled meanwhile.
    [[nodiscard]] bool ask_retry(const std::string& text = kCommError);
    void list_error(const std::string& response, float register_number, const std::string& value,
                    const std::string& kind = kError);
    /// The reply to the last write, that was neither its echo nor a refusal, among the errors.
    void list_damaged(float register_number, float value);
    /// A line of the setup file that says nothing.
    void list_line(const std::string& line);

    static constexpr float kModelRegister = 0;
    static constexpr char kCommError[] = "Comm Error!";
    static constexpr char kCheckPort[] =
        "Download has been canceled. Need to check Comm Port Settings.";
    static constexpr char kError[] = "Error";

  private:
    [[nodiscard]] std::int16_t address() const;
    [[nodiscard]] std::string request(std::int16_t function, float register_number, float value);
    [[nodiscard]] std::string exchange(const std::string& frame);
    [[nodiscard]] bool read_reply(float register_number);
    [[nodiscard]] std::string value_in_reply() const;
    [[nodiscard]] bool reply_begins(const std::string& text) const;
    void judge_write(float register_number, float value, TextWriter& file);

    Services& services_;
    Link& link_;
    Modbus& modbus_;
    const ComboBox& address_;
    ListBox& errors_;
    TransferRun& run_;
    std::string reply_;       // the last reply's rendering
    std::string write_reply_; // that of the last write
    bool whole_ = false;      // it is the answer to what was asked, undamaged
    bool last_accepted_ = false;
};

} // namespace pelvan
