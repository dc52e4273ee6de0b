// The register maps of the controller models that are simulated.
#pragma once

#include "simulator/controller/register_table.h"

namespace pelvan::simulator {

/// The registers of model 742 or 730, profile registers aside.
[[nodiscard]] RegisterTable make_register_table(int model);

} // namespace pelvan::simulator
