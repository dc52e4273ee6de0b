// Sequence files, which people write by hand: which registers a setup has (.cds) and what ramp
// profiles are made of (.pds).
#include "harness.h"
#include "profile/profile_check.h"
#include "profile/profile_curve.h"
#include "profile/profile_text.h"
#include "registers/sequence_file.h"
#include "registers/setup_file.h"
#include "scratch_file.h"

namespace pelvan::fuzz {
namespace {

void registers_of_a_setup(std::string_view bytes) {
    const std::string path = scratch_file(bytes, "742.cds");
    const int lines = count_lines(path);
    SequenceFile file(path);
    if (file.has_profiles()) static_cast<void>(file.read_profile_registers());
    int count = 0;
    while (const auto number = file.next_register()) {
        require(*number >= 0, "registers have numbers");
        ++count;
    }
    require(count <= register_lines(lines), "a register has its line");
}

void use(const ProfileFormat& format) {
    ProfileSet profiles;
    Profile& profile = profiles[1] = new_profile(format, 1);
    for (const auto& [type, kind] : format.kinds) {
        require(kind.type == type && kind.find(RegisterRole::None) == kind.find(RegisterRole::None),
                "a kind is found by its type");
        profile.steps.insert(profile.steps.begin(), new_step(kind));
        for (const ProfileField& field : kind.fields) {
            require(field.allows(field.preset()), "a first value is allowed");
            const std::string text = ProfileFormat::value_text(field, field.preset());
            static_cast<void>(ProfileFormat::parse_value(field, text));
            static_cast<void>(ProfileFormat::limits_text(field));
        }
    }
    static_cast<void>(check_profiles(format, profiles));
    static_cast<void>(unroll(format, profiles, {}));
    static_cast<void>(read_profiles(format, profile_lines(format, profiles)));
}

void run(Input& input) {
    if (input.flag()) return registers_of_a_setup(input.rest());
    const LoadedFormat loaded = ProfileFormat::load(scratch_file(input.rest(), "742.pds"));
    require(loaded.format.has_value() == loaded.problem.empty(), "a file is taken or refused");
    if (loaded.format) use(*loaded.format);
}

const Target target("sequence_files", run);

} // namespace
} // namespace pelvan::fuzz
