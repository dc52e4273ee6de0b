#include "profile/profile_reader.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "profile/step_plan.h"
#include "registers/setup_file.h"

namespace pelvan {
namespace {

constexpr int kAttempts = 3;

/// Progress counts in hundredths of a profile: how many steps all of them have is not known before.
constexpr int kParts = 100;

class OneProfile {
  public:
    OneProfile(ProfileSelection& selection, int number, const StepDone& step_done)
        : selection_(selection), step_done_(step_done) {
        profile_.number = number;
    }

    ProfileRead read() {
        if (take_problem(selection_.select(profile_.number))) return {{}, problems_};
        const NumberRead steps = selection_.step_count();
        if (take_problem(steps.problem) || *steps.value <= 0) return {{}, problems_};
        read_fields(selection_.format().own, profile_.own);
        for (int step = 1; step <= *steps.value && !canceled(); ++step) {
            read_step(step);
            if (step_done_) step_done_(step, *steps.value);
        }
        return {std::move(profile_), std::move(problems_)};
    }

  private:
    [[nodiscard]] bool canceled() const { return selection_.run().canceled(); }

    bool take_problem(const std::string& problem) {
        if (!problem.empty()) problems_.push_back(problem);
        return !problem.empty();
    }

    void read_step(int number) {
        const ProfileFormat& format = selection_.format();
        if (take_problem(selection_.select_step(number))) return;
        const NumberRead type = selection_.read(format.step_type);
        if (take_problem(type.problem)) return;
        ProfileStep& step = profile_.steps.emplace_back(ProfileStep{*type.value, {}});
        const StepKind* kind = format.kind(step.type);
        if (!kind) {
            problems_.push_back(profile_place(profile_.number, number) +
                                ": the .pds file has no type " + std::to_string(step.type) + ".");
            return;
        }
        read_fields(kind->fields, step.fields);
    }

    void read_fields(const std::vector<ProfileField>& fields, std::map<int, int>& values) {
        for (const ProfileField& field : fields) {
            if (canceled()) return;
            const NumberRead read = selection_.read(field);
            if (!take_problem(read.problem) && !is_skip_mark(std::to_string(*read.value)))
                values[field.number] = *read.value;
        }
    }

    ProfileSelection& selection_;
    const StepDone& step_done_;
    Profile profile_;
    std::vector<std::string> problems_;
};

} // namespace

ProfileRead read_profile(ProfileSelection& selection, int number, const StepDone& step_done) {
    ProfileRead read;
    std::string problem;
    for (int i = 0; i < kAttempts; ++i) {
        read = OneProfile(selection, number, step_done).read();
        if (!read.profile || selection.run().canceled()) return read;
        problem = selection.confirm();
        if (problem.empty()) return read;
    }
    // What was read may be another profile's.
    return {{}, {problem}};
}

template <class Work> ProfileReadResult ProfileReader::read_from_controller(Work work) {
    ProfileReadResult result;
    if (!run_.claim) {
        result.problems.push_back(link_.refusal());
        return result;
    }
    run_.listener.begun();
    LoadedModel loaded = read_profile_model(run_);
    result.model = std::move(loaded.model);
    if (result.model) {
        result.identity = run_.access.read_identity();
        run_.access.remember_controller(result.identity);
        ProfileSelection selection(run_, result.model->format);
        const NumberRead highest = selection.highest();
        result.highest = highest.value.value_or(0);
        run_.listener.working();
        if (highest.value)
            work(result, selection);
        else
            result.problems.push_back(highest.problem);
    } else {
        result.problems.push_back(loaded.problem);
    }
    if (!run_.canceled())
        if (std::string doubt = doubt_at_end(run_.access); !doubt.empty())
            result.problems.push_back(std::move(doubt));
    result.complete = result.problems.empty() && !run_.canceled();
    run_.access.leave_line();
    return result;
}

ProfileReadResult ProfileReader::read(std::optional<int> number) {
    return read_from_controller([&](ProfileReadResult& result, ProfileSelection& selection) {
        read_profiles(result, selection, number.value_or(1), number.value_or(result.highest));
    });
}

ProfileReadResult ProfileReader::read_with_jumps(int number) {
    return read_from_controller([&](ProfileReadResult& result, ProfileSelection& selection) {
        std::set<int> wanted{number};
        std::set<int> read;
        while (!wanted.empty() && !run_.canceled()) {
            const int next = wanted.extract(wanted.begin()).value();
            if (!read.insert(next).second) continue;
            read_profiles(result, selection, next, next);
            const auto profile = result.profiles.find(next);
            if (profile == result.profiles.end()) continue;
            for (const ProfileStep& step : profile->second.steps)
                if (const auto target = plan_step(selection.format(), step).jump_profile)
                    wanted.insert(*target);
        }
    });
}

/// Numbers beyond those in use are passed over.
void ProfileReader::read_profiles(ProfileReadResult& result, ProfileSelection& selection, int first,
                                  int last) {
    if (first < 1 || last > result.highest) return;
    for (int n = first; n <= last && !run_.canceled(); ++n) {
        const auto tell = [&](int step, int of) {
            run_.listener.progress((n - first) * kParts + step * kParts / of,
                                   (last - first + 1) * kParts);
        };
        ProfileRead read = read_profile(selection, n, tell);
        std::ranges::move(read.problems, std::back_inserter(result.problems));
        if (read.profile) result.profiles.emplace(n, std::move(*read.profile));
    }
}

} // namespace pelvan
