// What the window's commands do, beside those that are single edits.
#include "platform/run_time_error.h"
#include "profile/window/curve_picture.h"
#include "profile/window/profile_logic_form.h"
#include "serial/errors.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::size_t kFindingsAsked = 8; // in one question

/// The first kind that keeps the set points, else the first that is no end.
int kind_to_insert(const ProfileFormat& format) {
    std::optional<int> first;
    for (const auto& [type, kind] : format.kinds) {
        if (kind.shape == StepShape::Soak) return type;
        if (kind.shape != StepShape::End && !first) first = type;
    }
    return first.value_or(0);
}

std::string findings_text(const std::vector<ProfileFinding>& findings, const ProfileSet& profiles) {
    std::string text;
    std::size_t count = 0;
    for (const ProfileFinding& finding : findings) {
        if (!profiles.contains(finding.profile) || ++count > kFindingsAsked) continue;
        text += finding.sentence + "\n";
    }
    if (count > kFindingsAsked)
        text += "... and " + std::to_string(count - kFindingsAsked) + " more.\n";
    return text;
}

} // namespace

void frm_ProfileLogic::mnuNew_Click() {
    edit([](ProfileEditor& editor) {
        const int number = editor.free_number();
        return number == 0 ? std::string("All numbers of profiles are in use.")
                           : editor.add_profile(number);
    });
}

void frm_ProfileLogic::mnuOpen_Click() {
    show_opened(files_.open());
}

void frm_ProfileLogic::file_dropped(const std::string& path) {
    if (menu.mnuOpen.Enabled()) show_opened(files_.open(path));
}

void frm_ProfileLogic::show_opened(const std::optional<std::string>& told) {
    if (told) {
        findings_.set_results({});
        say(*told);
    }
    permit();
}

void frm_ProfileLogic::mnuSave_Click() {
    if (files_.save()) say("Saved.");
    permit();
}

void frm_ProfileLogic::mnuSaveAs_Click() {
    if (files_.save_as()) say("Saved.");
    permit();
}

void frm_ProfileLogic::mnuInsert_Click() {
    const int type = kind_to_insert(work_.format());
    edit([type](ProfileEditor& editor) { return editor.insert_step(type); });
}

void frm_ProfileLogic::mnuPrint_Click(ProfilePrint how) {
    std::string path;
    if (how == ProfilePrint::Pdf) {
        FileDialogRequest request;
        request.filter = "PDF files (*.pdf)|*.pdf|All Files (*.*)|*.*|";
        request.file_name = "profile " + std::to_string(work_.editor().place().profile) + ".pdf";
        request.default_extension = "pdf";
        request.overwrite_prompt = true;
        const auto chosen = services_.dialogs.save_file(request);
        if (!chosen) return;
        path = *chosen;
    }
    print_wanted.raise(document(), how, path);
}

ProfileDocument frm_ProfileLogic::document() const {
    ProfileDocument out;
    const Profile* profile = work_.editor().profile();
    if (profile == nullptr) return out;
    out.title = "Profile " + std::to_string(profile->number) + "  " +
                profile_name(work_.format(), *profile);
    const LocalTime now = services_.clock.now();
    out.date = iso_date_text(now) + " " + time_text(now);
    out.lines = {"Model " + std::to_string(work_.model()) + ", " +
                 std::to_string(profile->steps.size()) + " steps, total time " +
                 total_time_text(work_.curve())};
    std::vector<int> columns;
    for (int column = 0; column < steps_.columns(); ++column)
        if (steps_.column_used(column)) columns.push_back(column);
    for (const int column : columns)
        out.headings.push_back(steps_.heading(column));
    for (int row = 0; row < steps_.rows(); ++row) {
        out.rows.emplace_back();
        for (const int column : columns)
            out.rows.back().push_back(steps_.cell(row, column).text);
    }
    return out;
}

void frm_ProfileLogic::with_controller(const std::function<void()>& action) {
    if (line.busy()) return;
    if (const std::string refusal = link_.refusal(); !refusal.empty()) {
        services_.dialogs.message_box(refusal);
        return;
    }
    if (line.address_refused()) return;
    say(""); // what was said of the work before
    findings_.set_results({});
    close_when_done_ = false;
    try {
        action();
    } catch (const RunTimeError& error) {
        show_error_message(services_.dialogs, error.number(), error.subject());
    }
    permit();
    if (close_when_done_) Unload();
}

