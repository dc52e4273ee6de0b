// A controller's setup into a file, back, and compared, through the transfer window's own work.
// What went wrong with single registers is listed on standard error and makes the command fail.
#include "terminal/commands.h"

namespace pelvan {
namespace {

constexpr int kMostAddress = 247;
constexpr int kProgressStep = 10; // percent

struct TransferOptions {
    std::string file;
    int address = 1;
    int retries = 0;
    bool yes = false;
    bool compare = false;
};

/// Prints how far the bar has come, in steps.
class Progress {
  public:
    Progress(ProgressBar& bar, std::ostream& err) : bar_(bar), err_(err) {
        bar_.watch([this] { changed(); });
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { bar_.watch({}); }

  private:
    void changed() {
        const int percent = static_cast<int>(100 * bar_.Value() / bar_.Max());
        const int reached = percent - percent % kProgressStep;
        if (reached > shown_) err_ << "pelvan7: " << reached << " %" << std::endl;
        shown_ = reached;
    }
    ProgressBar& bar_;
    std::ostream& err_;
    int shown_ = 0;
};

int report(const frm_DownloadParm& form, TerminalEnvironment& environment) {
    for (int i = 0; i < form.List2.ListCount(); ++i)
        environment.err << "pelvan7: " << form.List2.List(i) << "\n";
    const TransferRun& run = form.run();
    if (!run.completed) {
        environment.err << "pelvan7: not completed\n";
        return exit_code::kFailed;
    }
    if (run.faults == 0) return exit_code::kDone;
    environment.err << "pelvan7: " << run.faults << " registers refused, unreadable or different\n";
    return exit_code::kFailed;
}

int transfer(const TransferOptions& options, Button frm_DownloadParm::*button,
             TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    frm_DownloadParm& form = terminal.app().transfer;
    terminal.answer_questions_yes(options.yes);
    terminal.answer_retries(options.retries);
    terminal.choose_file(options.file);
    terminal.on_events([&] {
        if (environment.stop) form.cancel_transfer();
    });
    form.cmbAddress.set_Text(std::to_string(options.address));
    form.chkCompare.set_Value(options.compare ? 1 : 0);
    const Progress progress(form.ProgressBar1, environment.err);
    (form.*button).press();
    return report(form, environment);
}

std::shared_ptr<TransferOptions> add_command(CLI::App& cli, ChosenCommand& chosen,
                                             const std::string& name, const std::string& text,
                                             Button frm_DownloadParm::*button) {
    auto options = std::make_shared<TransferOptions>();
    CLI::App* command = cli.add_subcommand(name, text);
    auto* file = command->add_option("file", options->file, "Setup file")->required();
    // A controller is erased before the file is opened, so one that is missing is found out first.
    if (button != &frm_DownloadParm::cmdDownload) file->check(CLI::ExistingFile);
    command->add_option("--address", options->address, "Controller address, 1 to 247")
        ->check(CLI::Range(1, kMostAddress))
        ->capture_default_str();
    command
        ->add_option("--retries", options->retries,
                     "How often to try again when the controller stays silent")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    command->callback([options, button, &chosen] {
        chosen = [options, button](TerminalEnvironment& environment) {
            return transfer(*options, button, environment);
        };
    });
    return options;
}

} // namespace

void add_transfer_commands(CLI::App& cli, ChosenCommand& chosen) {
    const auto save =
        add_command(cli, chosen, "save", "Save a controller's registers and profiles to a file",
                    &frm_DownloadParm::cmdDownload);
    cli.get_subcommand("save")->add_flag("--yes", save->yes, "Overwrite a file that is there");
    const auto restore = add_command(cli, chosen, "restore",
                                     "Erase a controller's settings and restore those of a file",
                                     &frm_DownloadParm::cmdUpload);
    cli.get_subcommand("restore")->add_flag("--yes", restore->yes,
                                            "Erase the controller's settings without asking");
    cli.get_subcommand("restore")->add_flag("--compare", restore->compare,
                                            "Compare with the file afterwards");
    static_cast<void>(add_command(cli, chosen, "compare",
                                  "List the registers that differ from a file's",
                                  &frm_DownloadParm::cmdCompare));
}

} // namespace pelvan
