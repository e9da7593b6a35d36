// A program that launchd keeps running and that does nothing: the product's agent in each user's session, and the
// system's audio daemon.
#include <unistd.h>

int main() {
  for (;;) ::pause();
}
