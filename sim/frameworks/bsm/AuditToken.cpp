#include <bsm/libbsm.h>

extern "C" {

uid_t audit_token_to_euid(audit_token_t atoken) { return atoken.val[1]; }
gid_t audit_token_to_egid(audit_token_t atoken) { return atoken.val[2]; }
pid_t audit_token_to_pid(audit_token_t atoken) { return static_cast<pid_t>(atoken.val[5]); }
int audit_token_to_pidversion(audit_token_t atoken) { return static_cast<int>(atoken.val[7]); }

}  // extern "C"
