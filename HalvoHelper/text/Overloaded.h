// Builds one visitor for a std::variant out of several lambdas.
#pragma once

namespace halvo {

template <typename... Visitors>
struct Overloaded : Visitors... {
  using Visitors::operator()...;
};
template <typename... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

}  // namespace halvo
