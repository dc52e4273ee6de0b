#include "profile/window/curve_picture.h"

#include <set>

#include "profile/run_reading.h"

namespace pelvan {
namespace {

static_assert(kLoops == kSetPoints);

constexpr std::array<RegisterRole, kLoops> kSetPointRoles{RegisterRole::SetPoint1,
                                                          RegisterRole::SetPoint2};
constexpr std::array<RegisterRole, kLoops> kRateRoles{RegisterRole::Rate1, RegisterRole::Rate2};

/// Which set points the picture shows.
std::array<bool, kLoops> shown_loops(const ProfileCurve& curve) {
    std::array<bool, kLoops> shown{curve.moves(0), curve.moves(1)};
    if (!shown[1]) shown[0] = true;
    return shown;
}

std::string set_point_name(const ProfileFormat& format, std::size_t loop) {
    for (const auto& [type, kind] : format.kinds) {
        const ProfileField* field = kind.find(kSetPointRoles[loop]);
        if (field == nullptr) continue;
        return field->unit.empty() ? field->name : field->name + " (" + field->unit + ")";
    }
    return "set point " + std::to_string(loop + 1);
}

/// What dragging the end of the step can change.
void add_handles(const StepKind& kind, CurvePiece& piece) {
    const bool timed = kind.find(RegisterRole::Hours) || kind.find(RegisterRole::Minutes) ||
                       kind.find(RegisterRole::Seconds);
    const bool rated = kind.find(kRateRoles[0]) || kind.find(kRateRoles[1]);
    const bool moves = kind.shape != StepShape::Jump && kind.shape != StepShape::End;
    piece.time_moves = moves && (timed || (rated && kind.shape == StepShape::RampRate));
    for (std::size_t loop = 0; loop < kLoops; ++loop)
        piece.value_moves[loop] = moves && kind.find(kSetPointRoles[loop]) != nullptr;
}

const StepKind* kind_at(const ProfileFormat& format, const ProfileSet& profiles, int number,
                        int step) {
    const auto found = profiles.find(number);
    if (found == profiles.end() || step < 1) return nullptr;
    const auto& steps = found->second.steps;
    const auto index = static_cast<std::size_t>(step - 1);
    return index < steps.size() ? format.kind(steps[index].type) : nullptr;
}

/// Ramps have two segments where the loops do not arrive together: in the second one of them
/// stands.
bool ends_visit(const ProfileCurve& curve, std::size_t at) {
    if (at + 1 == curve.segments.size()) return true;
    const CurveSegment& here = curve.segments[at];
    const CurveSegment& next = curve.segments[at + 1];
    const auto moves = [](const CurveSegment& segment, std::size_t loop) {
        return segment.from[loop] != segment.to[loop];
    };
    const bool goes_on = next.profile == here.profile && next.step == here.step && moves(here, 0) &&
                         moves(here, 1) && moves(next, 0) != moves(next, 1);
    return !goes_on;
}

std::string how_cut(const ProfileCurve& curve) {
    const std::string place = "profile " + std::to_string(curve.last_profile) + ", step " +
                              std::to_string(curve.last_step);
    if (curve.cut) return "Only the beginning is shown.";
    switch (curve.how) {
    case CurveEnd::Ended:
    case CurveEnd::NoProfile:
        break;
    case CurveEnd::PastLast:
        return "The profile has no end.";
    case CurveEnd::JumpOutside:
        return "Stops at a jump to nowhere: " + place + ".";
    case CurveEnd::UnknownType:
        return "Stops at a step of an unknown kind: " + place + ".";
    case CurveEnd::NoRate:
        return "Stops at a ramp without a rate: " + place + ".";
    case CurveEnd::TooLong:
    case CurveEnd::Endless:
        return "Never ends.";
    }
    return {};
}

} // namespace

CurvePicture curve_picture(const ProfileFormat& format, const ProfileSet& profiles,
                           const ProfileCurve& curve) {
    CurvePicture picture;
    const std::array<bool, kLoops> shown = shown_loops(curve);
    for (std::size_t loop = 0; loop < kLoops; ++loop)
        picture.names[loop] = set_point_name(format, loop);
    picture.pieces.reserve(curve.segments.size());
    std::set<std::pair<int, int>> seen;
    for (std::size_t i = 0; i < curve.segments.size(); ++i) {
        const CurveSegment& segment = curve.segments[i];
        CurvePiece piece;
        piece.from_s = segment.begin;
        piece.to_s = segment.end;
        for (std::size_t loop = 0; loop < kLoops; ++loop) {
            if (!shown[loop]) continue;
            piece.from[loop] = segment.from[loop];
            piece.to[loop] = segment.to[loop];
        }
        piece.profile = segment.profile;
        piece.step = segment.step;
        piece.events = segment.events;
        const StepKind* kind = kind_at(format, profiles, segment.profile, segment.step);
        // A handle of a later turn of a jump would run away from the mouse that drags it.
        if (kind != nullptr && ends_visit(curve, i) &&
            seen.emplace(piece.profile, piece.step).second)
            add_handles(*kind, piece);
        picture.pieces.push_back(piece);
    }
    picture.cut = how_cut(curve);
    return picture;
}

std::string total_time_text(const ProfileCurve& curve) {
    switch (curve.how) {
    case CurveEnd::Ended:
        return duration_text(curve.seconds);
    case CurveEnd::TooLong:
    case CurveEnd::Endless:
        return "endless";
    default:
        return "not known";
    }
}

} // namespace pelvan
