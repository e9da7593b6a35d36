// The maker's team, demanded of the client's code signature and of every package.
#pragma once

namespace halvo {

inline constexpr const char* HALVO_TEAM_ID = "QX4TRM2ZL9";

}  // namespace halvo
