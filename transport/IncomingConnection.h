// A client that has connected and not yet been admitted.
#pragma once

#include <mach/message.h>
#include <sys/types.h>

#include <memory>

namespace halvo {

class HalvoHelperProtocol;

class IncomingConnection {
 public:
  IncomingConnection() = default;
  IncomingConnection(const IncomingConnection&) = delete;
  IncomingConnection& operator=(const IncomingConnection&) = delete;
  virtual ~IncomingConnection() = default;

  // The kernel's token of the process that connected. All zero when the platform does not give one: that token
  // belongs to nobody and must be refused. Valid for admission only: a later message could come with another token.
  virtual audit_token_t auditTokenValue() const = 0;

  // For log lines; never for a decision, since process numbers are used again.
  virtual pid_t processIdentifier() const = 0;

  // Gives the client `handler` to call; the connection shares its ownership until it ends. Call before resume().
  virtual void exportHandler(std::shared_ptr<HalvoHelperProtocol> handler) = 0;

  // Lets messages in. Without it the client's messages are never read.
  virtual void resume() = 0;
};

}  // namespace halvo
