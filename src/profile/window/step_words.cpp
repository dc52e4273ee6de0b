#include "profile/window/step_words.h"

#include <utility>

#include "profile/run_reading.h"

namespace pelvan {
namespace {

bool is_time(RegisterRole role) {
    return role == RegisterRole::Hours || role == RegisterRole::Minutes ||
           role == RegisterRole::Seconds;
}

std::string field_words(const ProfileField& field, int raw) {
    switch (field.role) {
    case RegisterRole::Events:
        return raw == 0 ? std::string() : "events " + events_text(raw);
    case RegisterRole::Wait:
        if (raw == 0) return {};
        break;
    default:
        break;
    }
    return field.name + " " + ProfileFormat::unit_text(field, raw);
}

} // namespace

std::string step_words(const ProfileFormat& format, const ProfileStep& step) {
    const StepKind* kind = format.kind(step.type);
    if (kind == nullptr) return "type " + std::to_string(step.type);
    std::string words;
    const auto add = [&words](const std::string& part) {
        if (!part.empty()) words += (words.empty() ? ": " : ", ") + part;
    };
    bool timed = false;
    for (const ProfileField& field : kind->fields) {
        const auto value = step.fields.find(field.number);
        if (value == step.fields.end()) continue;
        if (!is_time(field.role))
            add(field_words(field, value->second));
        else if (!std::exchange(timed, true))
            add(duration_text(plan_step(format, step).seconds));
    }
    return kind->name + words;
}

std::string events_text(int events) {
    std::string text;
    for (int event = 0; event < 16; ++event)
        if ((events >> event & 1) != 0)
            text += (text.empty() ? "" : ", ") + std::to_string(event + 1);
    return text.empty() ? "none" : text;
}

} // namespace pelvan
