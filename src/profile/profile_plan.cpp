#include "profile/profile_plan.h"

#include "profile/profile_difference.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

std::string steps_text(const Profile& profile) {
    return count_text(profile.steps.size(), "step");
}

std::string described(const ProfileFormat& format, const Profile& profile) {
    return profile_place(profile.number) + quoted_name(format, profile);
}

/// "Profile 3", "Profiles 1, 2, 4".
std::string numbers_text(const std::set<int>& numbers) {
    std::string text = numbers.size() == 1 ? "Profile" : "Profiles";
    for (const int number : numbers)
        text += (number == *numbers.begin() ? " " : ", ") + std::to_string(number);
    return text;
}

std::string write_sentence(const ProfilePlan& plan, const Profile& wanted) {
    const ProfileFormat& format = plan.model->format;
    const auto before = plan.before.find(wanted.number);
    if (before == plan.before.end())
        return described(format, wanted) + " is created with " + steps_text(wanted) + ".";
    return described(format, before->second) + " with " + steps_text(before->second) +
           " is replaced by" + quoted_name(format, wanted) + " with " + steps_text(wanted) + ".";
}

std::string erase_sentence(const ProfilePlan& plan, int number) {
    const auto before = plan.before.find(number);
    const std::string what = before == plan.before.end()
                                 ? profile_place(number)
                                 : described(plan.model->format, before->second);
    return what +
           (number < plan.highest
                ? " is erased; its number stays, without a profile, while a higher one is there."
                : " is erased, and its number with it.");
}

} // namespace

std::vector<std::string> plan_sentences(const ProfilePlan& plan) {
    if (!plan.model || !plan.refusal.empty()) return {plan.refusal};
    std::vector<std::string> sentences;
    for (const auto& [number, wanted] : plan.wanted)
        sentences.push_back(write_sentence(plan, wanted));
    for (const int number : plan.erased)
        sentences.push_back(erase_sentence(plan, number));
    const auto add_for = [&](const std::set<int>& numbers, const std::string& one,
                             const std::string& many) {
        if (!numbers.empty())
            sentences.push_back(numbers_text(numbers) + (numbers.size() == 1 ? one : many));
    };
    add_for(plan.unchanged, " is there already as it shall be and is not written.",
            " are there already as they shall be and are not written.");
    add_for(plan.fillers, " is created to keep the numbering, and erased again at the end.",
            " are created to keep the numbering, and erased again at the end.");
    for (const std::string& problem : plan.unread)
        sentences.push_back("Cannot be written back if something goes wrong: " + problem);
    if (!plan.model->format.run_field(RegisterRole::State) && plan.changes_anything())
        sentences.push_back("Whether one of them runs cannot be told: the model's .pds file has no "
                            "RUN section.");
    return sentences;
}

std::set<int> filler_numbers(const ProfileSet& wanted, const std::set<int>& present) {
    std::set<int> fillers;
    const int highest = wanted.empty() ? 0 : wanted.rbegin()->first;
    for (int number = 1; number < highest; ++number)
        if (!wanted.contains(number) && !present.contains(number)) fillers.insert(number);
    return fillers;
}

} // namespace pelvan
