#include "tests/interleaving/Requests.h"

namespace halvo::interleaving {
namespace {

void addCombinations(std::size_t size, std::size_t first, std::vector<Request>& chosen,
                     std::vector<std::vector<Request>>& all) {
  if (chosen.size() == size) {
    all.push_back(chosen);
    return;
  }
  for (std::size_t next = first; next < kEveryRequest.size(); ++next) {
    chosen.push_back(kEveryRequest.at(next));
    addCombinations(size, next, chosen, all);
    chosen.pop_back();
  }
}

}  // namespace

std::string_view name(Request request) {
  switch (request) {
    case Request::install:
      return "install";
    case Request::failingInstall:
      return "failing install";
    case Request::evilInstall:
      return "evil install";
    case Request::unstageableInstall:
      return "unstageable install";
    case Request::unauthorizedInstall:
      return "unauthorized install";
    case Request::uninstall:
      return "uninstall";
    case Request::bundleRemoval:
      return "bundle removal";
    case Request::finalRemoval:
      return "final removal";
  }
  return {};
}

std::vector<std::vector<Request>> combinations(std::size_t size) {
  std::vector<std::vector<Request>> all;
  std::vector<Request> chosen;
  addCombinations(size, 0, chosen, all);
  return all;
}

}  // namespace halvo::interleaving
