// What a transfer tells and asks on its way; a window and a terminal command each answer in their
// own manner. All calls come from inside the transfer, which goes on when they return.
#pragma once

#include <optional>
#include <string>

namespace pelvan {

/// Set by whoever wants the transfer to end, and by the transfer when somebody gives up at one of
/// its questions; it then ends at the next register.
struct CancelFlag {
    bool canceled = false;
    /// The controller stayed silent, and nobody wanted to ask it again.
    bool gave_up = false;

    void give_up() {
        gave_up = gave_up || !canceled;
        canceled = true;
    }
};

/// Questions that are answered with yes or no.
enum class TransferQuestion {
    OverwriteFile,
    UploadWithoutSequence,
    HasProfiles,
    IncompleteFile,
    EraseSettings
};

class TransferListener {
  public:
    virtual ~TransferListener() = default;

    /// No other transfer may be started from here on, and this one may be cancelled.
    virtual void begun() = 0;
    /// The questions are answered: whoever waits is to be shown that work goes on.
    virtual void working() = 0;
    /// A step, for the history.
    virtual void log(const std::string& text) = 0;
    /// A line for the list of errors, at a position of that list, or at its end without one.
    virtual void list_error(const std::string& text, std::optional<int> position) = 0;
    /// Earlier lines of the list of errors count no more.
    virtual void clear_errors() = 0;
    /// `of` is at least 1.
    virtual void progress(int done, int of) = 0;
    /// Comes after every register.
    virtual void let_events_run() = 0;

    /// Whether to try again.
    virtual bool ask_retry(const std::string& text) = 0;
    virtual bool confirm(TransferQuestion question, const std::string& text) = 0;
    /// A message, with a title where one is given.
    virtual void tell(const std::string& text, const std::string& title) = 0;
    void tell(const std::string& text) { tell(text, {}); }
    /// Where to save a setup; nothing ends the download.
    virtual std::optional<std::string> choose_file_to_save(const std::string& proposed_name) = 0;
    /// The file to save in is there from here on, and what it held before is gone.
    virtual void saving_in(const std::string& /*path*/) {}
};

} // namespace pelvan
