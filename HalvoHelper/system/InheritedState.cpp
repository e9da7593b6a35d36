#include "HalvoHelper/system/InheritedState.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {

void halvoPutInheritedStateInOrder() {
  // Where SIGCHLD is ignored, the kernel reaps tools itself and nobody learns how they ended. It is set here and not
  // before each tool, since it belongs to the whole process: nothing in the helper ignores it later.
  std::signal(SIGCHLD, SIG_DFL);
  // A closed one would give its number to the next file that is opened, a staged package or a log: whatever the
  // system's libraries print on standard error would then be written into it.
  UniqueDescriptor null;
  do {
    static_cast<void>(null.release());
    null = UniqueDescriptor(::open("/dev/null", O_RDWR | O_CLOEXEC));
  } while (null.valid() && null.get() <= STDERR_FILENO);
}

}  // namespace halvo
