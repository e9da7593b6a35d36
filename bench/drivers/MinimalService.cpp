// The least that a program on sd-bus has to do to be asked for a ping, beside the simulated transport: "first-reply
// COUNT" starts it anew for each ping, "pings COUNT" go over one connection, "connections COUNT" are one for each ping.
// With the verb "serve" the program is the service itself, on the socket that it was handed as its standard input.
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "bench/drivers/support/Driver.h"

extern char** environ;

namespace halvo::bench {
namespace {

constexpr const char* kObject = "/minimal";
constexpr const char* kInterface = "minimal.Service";

struct BusCloser {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusCloser>;

void succeeds(int status, const std::string& what) { require(status >= 0, what + ": " + std::to_string(status)); }

// Takes `socket` over.
Bus busOn(int socket) {
  sd_bus* raw = nullptr;
  succeeds(sd_bus_new(&raw), "no bus");
  Bus bus(raw);
  succeeds(sd_bus_set_fd(raw, socket, socket), "no socket for the bus");
  return bus;
}

int onPing(sd_bus_message* call, void* /*nothing*/, sd_bus_error* /*error*/) {
  return sd_bus_reply_method_return(call, "s", R"({"ok":true})");
}

void serveConnection(int socket) {
  static const std::vector<sd_bus_vtable> methods = {
      SD_BUS_VTABLE_START(0), SD_BUS_METHOD("Ping", "", "s", onPing, SD_BUS_VTABLE_UNPRIVILEGED), SD_BUS_VTABLE_END};
  const Bus bus = busOn(socket);
  sd_id128_t identifier{};
  succeeds(sd_id128_randomize(&identifier), "no identifier");
  succeeds(sd_bus_set_server(bus.get(), 1, identifier), "no server");
  succeeds(sd_bus_set_anonymous(bus.get(), 1), "no anonymous client");
  succeeds(sd_bus_add_object_vtable(bus.get(), nullptr, kObject, kInterface, methods.data(), nullptr), "no object");
  succeeds(sd_bus_start(bus.get()), "not started");
  int handled = 0;
  while ((handled = sd_bus_process(bus.get(), nullptr)) >= 0) {
    if (handled == 0 && sd_bus_wait(bus.get(), UINT64_MAX) < 0) return;
  }
}

// Until it is ended.
std::string serve(const Words& /*words*/) {
  for (int socket = 0; (socket = ::accept4(STDIN_FILENO, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    serveConnection(socket);
  }
  return {};
}

// The service as a process of its own, which lives as long as this object.
class Service {
 public:
  Service() : folder_(std::filesystem::temp_directory_path() / ("minimal." + std::to_string(::getpid()))) {
    std::filesystem::create_directory(folder_);
    const std::string path = folder_ / "socket";
    std::copy(path.begin(), path.end(), std::begin(address_.sun_path));
    const UniqueDescriptor listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    require(::bind(listening.get(), address(), sizeof address_) == 0 && ::listen(listening.get(), 8) == 0, "no socket");
    start(listening.get());
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;
  ~Service() {
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
    std::filesystem::remove_all(folder_);
  }

  [[nodiscard]] Bus connect() const {
    UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    require(::connect(socket.get(), address(), sizeof address_) == 0, "no connection");
    Bus bus = busOn(socket.release());
    succeeds(sd_bus_start(bus.get()), "not started");
    return bus;
  }

 private:
  [[nodiscard]] const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&address_); }

  void start(int listening) {
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, listening, STDIN_FILENO);
    std::string self = std::filesystem::read_symlink("/proc/self/exe");
    std::string verb = "serve";
    std::array<char*, 3> argv = {self.data(), verb.data(), nullptr};
    const int error = ::posix_spawn(&process_, self.c_str(), &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    require(error == 0, "the service does not start");
  }

  const std::filesystem::path folder_;
  sockaddr_un address_{.sun_family = AF_UNIX, .sun_path = {}};
  pid_t process_ = 0;
};

void ping(const Bus& bus) {
  sd_bus_message* answer = nullptr;
  succeeds(sd_bus_call_method(bus.get(), nullptr, kObject, kInterface, "Ping", nullptr, &answer, ""), "no reply");
  sd_bus_message_unref(answer);
}

std::string pings(const Words& words) {
  const Service service;
  const Bus bus = service.connect();
  ping(bus);
  return timed([&](const Words&) { ping(bus); })(words);
}

std::string connections(const Words& words) {
  const Service service;
  return timed([&](const Words&) { ping(service.connect()); })(words);
}

std::string firstReply(const Words& words) {
  return timed([](const Words&) {
    const Service service;
    ping(service.connect());
  })(words);
}

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive({{"serve", serve}, {"pings", pings}, {"connections", connections}, {"first-reply", firstReply}}, argc,
               argv);
}
