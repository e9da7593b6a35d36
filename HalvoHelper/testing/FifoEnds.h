// The other end of a FIFO, worked by a thread in small pieces, and signals that interrupt whoever uses ours.
#pragma once

#include <pthread.h>

#include <atomic>
#include <csignal>
#include <string>
#include <thread>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {

// Writes a text into the FIFO, and stops early when nobody reads any more.
class FifoWriter {
 public:
  FifoWriter(const std::string& fifo, std::string text);
  FifoWriter(const FifoWriter&) = delete;
  FifoWriter& operator=(const FifoWriter&) = delete;
  ~FifoWriter();

  [[nodiscard]] int readEnd() const { return readEnd_.get(); }

 private:
  void (*brokenPipeBefore_)(int);
  std::thread thread_;
  UniqueDescriptor readEnd_;
};

// Reads whatever is written into the FIFO.
class FifoReader {
 public:
  explicit FifoReader(const std::string& fifo);
  FifoReader(const FifoReader&) = delete;
  FifoReader& operator=(const FifoReader&) = delete;
  ~FifoReader();

  [[nodiscard]] int writeEnd() const { return writeEnd_.get(); }
  // Closes the writing end and answers all that came.
  std::string finish();

 private:
  std::string text_;
  std::thread thread_;
  UniqueDescriptor writeEnd_;
};

// Interrupts the system calls of the thread that makes it again and again, without restarting them.
class SignalStorm {
 public:
  SignalStorm();
  SignalStorm(const SignalStorm&) = delete;
  SignalStorm& operator=(const SignalStorm&) = delete;
  ~SignalStorm();

 private:
  struct sigaction before_ {};
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

}  // namespace halvo
