// The tool that is started: writes as many bytes of plain text as its argument says, and little else.
#include <unistd.h>

#include <cstdlib>
#include <cstring>

int main(int argc, char* argv[]) {
  static char chunk[64 * 1024];
  std::memset(chunk, 'x', sizeof chunk);
  for (std::size_t left = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 0; left > 0;) {
    const ssize_t written = ::write(STDOUT_FILENO, chunk, left < sizeof chunk ? left : sizeof chunk);
    if (written <= 0) return 1;
    left -= static_cast<std::size_t>(written);
  }
  return 0;
}
