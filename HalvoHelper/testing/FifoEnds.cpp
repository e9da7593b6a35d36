#include "HalvoHelper/testing/FifoEnds.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace halvo {
namespace {

constexpr std::size_t kPiece = 512;

void writeInPieces(const std::string& fifo, std::string_view text) {
  const UniqueDescriptor end(::open(fifo.c_str(), O_WRONLY | O_CLOEXEC));
  while (!text.empty()) {
    const ssize_t written = ::write(end.get(), text.data(), std::min(text.size(), kPiece));
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::string readInPieces(const std::string& fifo) {
  const UniqueDescriptor end(::open(fifo.c_str(), O_RDONLY | O_CLOEXEC));
  std::string text;
  std::array<char, kPiece> piece{};
  for (ssize_t count = 1; count > 0;) {
    count = ::read(end.get(), piece.data(), piece.size());
    text.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
  return text;
}

}  // namespace

FifoWriter::FifoWriter(const std::string& fifo, std::string text)
    : brokenPipeBefore_(std::signal(SIGPIPE, SIG_IGN)),
      thread_([fifo, text = std::move(text)] { writeInPieces(fifo, text); }),
      readEnd_(::open(fifo.c_str(), O_RDONLY | O_CLOEXEC)) {}

FifoWriter::~FifoWriter() {
  readEnd_.close();
  thread_.join();
  std::signal(SIGPIPE, brokenPipeBefore_);
}

FifoReader::FifoReader(const std::string& fifo)
    : thread_([this, fifo] { text_ = readInPieces(fifo); }), writeEnd_(::open(fifo.c_str(), O_WRONLY | O_CLOEXEC)) {}

FifoReader::~FifoReader() {
  writeEnd_.close();
  if (thread_.joinable()) thread_.join();
}

std::string FifoReader::finish() {
  writeEnd_.close();
  thread_.join();
  return text_;
}

SignalStorm::SignalStorm() {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGUSR1, &action, &before_);
  thread_ = std::thread([this, target = ::pthread_self()] {
    while (!stop_) {
      ::pthread_kill(target, SIGUSR1);
      std::this_thread::yield();
    }
  });
}

SignalStorm::~SignalStorm() {
  stop_ = true;
  thread_.join();
  ::sigaction(SIGUSR1, &before_, nullptr);
}

}  // namespace halvo
