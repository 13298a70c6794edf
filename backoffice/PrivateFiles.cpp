#include "backoffice/PrivateFiles.h"

#include <sys/stat.h>

#include <cerrno>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "backoffice/RunLock.h"
#include "core/Error.h"

namespace kitra::backoffice {
namespace fs = std::filesystem;

namespace {

constexpr mode_t kOthersAccess = S_IRWXG | S_IRWXO;

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

OwnerOnlyFiles::OwnerOnlyFiles() : former_(::umask(S_IRWXG | S_IRWXO)) {}

OwnerOnlyFiles::~OwnerOnlyFiles() { ::umask(former_); }

void MakePrivateFolder(const fs::path& folder, const std::string& what) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return;
    // The folders above are made as create_directories makes them; the last one is the back
    // office's and is made 0700 before anything goes into it.
    if (folder.has_parent_path() && !folder.parent_path().empty()) {
        fs::create_directories(folder.parent_path(), error);
    }
    if (!error && ::mkdir(folder.c_str(), S_IRWXU) != 0) {
        const int cause = errno;
        // Made meanwhile by another program: it is theirs as it is. A file in its place is not.
        if (cause == EEXIST && fs::is_directory(folder, error)) return;
        error.assign(cause, std::generic_category());
    }
    if (!error) ::chmod(folder.c_str(), S_IRWXU);  // whatever the umask let through
    if (error) {
        throw Error(fmt::format("Não foi possível criar {} '{}': {}", what, folder.string(),
                                error.message()));
    }
}

void MakePrivateFile(const fs::path& file) { ::chmod(file.c_str(), S_IRUSR | S_IWUSR); }

std::vector<std::string> AccessWarnings(const fs::path& dataFolder) {
    struct Part {
        fs::path path;
        const char* name;
        bool folder;
        const char* open;  // the adjective agreeing with the name
        // What closes it: "chmod MODE " and this. SQLite makes the -wal and -shm files beside
        // the database while a program has it open (`check` itself, too) and deletes them when
        // the last one closes it, so a command naming them would fail once pasted: the
        // database's files are named by one pattern that always finds the database itself.
        std::string closing;
    };
    std::error_code ignored;
    const fs::path data = fs::absolute(dataFolder, ignored);
    const fs::path database = BackOffice::FileIn(data);
    const std::string databaseFiles = Quoted(database.string()) + "*";
    const Part parts[] = {
        {data, "A pasta de dados", true, "aberta", Quoted(data.string())},
        {database, "A base de dados", false, "aberta", databaseFiles},
        {database.string() + "-wal", "O ficheiro", false, "aberto", databaseFiles},
        {database.string() + "-shm", "O ficheiro", false, "aberto", databaseFiles},
        {data / kRunLockFileName, "O ficheiro de bloqueio", false, "aberto",
         Quoted((data / kRunLockFileName).string())},
        {data / "logs", "A pasta de registos", true, "aberta", Quoted((data / "logs").string())},
    };
    std::vector<std::string> warnings;
    bool databaseOpen = false;
    for (const Part& part : parts) {
        struct stat status {};
        if (::lstat(part.path.c_str(), &status) != 0) continue;
        const mode_t others = status.st_mode & kOthersAccess;
        if (others == 0) continue;
        // SQLite gives the -wal and -shm files the database's mode: the database's line and its
        // command cover them.
        const bool databasePart = part.closing == databaseFiles;
        if (databasePart && databaseOpen) continue;
        databaseOpen = databaseOpen || databasePart;
        const bool readable = (others & (S_IRGRP | S_IROTH)) != 0;
        const bool writable = (others & (S_IWGRP | S_IWOTH)) != 0;
        const char* access = readable && writable ? "ler e alterar"
                             : readable           ? "ler"
                             : writable           ? "alterar"
                                                  : "atravessar";
        warnings.push_back(fmt::format(
            "{} '{}' está {} a outros utilizadores (modo {:04o}: o grupo ou os outros podem "
            "{}); a retaguarda guarda as palavras-passe dos restaurantes e só o dono a deve ler. "
            "Corrija com: chmod {} {}",
            part.name, part.path.string(), part.open, status.st_mode & 07777, access,
            part.folder ? "700" : "600", part.closing));
    }
    return warnings;
}

}  // namespace kitra::backoffice
