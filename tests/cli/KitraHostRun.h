#pragma once
// Runs the kitra-host program as a user runs it (a separate process, on a test's own data folder
// and component registry) and gives its exit code, output and error output.
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/hostsupport/TempFolder.h"

namespace kitra::testing {

struct HostResult {
    int exit = -1;
    std::string out;  // standard output, then standard error
    std::string err;  // standard error alone
};

inline std::string ShellQuote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

class KitraHostTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(Run("init").exit, 0); }

    static std::string Quote(const std::string& text) { return ShellQuote(text); }

    // Runs kitra-host on the test's back office; `environment` goes before the program
    // ("NAME=value ...").
    HostResult Run(const std::string& arguments, const std::string& environment = {}) {
        const std::filesystem::path outFile = folder / "stdout.txt", errFile = folder / "stderr.txt";
        const std::string command =
            "KITRA_COMPONENT_REGISTRY=" + Quote((folder / "registry").string()) + " " + environment +
            " " + KITRA_HOST_PROGRAM + " --data " + Quote(Data().string()) + " " + arguments +
            " >" + Quote(outFile.string()) + " 2>" + Quote(errFile.string()) + " </dev/null";
        const int status = std::system(command.c_str());
        HostResult result;
        result.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = ReadWhole(outFile);
        result.err = ReadWhole(errFile);
        result.out += result.err;
        return result;
    }

    static std::string ReadWhole(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    std::string WriteSettings(const std::string& xml, const std::string& name = "settings.xml") {
        const std::filesystem::path file = folder / name;
        std::ofstream(file, std::ios::binary) << xml;
        return Quote(file.string());
    }

    std::filesystem::path Data() const { return folder / "data"; }

    TempFolder temp;
    const std::filesystem::path& folder = temp.Path();
};

}  // namespace kitra::testing
