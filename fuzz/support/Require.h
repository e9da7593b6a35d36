// How a target says that a property does not hold.
#pragma once

namespace halvo::fuzz {

// Ends the process with a line that names the property, unless it holds: whoever runs the target then keeps the input.
void require(bool holds, const char* property);

}  // namespace halvo::fuzz
