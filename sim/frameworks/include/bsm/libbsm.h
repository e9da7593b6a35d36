// Reading an audit token.
#pragma once

#include <mach/message.h>
#include <sys/types.h>

extern "C" {

uid_t audit_token_to_euid(audit_token_t atoken);
gid_t audit_token_to_egid(audit_token_t atoken);
pid_t audit_token_to_pid(audit_token_t atoken);
int audit_token_to_pidversion(audit_token_t atoken);

}  // extern "C"
