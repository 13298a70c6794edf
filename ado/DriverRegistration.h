#pragma once
// The ODBC driver under the name the connector's connection strings use. The connection string
// names "MySQL ODBC 5.1 Driver" and must stay exactly as it is; the build registers MariaDB
// Connector/ODBC under that name in an odbcinst.ini of its own. unixODBC finds that file when
// ODBCSYSINI names its folder, and reads ODBCSYSINI once per process, at its first use.
#include <string>

namespace kitra::ado {

inline constexpr const char* kRestaurantDriverName = "MySQL ODBC 5.1 Driver";

enum class DriverSource {
    System,         // the name is registered for the whole machine; nothing was changed
    Environment,    // ODBCSYSINI was already set by the user; it is left alone
    ProjectFolder,  // ODBCSYSINI now points at the project's own odbcinst.ini folder
    Missing,        // not registered and no project folder found; connections will fail
};

struct DriverRegistration {
    DriverSource source = DriverSource::Missing;
    std::string folder;  // the ODBCSYSINI folder in effect (Environment, ProjectFolder)
};

// Makes the driver name usable. Call it once, early in the program, before the first ODBC call
// (and before any thread may read the environment): when ODBCSYSINI is unset and the machine
// does not register the name, it sets ODBCSYSINI to the project's folder, looked up next to the
// executable (odbc/ or ../share/kitra/odbc/, an installed layout) and then in the build tree.
// The machine's registration is checked in a short-lived child process, so that this process's
// unixODBC has not settled on a folder yet when ODBCSYSINI is set.
DriverRegistration EnsureDriverRegistration();

// Whether unixODBC lists the driver name (SQLGetInstalledDrivers). unixODBC's installer library
// reads ODBCSYSINI at its first use in a process and keeps that folder: ask after
// EnsureDriverRegistration, not before it.
bool IsDriverRegistered(const std::string& driverName);

// The project's folders holding an odbcinst.ini, best first; existing ones only.
std::string FindProjectDriverFolder();

}  // namespace kitra::ado
