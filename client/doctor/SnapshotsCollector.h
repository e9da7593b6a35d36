// Looks at what earlier installs saved.
#pragma once

#include "client/doctor/Disk.h"
#include "client/doctor/Examination.h"

namespace halvo {

// The five newest of at most ten thousand snapshots; the others are counted.
[[nodiscard]] Snapshots collectSnapshots(const Disk& disk);

}  // namespace halvo
