#include "terminal/profile_terminal.h"

#include "profile/profile_difference.h"

namespace pelvan {

void ProfileReport::say(const std::string& line) {
    if (!json_) out_ << line << std::endl;
}

void ProfileReport::problem(const std::string& sentence) {
    err_ << "pelvan7: " << sentence << std::endl;
    problems_.push_back(sentence);
}

void ProfileReport::problems(const std::vector<std::string>& sentences) {
    for (const std::string& sentence : sentences)
        problem(sentence);
}

void ProfileReport::show_now(const Json& object) {
    if (json_) out_ << object.text() << std::endl;
    shown_ = true;
}

int ProfileReport::end() {
    if (json_ && !shown_) {
        object_.set("problems", problems_);
        out_ << object_.text() << std::endl;
    }
    return problems_.empty() ? exit_code::kDone : exit_code::kFailed;
}

ProfileTerminal::ProfileTerminal(TerminalApplication& terminal,
                                 TerminalEnvironment& given_environment,
                                 const ProfileOptions& given)
    : TerminalListener(terminal, given_environment, given.retries), options(given),
      environment(given_environment), report(given_environment, given.json), terminal_(terminal) {}

std::optional<ProfileModel> ProfileTerminal::read_model() {
    LoadedModel loaded = read_profile_model(context());
    if (!loaded.model) report.problem(loaded.problem);
    return std::move(loaded.model);
}

Json profile_json(const ProfileFormat& format, const Profile& profile) {
    Json steps = Json::array();
    int number = 0;
    for (const ProfileStep& step : profile.steps) {
        const StepKind* kind = format.kind(step.type);
        Json fields = Json::array();
        for (const auto& [field_number, value] : step.fields) {
            const ProfileField* field = kind ? kind->find(field_number) : nullptr;
            Json json = Json::object().set("register", field_number).set("value", value);
            if (field)
                json.set("name", field->name).set("text", ProfileFormat::unit_text(*field, value));
            fields.add(std::move(json));
        }
        steps.add(Json::object()
                      .set("step", ++number)
                      .set("type", step.type)
                      .set("kind", kind ? Json(kind->name) : Json())
                      .set("fields", std::move(fields)));
    }
    return Json::object()
        .set("number", profile.number)
        .set("name", profile_name(format, profile))
        .set("steps", std::move(steps));
}

std::vector<std::string> profile_table(const ProfileFormat& format, const Profile& profile) {
    std::vector<std::string> lines{profile_place(profile.number) + quoted_name(format, profile)};
    int number = 0;
    for (const ProfileStep& step : profile.steps) {
        const StepKind* kind = format.kind(step.type);
        std::string line = "  " + std::to_string(++number) + "  " +
                           (kind ? kind->name : "type " + std::to_string(step.type));
        const char* separator = ": ";
        if (kind)
            for (const ProfileField& field : kind->fields) {
                const auto value = step.fields.find(field.number);
                if (value == step.fields.end()) continue;
                line += std::exchange(separator, ", ") + field.name + " " +
                        ProfileFormat::unit_text(field, value->second);
            }
        lines.push_back(line);
    }
    return lines;
}

Json reading_json(const RunReading& reading) {
    const auto loops = [](const std::array<std::optional<double>, kLoops>& values) {
        return Json(std::vector<std::optional<double>>(values.begin(), values.end()));
    };
    return Json::object()
        .set("state", run_word(reading.state))
        .set("profile", reading.profile)
        .set("step", reading.step)
        .set("seconds_left", reading.seconds_left)
        .set("jumps_done", reading.jumps_done)
        .set("set_points", loops(reading.set_points))
        .set("process_values", loops(reading.process_values))
        .set("events", reading.events);
}

} // namespace pelvan
