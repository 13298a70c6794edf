// The process's current host services: installed by the program, found by a module that the
// program loads later, as a component created through a class factory finds them.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include "host/HostServices.h"

namespace kitra::host {
namespace {

class InstalledServices : public ::testing::Test {
protected:
    void TearDown() override { InstallHostServices(nullptr); }
};

TEST_F(InstalledServices, NoneUntilTheHostInstallsThem) {
    EXPECT_FALSE(HostServicesInstalled());
    try {
        CurrentHostServices();
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), "Os serviços do anfitrião não estão instalados.");
    }
}

TEST_F(InstalledServices, TheCurrentSetIsTheOneInstalledLast) {
    HostServices first, second;
    InstallHostServices(&first);
    EXPECT_EQ(&CurrentHostServices(), &first);
    InstallHostServices(&second);
    EXPECT_EQ(&CurrentHostServices(), &second);
    InstallHostServices(nullptr);
    EXPECT_FALSE(HostServicesInstalled());
}

TEST_F(InstalledServices, AModuleLoadedLaterSeesTheProgramsSet) {
    void* module = ::dlopen(KITRA_PROBE_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << ::dlerror();
    using Probe = const HostServices* (*)();
    auto probe = reinterpret_cast<Probe>(::dlsym(module, "ProbeCurrentHostServices"));
    ASSERT_NE(probe, nullptr) << ::dlerror();

    EXPECT_EQ(probe(), nullptr);
    HostServices services;
    InstallHostServices(&services);
    EXPECT_EQ(probe(), &services);
    InstallHostServices(nullptr);
    EXPECT_EQ(probe(), nullptr);
    ::dlclose(module);
}

}  // namespace
}  // namespace kitra::host
