// Between Foundation's objects and the program's values. Objects that come from outside may be nil or of any class,
// whatever their declaration says: those become the empty value. Texts keep embedded NULs; ill-formed ones get U+FFFD.
// For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

NS_ASSUME_NONNULL_BEGIN

namespace halvo {

// Empty when `value` is no NSString.
std::string textFromFoundation(id _Nullable value);

// Empty when `value` is no NSData.
std::vector<std::byte> bytesFromFoundation(id _Nullable value);

NSString* foundationText(std::string_view utf8);

}  // namespace halvo

NS_ASSUME_NONNULL_END
