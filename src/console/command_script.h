// A command script: a text file of commands, one a line, that goes to the controller line by line.
// What a line means and how it is sent is the caller's; what to do about a line that fails is the
// listener's to decide.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "console/send_outcome.h"

namespace pelvan {

struct ScriptLine {
    int number = 0; // in the file, from 1
    std::string text;
};

/// The lines of a script; empty ones and those that begin with ";" are left out. Nothing when the
/// file is no text: a line holds a control character other than a tab. Raises the file's errors.
[[nodiscard]] std::optional<std::vector<ScriptLine>> read_command_script(const std::string& path);

enum class ScriptAnswer { Retry, Skip, Cancel };

/// Whoever has a script sent.
class ScriptListener {
  public:
    virtual ~ScriptListener() = default;
    /// A line is due, or due again, with `done` of `count` behind it. False cancels before it.
    virtual bool line_due(const ScriptLine& line, std::size_t done, std::size_t count) = 0;
    virtual ScriptAnswer line_failed(const ScriptLine& line, const std::string& reason) = 0;
};

struct ScriptSummary {
    std::size_t accepted = 0;
    std::size_t skipped = 0;
    std::size_t left = 0; // after a cancel
    /// "2 lines sent, 1 skipped after a failure, cancelled with 3 left".
    [[nodiscard]] std::string text() const;
};

/// Sends one line.
using SendLine = std::function<SendOutcome(const std::string& line)>;

/// Sends the lines in order, each until it is accepted or given up.
[[nodiscard]] ScriptSummary send_script(const std::vector<ScriptLine>& lines,
                                        const SendLine& send_line, ScriptListener& listener);

} // namespace pelvan
