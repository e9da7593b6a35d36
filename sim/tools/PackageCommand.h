// Builds packages of the product.
#pragma once

#include <string>
#include <vector>

namespace halvo::sim {

// `OUT.pkg --version V --report FILE [--postinstall FILE] [--truncate-payload BYTES]`: a real flat package, whose
// signature report is the text of FILE. With --truncate-payload only the first BYTES bytes of the payload's archive are
// in it, so that installing it fails half way. The same inputs make the same members; only the table of contents
// differs, because it names the time at which it was made.
//
// Answers 0, or says in one sentence on standard error what is wrong and what to do: 64 for wrong usage, 66 for an
// input that cannot be read, 73 for a package that cannot be written.
int packageCommand(const std::vector<std::string>& arguments);

}  // namespace halvo::sim