void frm_ProfileLogic::mnuRead_Click() {
    if (!files_.may_lose("Read the controller, and lose them?")) return;
    with_controller([this] { take_read(line.read()); });
}

void frm_ProfileLogic::take_read(ProfileReadResult result) {
    std::vector<ProfileFinding> problems;
    for (const std::string& problem : result.problems)
        problems.push_back({0, 0, problem});
    const bool nothing =
        !result.model || line.canceled() || (!result.complete && result.profiles.empty());
    if (nothing) {
        say(line.canceled() ? "Cancelled: the profiles here are those of before."
                            : "Nothing could be read.");
        findings_.set_results(std::move(problems));
        if (!line.canceled() && !result.problems.empty())
            services_.dialogs.message_box(result.problems.front(), {}, MessageButtons::Ok,
                                          MessageIcon::Exclamation);
        return;
    }
    const std::size_t count = result.profiles.size();
    if (result.model->number != work_.model()) work_.use(std::move(*result.model));
    files_.forget();
    work_.edit([&result](ProfileEditor& editor) {
        editor.read(std::move(result.profiles));
        return std::string();
    });
    findings_.set_results(std::move(problems));
    say(count_text(count, "profile") + " read." +
        (result.complete ? "" : " Not every value could be read: see the findings."));
}

void frm_ProfileLogic::mnuWrite_Click(bool all) {
    const ProfileEditor& editor = work_.editor();
    ProfileSet wanted = editor.profiles();
    if (!all)
        std::erase_if(wanted, [number = editor.place().profile](const auto& entry) {
            return entry.first != number;
        });
    const std::string found = findings_text(work_.findings(), wanted);
    if (!found.empty() &&
        services_.dialogs.message_box(found + "\nWrite all the same?", {},
                                      MessageButtons::YesNoPreferNo) != MessageAnswer::Yes)
        return;
    with_controller([&] {
        const LineReport report = line.write(work_.model(), wanted);
        if (report.completed) take_written(wanted, {});
        show_report(report);
    });
}

void frm_ProfileLogic::mnuErase_Click() {
    const int number = work_.editor().place().profile;
    with_controller([&] {
        const LineReport report = line.erase(number);
        if (report.completed) {
            take_written({}, {number});
            work_.edit([number](ProfileEditor& editor) { return editor.erase_profile(number); });
        }
        show_report(report);
    });
}

/// What the controller holds now, as far as it is known.
void frm_ProfileLogic::take_written(const ProfileSet& written, const std::vector<int>& erased) {
    work_.edit([&](ProfileEditor& editor) {
        ProfileSet held = editor.in_controller().value_or(ProfileSet());
        for (const auto& [number, profile] : written)
            held[number] = profile;
        for (const int number : erased)
            held.erase(number);
        editor.mark_in_controller(std::move(held));
        return std::string();
    });
}

void frm_ProfileLogic::show_report(const LineReport& report) {
    std::vector<ProfileFinding> results;
    for (const ProfileDifference& difference : report.findings)
        results.push_back({difference.profile, difference.step, difference.sentence});
    findings_.set_results(std::move(results));
    say(report.summary);
}

void frm_ProfileLogic::mnuCopyTo_Click() {
    const int from = work_.editor().place().profile;
    const int most = work_.format().max_profiles();
    const std::string answer = services_.dialogs.input_box(
        "Copy profile " + std::to_string(from) + " to number (1 to " + std::to_string(most) + "):",
        "Copy to Number", std::to_string(work_.editor().free_number()));
    if (answer.empty()) return;
    const auto to = whole_number(answer, 1, most);
    if (!to) {
        say("A profile's number is from 1 to " + std::to_string(most) + ".");
        return;
    }
    const int number = static_cast<int>(*to);
    const bool there = work_.editor().profiles().contains(number);
    if (there && number != from &&
        services_.dialogs.message_box("There is a profile " + answer + ". Replace it?", {},
                                      MessageButtons::YesNoPreferNo) != MessageAnswer::Yes)
        return;
    edit([&](ProfileEditor& editor) { return editor.copy_profile(from, number, there); });
}

void frm_ProfileLogic::mnuSavePng_Click() {
    FileDialogRequest request;
    request.filter = "Pictures (*.png)|*.png|All Files (*.*)|*.*|";
    request.file_name = "run.png";
    request.default_extension = "png";
    request.overwrite_prompt = true;
    if (const auto path = services_.dialogs.save_file(request)) picture_wanted.raise(*path);
}

} // namespace pelvan
