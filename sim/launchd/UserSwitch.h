// Becoming another account, where the simulated Mac has more than one.
#pragma once

#include <sys/types.h>

namespace halvo::sim {

// The group of every ordinary account ("staff").
inline constexpr gid_t kStaffGroup = 20;

// Whether this process can become `user`. Inside a user namespace that maps one uid only, nobody but that uid exists.
[[nodiscard]] bool userExists(uid_t user);

// Makes this process run as `user` for good; an errno value, 0 on success. Nothing happens when it runs as `user`
// already. Calls only what is safe between fork and exec.
[[nodiscard]] int becomeUser(uid_t user);

}  // namespace halvo::sim
