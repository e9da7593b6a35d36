// A program that launchd keeps running and that does nothing: the product's agent in each user's session, and the
// system's audio daemon.
#include "sim/tools/programs/Termination.h"

int main() { halvo::sim::Termination().wait(); }
