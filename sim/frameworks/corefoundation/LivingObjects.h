// Keeps the count of living objects, whatever their kind. Knows no header of the platform.
#pragma once

#include <cstdint>

namespace halvo::sim {

void countCreated() noexcept;
void countDestroyed() noexcept;
std::int64_t countLiving() noexcept;

}  // namespace halvo::sim
