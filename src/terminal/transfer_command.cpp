// A controller's setup into a file, back, and compared. What went wrong with single registers is
// listed on standard error and makes the command fail.
#include "terminal/commands.h"
#include "terminal/terminal_listener.h"
#include "text/bytes.h"
#include "text/numbers.h"
#include "transfer/comparison.h"
#include "transfer/download.h"
#include "transfer/upload.h"

namespace pelvan {
namespace {

constexpr int kMaxAddress = 247;

struct TransferOptions {
    std::string file;
    int address = 1;
    int retries = 0;
    bool together = false;
    bool yes = false;
    bool compare = false;
    bool incomplete = false;
    std::string profiles; // "yes" or "no", else not given
};

/// The answer that the options give; a question without its option is answered with no.
bool answer_to(TransferQuestion question, const TransferOptions& options) {
    switch (question) {
    case TransferQuestion::OverwriteFile:
    case TransferQuestion::EraseSettings:
        return options.yes;
    case TransferQuestion::UploadWithoutSequence:
        return !options.profiles.empty();
    case TransferQuestion::IncompleteFile:
        return options.incomplete;
    case TransferQuestion::HasProfiles:
        return options.profiles == "yes";
    }
    return false;
}

/// Questions are answered by options.
class TerminalTransfer : public TerminalListener {
  public:
    TerminalTransfer(TerminalApplication& terminal, TerminalEnvironment& environment,
                     const TransferOptions& options)
        : TerminalListener(terminal, environment, options.retries), options_(options) {}

    [[nodiscard]] TransferContext context() {
        return context_of(app().transfer_link, options_.address, options_.together);
    }
    /// Prints what was listed and how it ended; the exit code.
    int report(const TransferResult& result) const;

    bool confirm(TransferQuestion question, const std::string& text) override {
        return ask_yes(text, answer_to(question, options_));
    }
    std::optional<std::string> choose_file_to_save(const std::string&) override {
        return options_.file;
    }

  private:
    const TransferOptions& options_;
};

int TerminalTransfer::report(const TransferResult& result) const {
    for (const std::string& error : errors())
        err() << "pelvan7: " << ascii_with_escapes(error) << "\n";
    if (!result.completed) {
        err() << "pelvan7: not completed\n";
        return exit_code::kFailed;
    }
    if (result.faults == 0) return exit_code::kDone;
    err() << "pelvan7: " << count_text(static_cast<std::size_t>(result.faults), "register")
          << " refused, unreadable or different\n";
    return exit_code::kFailed;
}

TransferResult save(const TransferContext& context, const TransferOptions&) {
    return Download(context).run();
}

TransferResult compare(const TransferContext& context, const TransferOptions& options) {
    return Comparison(context).run(options.file);
}

TransferResult restore(const TransferContext& context, const TransferOptions& options) {
    TransferResult result = Upload(context).run(options.file);
    if (!result.completed || !options.compare) return result;
    result.faults += compare(context, options).faults;
    result.completed = !context.cancel.canceled;
    return result;
}

using Work = TransferResult (*)(const TransferContext&, const TransferOptions&);

int transfer(const TransferOptions& options, Work work, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    TerminalTransfer listener(terminal, environment, options);
    TransferResult result;
    try {
        result = work(listener.context(), options);
    } catch (const RunTimeError& error) {
        show_error_message(terminal.app().services.dialogs, error.number(), error.subject());
    }
    return listener.report(result);
}

std::shared_ptr<TransferOptions> add_command(CLI::App& cli, ChosenCommand& chosen,
                                             const std::string& name, const std::string& text,
                                             Work work) {
    auto options = std::make_shared<TransferOptions>();
    CLI::App* command = cli.add_subcommand(name, text);
    auto* file = command->add_option("file", options->file, "Setup file")->required();
    // A controller is erased before the file is opened, so one that is missing is found out first.
    if (work != save) file->check(CLI::ExistingFile);
    command->add_option("--address", options->address, "Controller address, 1 to 247")
        ->check(CLI::Range(1, kMaxAddress))
        ->capture_default_str();
    command
        ->add_option("--retries", options->retries,
                     "How often to try again, a second later, when the controller stays silent")
        ->check(whole_number_from(0))
        ->capture_default_str();
    command->add_flag("--together", options->together,
                      "Read registers that follow one another with one request");
    command->callback([options, work, &chosen] {
        chosen = [options, work](TerminalEnvironment& environment) {
            return transfer(*options, work, environment);
        };
    });
    return options;
}

} // namespace

void add_transfer_commands(CLI::App& cli, ChosenCommand& chosen) {
    const auto save_options = add_command(
        cli, chosen, "save", "Save a controller's registers and profiles to a file", save);
    cli.get_subcommand("save")->add_flag("--yes", save_options->yes,
                                         "Overwrite a file that is there");
    const auto restore_options =
        add_command(cli, chosen, "restore",
                    "Erase a controller's settings and restore those of a file", restore);
    cli.get_subcommand("restore")->add_flag("--yes", restore_options->yes,
                                            "Erase the controller's settings without asking");
    cli.get_subcommand("restore")->add_flag("--incomplete", restore_options->incomplete,
                                            "Restore also a file without its end or its header");
    cli.get_subcommand("restore")
        ->add_option("--profiles", restore_options->profiles,
                     "Restore also without the model's .cds file: whether the model has profiles")
        ->check(CLI::IsMember({"yes", "no"}));
    cli.get_subcommand("restore")->add_flag("--compare", restore_options->compare,
                                            "Compare with the file afterwards");
    static_cast<void>(add_command(cli, chosen, "compare",
                                  "List the registers that differ from a file's", compare));
}

} // namespace pelvan
