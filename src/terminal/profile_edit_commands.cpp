// Ramp profiles shown, checked, written and erased.
#include <algorithm>
#include <filesystem>

#include "profile/profile_check.h"
#include "profile/profile_curve.h"
#include "profile/profile_runner.h"
#include "profile/profile_text.h"
#include "profile/profile_writer.h"
#include "profile/step_editing.h"
#include "registers/setup_file.h"
#include "terminal/profile_terminal.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kInPart[] = "Not everything could be read: what stands here is not complete.";

/// The model in a setup file's header; nothing in a file of profiles alone.
std::optional<int> model_of_file(const std::string& path) {
    const auto reader = opentextfile(path);
    std::string line;
    for (int i = 0; i < kModelLine && !reader->AtEndOfStream(); ++i)
        line = reader->readline();
    if (!trim(line).starts_with("Model #:")) return std::nullopt;
    // Any text may stand there; what no register holds is no model either.
    return static_cast<int>(std::clamp(model_in_header(line), -32768.0F, 32767.0F));
}

Json findings_json(const std::vector<ProfileFinding>& findings) {
    Json json = Json::array();
    for (const ProfileFinding& finding : findings)
        json.add(Json::object()
                     .set("profile", finding.profile)
                     .set("step", finding.step)
                     .set("sentence", finding.sentence));
    return json;
}

/// The profiles of a file; what is wrong with it is a problem.
std::optional<ProfileSet> load(const ProfileFormat& format, const std::string& path,
                               ProfileReport& report) {
    ReadProfiles file = load_profiles(format, path);
    for (const std::string& note : file.notes)
        report.say("Note: " + note);
    report.set("notes", file.notes);
    if (file.problem.empty()) return std::move(file.profiles);
    report.problem(file.problem);
    return std::nullopt;
}

void show_profile(const ProfileFormat& format, const Profile& profile, ProfileReport& report) {
    for (const std::string& line : profile_table(format, profile))
        report.say(line);
}

Json differences_json(const std::vector<ProfileDifference>& differences) {
    Json json = Json::array();
    for (const ProfileDifference& difference : differences)
        json.add(Json::object()
                     .set("profile", difference.profile)
                     .set("step", difference.step)
                     .set("register", difference.register_number)
                     .set("sentence", difference.sentence));
    return json;
}

void report_result(const ProfileWriteResult& result, ProfileReport& report) {
    report.problems(result.problems);
    for (const ProfileDifference& difference : result.differences)
        report.problem(difference.sentence);
    report.set("completed", result.completed);
    report.set("differences", differences_json(result.differences));
}

std::string numbers_text(const std::set<int>& numbers) {
    std::string text;
    for (const int number : numbers)
        text += (text.empty() ? "" : ", ") + std::to_string(number);
    return text;
}

/// What a writing that failed leaves behind, or takes back.
void take_back(ProfileTerminal& terminal, ProfileWriter& writer, const ProfilePlan& plan,
               const ProfileWriteResult& failed) {
    if (failed.touched.empty()) return;
    const std::string left = "Not as before or only in part: ";
    if (failed.met_another) return terminal.report.problem(left + numbers_text(failed.touched));
    if (!terminal.options.put_back)
        return terminal.report.problem(left + numbers_text(failed.touched) +
                                       ". --put-back would have written back what was there.");
    terminal.environment.stop = false; // the interrupt was for the writing
    const ProfileWriteResult back = writer.restore_previous(plan, failed);
    terminal.report.problems(back.problems);
    terminal.report.set("put_back", back.completed);
    if (back.completed) return terminal.report.say("What was there before is written back.");
    std::set<int> touched = failed.touched;
    touched.insert(back.touched.begin(), back.touched.end());
    terminal.report.problem(left + numbers_text(touched) + ". It could not be written back whole.");
}

