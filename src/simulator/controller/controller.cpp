#include "simulator/controller/controller.h"

#include <utility>

#include "simulator/controller/model_tables.h"

namespace pelvan::simulator {
namespace {

constexpr double kRestartMs = 2000;
constexpr std::int16_t kKey1 = 1512;
constexpr std::int16_t kKey2 = 1600;
constexpr std::int16_t kResetAll = 800;

} // namespace

Controller::Controller(int model, int speed, std::map<std::uint16_t, int> refused)
    : table_(make_register_table(model)), coils_(model == 742 ? 16 : 8), inputs_(12),
      has_profiles_(model == 742), speed_(speed), refused_(std::move(refused)) {
    add_loops();
    show();
}

bool Controller::is_profile_register(std::uint16_t number) const {
    return has_profiles_ && Profiles::is_register(number);
}

ExceptionCode Controller::read(std::uint16_t number, std::int16_t& value) const {
    return is_profile_register(number) ? profiles_.read(number, value) : table_.read(number, value);
}

ExceptionCode Controller::check_write(std::uint16_t number, std::int16_t value) const {
    const auto refused = refused_.find(number);
    if (refused != refused_.end() && value > refused->second) return ExceptionCode::IllegalValue;
    if (is_profile_register(number)) {
        const bool runs = profiles_.selected_number() == run_.place().profile;
        return runs && Profiles::is_edit(number) ? ExceptionCode::IllegalValue
                                                 : ExceptionCode::None;
    }
    const bool of_the_run = number == reg::kSetPoint1 || number == reg::kSetPoint2;
    if (of_the_run && run_.active()) return ExceptionCode::IllegalValue;
    return table_.check_write(number, value);
}

ExceptionCode Controller::write(std::uint16_t number, std::int16_t value) {
    const ExceptionCode code = check_write(number, value);
    if (code != ExceptionCode::None) return code;
    if (is_profile_register(number)) return profiles_.write(number, value);
    switch (number) {
    case reg::kRunCommand:
        return obey(static_cast<RunCommand>(value));
    case reg::kPowerFails:
        fail_power();
        return ExceptionCode::None;
    case reg::kReset:
        if (value == kResetAll) return reset();
        break;
    case reg::kSetPoint1:
    case reg::kSetPoint2:
        run_.switch_outputs_on();
        break;
    default:
        break;
    }
    return table_.write(number, value);
}

ExceptionCode Controller::write_many(std::uint16_t first, const std::vector<std::int16_t>& values) {
    std::uint16_t number = first;
    for (const std::int16_t value : values) {
        const ExceptionCode code = check_write(number++, value);
        if (code != ExceptionCode::None) return code;
    }
    number = first;
    for (const std::int16_t value : values) {
        const ExceptionCode code = write(number++, value);
        if (code != ExceptionCode::None) return code;
    }
    return ExceptionCode::None;
}

ExceptionCode Controller::obey(RunCommand command) {
    RunLoops loops = run_loops();
    const RunPlace place{table_.value(reg::kStartProfile), table_.value(reg::kStartStep)};
    const bool done = command == RunCommand::Start ? run_.start(place, profiles_, loops)
                                                   : run_.obey(command, profiles_, loops);
    if (!done) return ExceptionCode::IllegalValue;
    use_plants();
    apply_run(loops);
    show();
    return ExceptionCode::None;
}

ExceptionCode Controller::reset() {
    if (table_.value(reg::kResetKey1) != kKey1 || table_.value(reg::kResetKey2) != kKey2) {
        return ExceptionCode::IllegalValue;
    }
    // Profiles stay: they are erased one by one, through their own registers.
    table_.restore_presets();
    run_ = ProfileRun{};
    use_plants();
    show();
    silent_until_ms_ = now_ms_ + kRestartMs;
    return ExceptionCode::None;
}

void Controller::fail_power() {
    silent_until_ms_ = now_ms_ + kRestartMs;
    power_back_us_ = now_us_ + static_cast<std::int64_t>(kRestartMs * 1000) * speed_;
}

void Controller::return_power(RunLoops& loops) {
    power_back_us_.reset();
    const auto choice = static_cast<AfterPowerFailure>(table_.value(reg::kAfterPowerFailure));
    if (choice == AfterPowerFailure::Hold) run_.obey(RunCommand::Hold, profiles_, loops);
    if (choice == AfterPowerFailure::End) run_.obey(RunCommand::End, profiles_, loops);
}

} // namespace pelvan::simulator
