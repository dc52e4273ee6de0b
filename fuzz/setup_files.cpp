// Saved setups and the profiles in them: read, judged, unrolled into a curve and written again.
#include <cmath>

#include "profile/profile_check.h"
#include "profile/profile_curve.h"
#include "profile/profile_text.h"
#include "profile_format_742.h"
#include "registers/setup_file.h"
#include "scratch_file.h"
#include "text/strings.h"

namespace pelvan::fuzz {
namespace {

void setup(std::string_view bytes) {
    const SetupFile file(scratch_file(bytes));
    require(std::isfinite(file.model()), "a model is a number");
    const auto lacks = file.lacks();
    require(!lacks || lacks->ends_with('.'), "what is missing is a sentence");
    for (const std::string& line : file.register_lines())
        if (const auto read = parse_setup_line(line))
            require(read->no_number.has_value() == (std::floor(read->value) != read->value) ||
                        read->no_number,
                    "what is no whole number is told");
}

void check_curve(const ProfileCurve& curve) {
    double time = 0;
    for (const CurveSegment& segment : curve.segments) {
        require(segment.begin == time && segment.end >= segment.begin, "a curve goes on in time");
        time = segment.end;
        require(std::isfinite(segment.to[0]) && std::isfinite(segment.to[1]), "values are numbers");
    }
    require(curve.cut || curve.seconds == time, "a curve ends with its last piece");
    for (const double part : {-0.1, 0.0, 0.3, 1.0, 1.5}) {
        const CurvePoint point = curve.at(curve.seconds * part);
        require(std::isfinite(point.set_points[0]), "every moment has its value");
    }
}

void profiles(std::string_view bytes) {
    const ProfileFormat& format = format_742();
    const std::vector<std::string> lines = split(bytes, '\n');
    const ReadProfiles read = read_profiles(format, lines);
    require(read.profiles.empty() || read.problem.empty(), "profiles are taken or refused");
    const ReadProfiles again = read_profiles(format, profile_lines(format, read.profiles));
    require(again.problem.empty() && again.profiles == read.profiles,
            "profiles are read as they are written");
    for (const ProfileFinding& finding : check_profiles(format, read.profiles))
        require(read.profiles.contains(finding.profile) && !finding.sentence.empty(),
                "a finding has its profile");
    for (const auto& [number, profile] : read.profiles)
        check_curve(unroll(format, read.profiles, {number, 1, {20, -5}}));
}

void run(Input& input) {
    const bool whole = input.below(8) == 0;
    const Exact bytes(input.rest());
    whole ? setup(bytes.view()) : profiles(bytes.view());
}

const Target target("setup_files", run);

} // namespace
} // namespace pelvan::fuzz
