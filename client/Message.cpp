#include "client/Message.h"

namespace halvo {

void say(std::ostream& err, std::string_view message) { err << "halvo-app: " << message << '\n' << std::flush; }

}  // namespace halvo
