// The picture of an unrolled curve, and the words for how long it takes.
#pragma once

#include <string>

#include "profile/profile_curve.h"
#include "profile/window/profile_picture.h"

namespace pelvan {

/// Of a profile whose steps move no set point, the first one is shown all the same. A step that is
/// drawn in two segments has the handles at its second, and one that is met again where it is met
/// first.
[[nodiscard]] CurvePicture curve_picture(const ProfileFormat& format, const ProfileSet& profiles,
                                         const ProfileCurve& curve);

/// How long the curve takes, or in a word why that cannot be told.
[[nodiscard]] std::string total_time_text(const ProfileCurve& curve);

} // namespace pelvan
