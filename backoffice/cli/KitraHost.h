#pragma once
// The kitra-host program as a function: the command line (without the program's name) in,
// an exit code out. main() is a thin wrapper around it, and tests call it directly.
#include <iosfwd>
#include <string>
#include <vector>

namespace kitra::backoffice::cli {

// The data folder when no --data option is given: $KITRA_HOST_DATA, else ./kitra-data.
std::string DefaultDataFolder();

int RunKitraHost(const std::vector<std::string>& arguments, std::istream* in, std::ostream& out,
                 std::ostream& err);

}  // namespace kitra::backoffice::cli
