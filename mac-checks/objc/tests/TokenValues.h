// Objects that the key "auditToken" of a connection may answer with.
#pragma once

#import <Foundation/Foundation.h>
#include <mach/message.h>

#include <cstring>

namespace halvo::sim {

inline constexpr audit_token_t kSampleToken = {{501, 501, 20, 501, 20, 4711, 100005, 42}};

inline NSValue* boxed(const audit_token_t& token) {
  return [NSValue valueWithBytes:&token objCType:@encode(audit_token_t)];
}

// A value of `size` bytes, every one of them set.
template <int size>
NSValue* boxedBytes() {
  struct Bytes {
    char bytes[size];
  } value;
  std::memset(&value, 0x55, sizeof(value));
  return [NSValue valueWithBytes:&value objCType:@encode(Bytes)];
}

inline bool sameToken(const audit_token_t& a, const audit_token_t& b) { return std::memcmp(&a, &b, sizeof(a)) == 0; }

}  // namespace halvo::sim