template <class MakePlan>
void change(ProfileTerminal& terminal, MakePlan make_plan, const std::string& question) {
    ProfileReport& report = terminal.report;
    ProfileWriter writer(terminal.context());
    const ProfilePlan plan = make_plan(writer);
    if (!plan.refusal.empty()) return report.problem(plan.refusal);
    const auto sentences = plan_sentences(plan);
    report.set("plan", sentences);
    for (const std::string& sentence : sentences)
        report.say(sentence);
    if (!plan.changes_anything()) {
        report.set("completed", true);
        return report.say("Nothing is to be changed.");
    }
    if (terminal.options.put_back && !plan.incomplete.empty())
        return report.problem("What is there now could not be read whole, so --put-back could not "
                              "write it back: nothing was changed.");
    if (!terminal.ask_yes(question, terminal.options.yes))
        return report.problem("Nothing was changed.");
    const ProfileWriteResult result = writer.write(plan);
    report_result(result, report);
    if (result.completed)
        report.say("Done, and found as it should be.");
    else
        take_back(terminal, writer, plan, result);
}

/// What the options choose of a file's profiles, under the number that they say.
std::optional<ProfileSet> chosen(const ProfileFormat& format, const ProfileSet& profiles,
                                 const ProfileOptions& options, ProfileReport& report) {
    ProfileSet set = profiles;
    if (options.profile) {
        std::erase_if(set, [&](const auto& one) { return one.first != *options.profile; });
        if (set.empty()) {
            report.problem("The file has no profile " + std::to_string(*options.profile) + ".");
            return std::nullopt;
        }
    }
    if (!options.to) return set;
    if (set.size() != 1) {
        report.problem("--to needs one profile: say with --profile which of the file's.");
        return std::nullopt;
    }
    return ProfileSet{{*options.to, copied_profile(format, set.begin()->second, *options.to)}};
}

/// Findings on the profiles that are to be written; their jumps may lead to all of the file.
std::vector<ProfileFinding> findings_on(const ProfileFormat& format, const ProfileSet& wanted,
                                        ProfileSet all, const ProfileOptions& options) {
    for (const auto& [number, profile] : wanted)
        all[number] = profile;
    std::vector<ProfileFinding> findings;
    for (const auto& [number, profile] : wanted)
        std::ranges::copy(check_profile(format, all, number, {options.steepest, {}}),
                          std::back_inserter(findings));
    return findings;
}

void report_findings(const std::vector<ProfileFinding>& findings, bool fail,
                     ProfileReport& report) {
    report.set("findings", findings_json(findings));
    for (const ProfileFinding& finding : findings)
        if (fail)
            report.problem(finding.sentence);
        else
            report.say("Note: " + finding.sentence);
}

/// "2:05:00" from where the set points begin; "no end" where it has none.
std::string total_time(const ProfileCurve& curve) {
    return curve.how == CurveEnd::Ended ? duration_text(curve.seconds) : "no end";
}

} // namespace

void profile_list(ProfileTerminal& terminal) {
    const ProfileReadResult read = ProfileReader(terminal.context()).read();
    terminal.report.problems(read.problems);
    if (!read.model) return;
    const ProfileFormat& format = read.model->format;
    CurveStart start;
    if (format.runs()) {
        ProfileRunner runner(terminal.app().profile_link, terminal.app().modbus,
                             terminal.context().address, format);
        if (const auto reading = runner.poll().reading)
            for (std::size_t loop = 0; loop < kLoops; ++loop)
                start.set_points[loop] = reading->process_values[loop].value_or(0);
    }
    Json list = Json::array();
    for (const auto& [number, profile] : read.profiles) {
        start.profile = number;
        const ProfileCurve curve = unroll(format, read.profiles, start);
        const std::size_t steps = profile.steps.size();
        terminal.report.say(std::to_string(number) + quoted_name(format, profile) + ", " +
                            count_text(steps, "step") + ", " + total_time(curve));
        list.add(Json::object()
                     .set("number", number)
                     .set("name", profile_name(format, profile))
                     .set("steps", static_cast<int>(steps))
                     .set("seconds", curve.seconds)
                     .set("ends", curve.how == CurveEnd::Ended));
    }
    if (!read.complete)
        terminal.report.say(kInPart);
    else if (read.profiles.empty())
        terminal.report.say("The controller has no profile.");
    terminal.report.set("model", read.model->number);
    terminal.report.set("profiles", std::move(list));
}

