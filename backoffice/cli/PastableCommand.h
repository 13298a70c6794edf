#pragma once
// The commands kitra-host prints for the user to run (a rewind, a log to read, a check): each
// names the program as it was started and the data folder by its absolute path, with every word
// quoted for the shell, so that it does what it says when pasted in any folder.
#include <filesystem>
#include <string>
#include <vector>

namespace kitra::backoffice::cli {

// Records how the program was started (argv[0]). A name without a "/" was found on PATH and is
// printed as it is; a path is printed made absolute. Until it is called: "kitra-host".
void SetProgramInvocation(const std::string& argv0);
// The program as printed commands name it.
const std::string& ProgramForCommands();

// The word as the shell reads it back unchanged: as it is when it holds only characters the
// shell leaves alone, else in single quotes (a quote inside as '\'').
std::string ShellWord(const std::string& word);

// "<program> --data '<absolute data folder>' <words...>", each word quoted as ShellWord.
std::string PastableCommand(const std::filesystem::path& dataFolder,
                            const std::vector<std::string>& words);

}  // namespace kitra::backoffice::cli
