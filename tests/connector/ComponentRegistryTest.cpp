#include "core/ComponentRegistry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "tests/hostsupport/TempFolder.h"

namespace kitra {
namespace {
namespace fs = std::filesystem;

class ComponentRegistryTest : public ::testing::Test {
protected:
    void SetUp() override { ::setenv("KITRA_COMPONENT_REGISTRY", path.c_str(), 1); }
    void TearDown() override { ::unsetenv("KITRA_COMPONENT_REGISTRY"); }
    testing::TempFolder temp;
    const fs::path path = temp.Path() / "kitra" / "components.registry";
};

TEST_F(ComponentRegistryTest, PathComesFromTheEnvironment) {
    EXPECT_EQ(ComponentRegistryPath(), path);
    ::unsetenv("KITRA_COMPONENT_REGISTRY");
    ::setenv("XDG_CONFIG_HOME", "/tmp/cfg", 1);
    EXPECT_EQ(ComponentRegistryPath(), fs::path("/tmp/cfg/kitra/components.registry"));
    ::unsetenv("XDG_CONFIG_HOME");
}

TEST_F(ComponentRegistryTest, AbsentFileIsAnEmptyRegistry) {
    EXPECT_TRUE(ReadComponentRegistry().empty());
    EXPECT_FALSE(FindComponent("A.B"));
    EXPECT_FALSE(UnregisterComponent("{00000000-0000-0000-0000-000000000000}"));
}

TEST_F(ComponentRegistryTest, RegisterReplacesTheSameClassAndKeepsOthers) {
    RegisterComponent({"{11111111-1111-1111-1111-111111111111}", "Outro.Componente", "/opt/outro.so"});
    RegisterComponent({"{3F6E9A24-71C8-4D5B-A0E2-8B9C4D17F5A6}", "P.K", "/a/old.so"});
    RegisterComponent({"{3f6e9a24-71c8-4d5b-a0e2-8b9c4d17f5a6}", "P.K", "/a/new path.so"});
    const auto entries = ReadComponentRegistry();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(FindComponent("p.k")->modulePath, "/a/new path.so");
    EXPECT_EQ(FindComponent("{11111111-1111-1111-1111-111111111111}")->progId, "Outro.Componente");
    EXPECT_TRUE(UnregisterComponent("{3F6E9A24-71C8-4D5B-A0E2-8B9C4D17F5A6}"));
    ASSERT_EQ(ReadComponentRegistry().size(), 1u);
    EXPECT_EQ(ReadComponentRegistry()[0].progId, "Outro.Componente");
}

TEST_F(ComponentRegistryTest, LinesThatAreNotEntriesAreIgnored) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "# comentário\n\n{1}\tA\t/x.so\r\n";
    const auto entries = ReadComponentRegistry();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].modulePath, "/x.so");
}

}  // namespace
}  // namespace kitra
