// The commands kitra-host prints for the user: pasted into a shell from any folder, they run
// the same program on the same back office with the same words.
#include "backoffice/cli/PastableCommand.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace kitra::backoffice::cli {
namespace {

// What `sh` makes of the command's words, one per line (the program's word is echoed too).
std::string ShellReads(const std::string& command) {
    const std::string script = "set -- " + command + "; for w in \"$@\"; do printf '%s\\n' \"$w\"; done";
    const std::string run = "sh -c " + ShellWord(script);
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(run.c_str(), "r"), ::pclose);
    std::string text;
    char buffer[256];
    while (pipe && std::fgets(buffer, sizeof buffer, pipe.get()) != nullptr) text += buffer;
    return text;
}

TEST(PastableCommand, PlainWordsStayAsTheyAre) {
    EXPECT_EQ(ShellWord("state"), "state");
    EXPECT_EQ(ShellWord("--transactions"), "--transactions");
    EXPECT_EQ(ShellWord("/srv/kitra"), "/srv/kitra");
}

TEST(PastableCommand, OtherWordsAreQuotedSoTheShellGivesThemBack) {
    EXPECT_EQ(ShellWord(""), "''");
    EXPECT_EQ(ShellWord("2024-06-01 00:00:00"), "'2024-06-01 00:00:00'");
    for (const std::string word : {"O'Brien", "São João", "a$b`c`\"d\"", "x;rm -rf y", "*"}) {
        EXPECT_EQ(ShellReads(ShellWord(word)), word + "\n") << word;
    }
}

TEST(PastableCommand, NamesTheDataFolderByItsAbsolutePath) {
    SetProgramInvocation("kitra-host");
    const std::string command = PastableCommand("./dados da loja", {"state", "set", "Centro"});
    const std::string absolute = (std::filesystem::current_path() / "dados da loja").string();
    EXPECT_EQ(command, "kitra-host --data '" + absolute + "' state set Centro");
    EXPECT_EQ(ShellReads(command), "kitra-host\n--data\n" + absolute + "\nstate\nset\nCentro\n");
}

TEST(PastableCommand, AProgramStartedByPathIsNamedByItsAbsolutePath) {
    SetProgramInvocation("./build/kitra-host");
    EXPECT_EQ(ProgramForCommands(), (std::filesystem::current_path() / "build/kitra-host").string());
    SetProgramInvocation("/opt/kitra/../kitra/kitra-host");
    EXPECT_EQ(ProgramForCommands(), "/opt/kitra/kitra-host");
    SetProgramInvocation("kitra-host");  // found on PATH
    EXPECT_EQ(ProgramForCommands(), "kitra-host");
}

}  // namespace
}  // namespace kitra::backoffice::cli
