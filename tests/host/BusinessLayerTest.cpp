// The host's business layer reached by its class, as the connector reaches it: the reference
// back office's module serves the back office a host program attached, else the one the
// machine's setting names, and says why when there is none.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <dlfcn.h>

#include <fstream>
#include <functional>

#include "backoffice/BackOffice.h"
#include "core/ComponentRegistry.h"
#include "core/Error.h"
#include "host/CreateObject.h"
#include "host/HostBusinessLayer.h"
#include "tests/hostsupport/TempFolder.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra::host {
namespace {

namespace fs = std::filesystem;

// Each test starts with an empty component registry of its own and no machine setting.
class BusinessLayerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ::setenv("KITRA_COMPONENT_REGISTRY", (scratch.Path() / "components.registry").c_str(), 1);
        ::unsetenv("KITRA_HOST_DATA");
    }
    void TearDown() override {
        ::unsetenv("KITRA_COMPONENT_REGISTRY");
        ::unsetenv("KITRA_HOST_DATA");
    }

    testing::TempFolder scratch;
};

std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.Description();
    }
    return "<no failure>";
}

TEST_F(BusinessLayerTest, WithoutABackOfficeTheCallSaysWhereTheSettingIs) {
    EXPECT_EQ(FailureOf([] { HostBusinessLayerCall call(""); }),
              "Nenhum back office está aberto neste processo e a variável de ambiente "
              "KITRA_HOST_DATA não indica a pasta de nenhum.");
}

TEST_F(BusinessLayerTest, AnAttachedBackOfficeIsServedUntilItIsDetached) {
    testing::TestBackOffice office;
    {
        HostAttachment attachment(office.Services(), "");
        HostBusinessLayerCall first("");
        HostBusinessLayerCall second("");
        EXPECT_EQ(&first.Services(), &office.Services());
        EXPECT_EQ(&second.Services(), &office.Services());
        // Another set attached: the next objects serve it.
        HostServices other = office.Services();
        attachment.Attach(other);
        EXPECT_EQ(&HostBusinessLayerCall("").Services(), &other);
    }
    EXPECT_NE(FailureOf([] { HostBusinessLayerCall call(""); }), "<no failure>");
}

TEST_F(BusinessLayerTest, TheMachinesBackOfficeIsOpenedFromItsSetting) {
    const fs::path folder = scratch.Path() / "retaguarda";
    backoffice::BackOffice::Create(folder);
    ::setenv("KITRA_HOST_DATA", folder.c_str(), 1);
    HostBusinessLayerCall call("");
    const HostServices& services = call.Services();
    ASSERT_NE(services.application, nullptr);
    EXPECT_EQ(services.application->LogFolder().rfind(folder.string(), 0), 0u)
        << services.application->LogFolder();
    // What the connector stores goes into that back office's file.
    ASSERT_NE(services.settingsStore, nullptr);
    ASSERT_NE(services.messageBoxes, nullptr);
    EXPECT_EQ(services.eventNotifier, nullptr);
    // A second object while the first lives serves the same back office.
    EXPECT_EQ(&HostBusinessLayerCall("").Services(), &services);
}

TEST_F(BusinessLayerTest, AFolderWithoutABackOfficeIsReported) {
    ::setenv("KITRA_HOST_DATA", (scratch.Path() / "nada").c_str(), 1);
    const std::string failure = FailureOf([] { HostBusinessLayerCall call(""); });
    EXPECT_NE(failure.find("nada"), std::string::npos) << failure;
}

TEST_F(BusinessLayerTest, TheRegistrysEntryIsWhereTheClassIsLooked) {
    // An entry that names a module that is not there is not passed over for a fallback.
    RegisterComponent({GuidToString(kCLSID_HostBusinessLayer), kProgID_HostBusinessLayer,
                       (scratch.Path() / "KitraBackOffice.so").string()});
    const std::string failure = FailureOf([] { HostBusinessLayerCall call(""); });
    EXPECT_NE(failure.find("Não foi possível carregar o módulo '" +
                           (scratch.Path() / "KitraBackOffice.so").string() +
                           "' da classe 'KitraBackOffice.BusinessLayer'"),
              std::string::npos)
        << failure;
}

TEST_F(BusinessLayerTest, TheModuleRegistersAndUnregistersItsClass) {
    // The module that the fallback finds registers itself under its own path.
    const auto modules = BusinessLayerFallbackModules("");
    ASSERT_FALSE(modules.empty());
    const std::string module = modules.back();
    ComPtr<IHostBusinessLayer> layer = CreateObject<IHostBusinessLayer>(
        {kProgID_HostBusinessLayer, kCLSID_HostBusinessLayer}, kIID_IHostBusinessLayer, modules);
    ASSERT_TRUE(layer);
    void* handle = ::dlopen(module.c_str(), RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    auto registerServer = reinterpret_cast<DllRegisterServerFn>(::dlsym(handle, "DllRegisterServer"));
    auto unregisterServer =
        reinterpret_cast<DllUnregisterServerFn>(::dlsym(handle, "DllUnregisterServer"));
    auto canUnloadNow = reinterpret_cast<DllCanUnloadNowFn>(::dlsym(handle, "DllCanUnloadNow"));
    ASSERT_TRUE(registerServer && unregisterServer && canUnloadNow);
    EXPECT_EQ(canUnloadNow(), kFalse);
    layer.Reset();
    EXPECT_EQ(canUnloadNow(), kOk);

    ASSERT_EQ(registerServer(), kOk);
    const auto entry = FindComponent(kProgID_HostBusinessLayer);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->clsid, GuidToString(kCLSID_HostBusinessLayer));
    EXPECT_EQ(fs::canonical(entry->modulePath), fs::canonical(module));
    ASSERT_EQ(unregisterServer(), kOk);
    EXPECT_FALSE(FindComponent(kProgID_HostBusinessLayer));
    ::dlclose(handle);
}

TEST_F(BusinessLayerTest, AClassNobodyRegisteredOrInstalledIsNamed) {
    EXPECT_EQ(FailureOf([] {
                  CreateObject({"Outro.Objecto", kCLSID_HostBusinessLayer}, kIID_IUnknown,
                               {"/nao/existe.so"});
              }),
              "A classe 'Outro.Objecto' não está registada no registo de componentes.");
}

}  // namespace
}  // namespace kitra::host
