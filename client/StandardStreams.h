// The three descriptors that every program expects to be open.
#pragma once

namespace halvo {

// Whichever of the descriptors 0 to 2 is closed is taken, so that no connection gets its number and what is printed is
// not sent to the helper. Nothing can be read from it, and writing to it fails.
void takeClosedStandardStreams();

}  // namespace halvo
