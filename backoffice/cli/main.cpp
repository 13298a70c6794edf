// kitra-host: the reference host's program.
#include <unistd.h>

#include <iostream>

#include "ado/DriverRegistration.h"
#include "backoffice/cli/KitraHost.h"
#include "backoffice/cli/PastableCommand.h"

int main(int argc, char** argv) {
    // The restaurant connections name their ODBC driver "MySQL ODBC 5.1 Driver"; when the
    // machine does not register that name, the project's own registration is used.
    kitra::ado::EnsureDriverRegistration();
    // The commands it prints for the user name the program as it was started.
    if (argc > 0) kitra::backoffice::cli::SetProgramInvocation(argv[0]);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    // Questions are asked only of a person at a terminal; a script gets "No".
    std::istream* in = ::isatty(STDIN_FILENO) ? &std::cin : nullptr;
    return kitra::backoffice::cli::RunKitraHost(arguments, in, std::cout, std::cerr);
}
