// The kernel's account of who sent a message.
#pragma once

// val: 0 audit user, 1 effective user, 2 effective group, 3 real user, 4 real group, 5 process, 6 audit session,
// 7 version of the process number.
typedef struct {
  unsigned int val[8];
} audit_token_t;
