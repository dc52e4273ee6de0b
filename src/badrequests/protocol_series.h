// What a protocol brings to the bad requests: the series, what a reply means, and the good request.
// The series are made of one read that the user chooses.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "badrequests/bad_request.h"
#include "protocols/tellura_ab/tellura_prot.h"
#include "serial/late_answers.h"
#include "serial/link.h"

namespace pelvan {

/// What to ask whom. Numbers stand as they were typed.
struct BadRequestOptions {
    int protocol = 1; // 0 Full, 1 Modbus, 2 Xon, 3 Tellura/AB
    std::string address = "1";
    /// What the good request reads: a register (Modbus), a command text that begins with "?" (Full,
    /// Xon), a parameter address of four hexadecimal digits (Tellura/AB).
    std::string read = "0";
    /// An address that nobody on the line has.
    std::string other_address = "32";
    TelluraCheck check = TelluraCheck::Bcc;
    /// How long an answer to a bad request is waited for.
    double wait_ms = 1000;
};

/// What the options begin with in a protocol.
[[nodiscard]] BadRequestOptions default_options(int protocol);

/// The range that the time to wait must lie in.
inline constexpr double kMinBadRequestWaitMs = 100;
inline constexpr double kMaxBadRequestWaitMs = 10000;

/// How the good request went.
struct GoodReply {
    enum class Kind { Answered, Refused, Damaged, Nothing };
    Kind kind = Kind::Nothing;
    std::string text = {};
    /// What came besides the answer.
    std::string more = {};
};

/// Sends bytes and returns the first reply, as one piece; empty when none comes in time.
using AskLine = std::function<std::string(const std::string& bytes, double timeout_ms)>;

class ProtocolSeries {
  public:
    virtual ~ProtocolSeries() = default;

    /// Who is tested, as the other tools know whom they ask.
    [[nodiscard]] virtual Asked whom() const = 0;
    /// Settle times that end a reply.
    [[nodiscard]] virtual std::int16_t quiet_chars() const = 0;
    /// "Modbus RTU, address 1"
    [[nodiscard]] virtual std::string title() const = 0;
    /// The requests, for a line with these settings.
    [[nodiscard]] virtual std::vector<BadRequest> requests(const std::string& settings) const = 0;
    [[nodiscard]] virtual Reaction reaction(const std::string& reply) const = 0;
    /// Bytes of the line as a person reads them in this protocol.
    [[nodiscard]] virtual std::string shown(std::string_view bytes) const = 0;
    /// The good request, as it is listed.
    [[nodiscard]] virtual std::string good_text() const = 0;
    /// Sends it once; blocks up to two seconds, in Full and Tellura/AB longer on a bad line.
    [[nodiscard]] virtual GoodReply ask(const AskLine& line) = 0;
};

/// The series of the options' protocol, or what is wrong with the options in `refusal`. All is
/// borrowed.
[[nodiscard]] std::unique_ptr<ProtocolSeries>
make_series(const BadRequestOptions& options, Link& link, Dialogs& dialogs, std::string& refusal);

// For the protocols' own files.

inline constexpr char kSameAddress[] = "The other address must not be the controller's own.";

/// A whole number from a box; nothing, with the sentence, when it is none in the range.
[[nodiscard]] bool number_in(const std::string& text, long min, long max, const char* what,
                             long& number, std::string& refusal);

[[nodiscard]] BadRequest not_applicable(const char* name, const char* why);

/// The request once more with a parity that the line does not have, or why it is not sent. Without
/// a parity a damaged character may be read as another one: only a protocol with a check stands
/// that (`checked`).
[[nodiscard]] BadRequest with_other_parity(BadRequest request, const std::string& settings,
                                           bool checked);

[[nodiscard]] std::unique_ptr<ProtocolSeries> make_modbus_series(const BadRequestOptions& options,
                                                                 std::string& refusal);
[[nodiscard]] std::unique_ptr<ProtocolSeries> make_full_series(const BadRequestOptions& options,
                                                               Link& link, Dialogs& dialogs,
                                                               std::string& refusal);
[[nodiscard]] std::unique_ptr<ProtocolSeries> make_xon_series(const BadRequestOptions& options,
                                                              std::string& refusal);
[[nodiscard]] std::unique_ptr<ProtocolSeries> make_tellura_series(const BadRequestOptions& options,
                                                                  Link& link, Dialogs& dialogs,
                                                                  std::string& refusal);

} // namespace pelvan
