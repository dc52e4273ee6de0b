// The ramp profiles of the sample model.
#pragma once

#include "harness.h"
#include "profile/profile_format.h"

namespace pelvan::fuzz {

inline const ProfileFormat& format_742() {
    static const LoadedFormat loaded =
        ProfileFormat::load(PELVAN_SAMPLES "/Download Sequences/742.pds");
    require(loaded.format.has_value(), "the sample is understood");
    return *loaded.format;
}

} // namespace pelvan::fuzz
