// How halvo-app speaks to a person.
#pragma once

#include <ostream>
#include <string_view>

namespace halvo {

// Writes one message at once, behind the program's name: in the output of a script it shows who speaks.
void say(std::ostream& err, std::string_view message);

}  // namespace halvo
