#include "ado/DriverRegistration.h"

#include <odbcinst.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#ifndef KITRA_ODBC_SYSINI_DIR
#define KITRA_ODBC_SYSINI_DIR ""
#endif

namespace kitra::ado {

namespace fs = std::filesystem;

bool IsDriverRegistered(const std::string& driverName) {
    // The list is "name\0name\0...\0\0"; grow the buffer until it fits.
    std::vector<char> buffer(4096);
    for (;;) {
        WORD used = 0;
        if (!SQLGetInstalledDrivers(buffer.data(), static_cast<WORD>(buffer.size()), &used)) {
            return false;
        }
        if (used + 2u < buffer.size() || buffer.size() >= 60000) break;
        buffer.resize(buffer.size() * 2);
    }
    for (const char* entry = buffer.data(); *entry != '\0';) {
        const std::string_view name(entry);
        if (name == driverName) return true;
        entry += name.size() + 1;
    }
    return false;
}

std::string FindProjectDriverFolder() {
    std::vector<fs::path> candidates;
    std::error_code error;
    const fs::path executable = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path dir = executable.parent_path();
        candidates.push_back(dir / "odbc");
        candidates.push_back(dir / ".." / "share" / "kitra" / "odbc");
    }
    if (std::string_view(KITRA_ODBC_SYSINI_DIR).size() > 0) {
        candidates.emplace_back(KITRA_ODBC_SYSINI_DIR);
    }
    for (const fs::path& candidate : candidates) {
        if (fs::is_regular_file(candidate / "odbcinst.ini", error)) {
            return fs::weakly_canonical(candidate, error).string();
        }
    }
    return {};
}

namespace {

// unixODBC's installer library settles its configuration folder at its first use in a process,
// and the driver itself reads its settings through that library. So the machine's registration
// is asked in a child process, which leaves this process free to choose ODBCSYSINI afterwards.
bool IsRegisteredForTheMachine(const std::string& driverName) {
    const pid_t child = fork();
    if (child == 0) _exit(IsDriverRegistered(driverName) ? 0 : 1);
    if (child < 0) return IsDriverRegistered(driverName);
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

DriverRegistration EnsureDriverRegistration() {
    if (const char* given = std::getenv("ODBCSYSINI"); given != nullptr && *given != '\0') {
        return {DriverSource::Environment, given};
    }
    if (IsRegisteredForTheMachine(kRestaurantDriverName)) return {DriverSource::System, {}};
    std::string folder = FindProjectDriverFolder();
    if (folder.empty()) return {DriverSource::Missing, {}};
    setenv("ODBCSYSINI", folder.c_str(), 1);
    return {DriverSource::ProjectFolder, folder};
}

}  // namespace kitra::ado