void profile_show(ProfileTerminal& terminal) {
    const ProfileOptions& options = terminal.options;
    ProfileReport& report = terminal.report;
    const ProfileReadResult read = ProfileReader(terminal.context()).read(options.profile);
    report.problems(read.problems);
    if (!read.model) return;
    const ProfileFormat& format = read.model->format;
    if (options.profile && read.profiles.empty() && read.problems.empty())
        return report.problem("There is no profile " + std::to_string(*options.profile) + ".");
    Json list = Json::array();
    for (const auto& [number, profile] : read.profiles) {
        list.add(profile_json(format, profile));
        if (options.file.empty()) show_profile(format, profile, report);
    }
    report.set("profiles", std::move(list));
    if (!read.complete) report.say(kInPart);
    if (options.file.empty() || !read.complete) return;
    if (fileexists(options.file) &&
        !terminal.ask_yes("File already exists. Do you want to overwrite this file?", options.yes))
        return report.problem("Nothing was saved.");
    const std::string problem = save_profiles(format, read.profiles, options.file);
    if (!problem.empty()) report.problem(problem);
}

void profile_check(const ProfileOptions& options, const std::string& directory,
                   ProfileReport& report) {
    const auto number = options.model ? options.model : model_of_file(options.file);
    if (!number)
        return report.problem("The file does not say which model it is for: say it with --model.");
    const LoadedModel loaded = load_profile_model(directory, *number);
    if (!loaded.model) return report.problem(loaded.problem);
    const ProfileFormat& format = loaded.model->format;
    const auto profiles = load(format, options.file, report);
    if (!profiles) return;
    for (const auto& [place, profile] : *profiles) {
        report.say(profile_place(place) + quoted_name(format, profile) + ", " +
                   count_text(profile.steps.size(), "step"));
    }
    const auto findings = check_profiles(format, *profiles, {options.steepest, {}});
    report_findings(findings, true, report);
    if (findings.empty()) report.say("Nothing was found wrong.");
}

void profile_write(ProfileTerminal& terminal) {
    const ProfileOptions& options = terminal.options;
    ProfileReport& report = terminal.report;
    const auto model = terminal.read_model();
    if (!model) return;
    const auto of_file = model_of_file(options.file);
    if (of_file && *of_file != model->number)
        return report.problem("The file is of model " + std::to_string(*of_file) +
                              ", the controller is a " + std::to_string(model->number) + ".");
    const auto all = load(model->format, options.file, report);
    if (!all) return;
    const auto wanted = chosen(model->format, *all, options, report);
    if (!wanted) return;
    const auto findings = findings_on(model->format, *wanted, *all, options);
    report_findings(findings, !options.unchecked, report);
    if (!findings.empty() && !options.unchecked)
        return report.problem("Nothing was changed. --unchecked writes all the same.");
    change(
        terminal, [&](ProfileWriter& writer) { return writer.plan_write(model->number, *wanted); },
        "Do you want to write this into the controller?");
}

void profile_copy(ProfileTerminal& terminal) {
    const ProfileOptions& options = terminal.options;
    change(
        terminal,
        [&](ProfileWriter& writer) { return writer.plan_copy(*options.profile, *options.to); },
        "Do you want to write this into the controller?");
}

void profile_erase(ProfileTerminal& terminal) {
    const auto& numbers = terminal.options.profiles;
    change(
        terminal,
        [&](ProfileWriter& writer) {
            ProfilePlan plan = writer.plan_erase({numbers.begin(), numbers.end()});
            for (const int number : numbers)
                if (plan.refusal.empty() && !plan.erased.contains(number))
                    terminal.report.problem("There is no profile " + std::to_string(number) + ".");
            return plan;
        },
        "Do you want to erase this in the controller?");
}

} // namespace pelvan
