// Finds where one message of a stream ends and the next begins, from nothing but the lengths in their headers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace halvo::sim {

class MessageCutter {
 public:
  struct Piece {
    std::size_t length = 0;    // how many of the bytes belong to the current message; 0 when more have to come first
    bool endsMessage = false;  // with this piece the message is whole
    bool tooLarge = false;     // its header announces more than kMaxMessageBytes; nothing can follow
  };

  // The next piece at the front of `bytes`, which continue where the last piece ended.
  Piece next(std::string_view bytes);

 private:
  std::uint64_t left_ = 0;  // what is still to come of the current message; 0 between two messages
};

}  // namespace halvo::sim
