#include "sim/platform/service/ConnectionServer.h"

#include "sim/platform/service/ClientStream.h"
#include "sim/platform/service/FedBus.h"
#include "sim/platform/service/MessageCutter.h"
#include "sim/platform/service/MethodTable.h"

namespace halvo::sim {
namespace {

// Handles the messages that have come. False when the connection must end: after a message that is too large or none
// at all, nothing that follows can be trusted to be one.
bool handleMessages(ClientStream& stream, MessageCutter& cutter, FedBus& bus) {
  for (;;) {
    const MessageCutter::Piece piece = cutter.next(stream.bytes());
    if (piece.tooLarge) return false;
    if (piece.length == 0) return true;
    if (!bus.feed(stream.bytes().substr(0, piece.length))) return false;
    if (piece.endsMessage && !bus.tookMessage()) return false;
    stream.take(piece.length);
  }
}

}  // namespace

void serveConnection(int socket, HalvoHelperProtocol& handler, std::chrono::milliseconds patience) {
  MethodTable methods(handler);
  ClientStream stream(socket);
  auto bus = FedBus::start(socket);
  if (!bus || !bus->authenticate(stream, patience) || !methods.addTo(bus->get())) return;
  MessageCutter cutter;
  while (handleMessages(stream, cutter, *bus) && stream.readMore()) {
  }
}

}  // namespace halvo::sim
