#include "backoffice/RunLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "core/Error.h"

namespace kitra::backoffice {
namespace {

// The process id the holder wrote into the file, for the message; empty when unreadable.
std::string HolderOf(int descriptor) {
    char text[32] = {};
    const ssize_t n = ::pread(descriptor, text, sizeof text - 1, 0);
    if (n <= 0) return {};
    std::string holder(text, static_cast<std::size_t>(n));
    while (!holder.empty() && (holder.back() == '\n' || holder.back() == ' ')) holder.pop_back();
    return holder;
}

}  // namespace

RunLock::RunLock(const std::filesystem::path& dataFolder, const std::string& what) {
    BackOffice::Require(dataFolder);  // no lock file is left in a folder without a back office
    const std::filesystem::path file = dataFolder / kRunLockFileName;
    descriptor_ = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor_ < 0) {
        throw Error(fmt::format("Não foi possível abrir o ficheiro de bloqueio '{}': {}",
                                file.string(), std::strerror(errno)));
    }
    // Of the owner only, as everything in the data folder, also when an older file was not.
    ::fchmod(descriptor_, S_IRUSR | S_IWUSR);
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        const int cause = errno;
        const std::string holder = cause == EWOULDBLOCK ? HolderOf(descriptor_) : std::string();
        ::close(descriptor_);
        descriptor_ = -1;
        if (cause != EWOULDBLOCK) {
            throw Error(fmt::format("Não foi possível bloquear '{}': {}", file.string(),
                                    std::strerror(cause)));
        }
        throw Error(fmt::format(
            "Está a decorrer uma importação nesta retaguarda{}: {} não pode começar agora. "
            "Tente de novo quando a importação terminar.",
            holder.empty() ? "" : " (processo " + holder + ")", what));
    }
    const std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(descriptor_, 0) == 0) {
        // The process id only makes the message of a refused command more useful.
        [[maybe_unused]] const ssize_t written = ::pwrite(descriptor_, pid.data(), pid.size(), 0);
    }
}

RunLock::~RunLock() {
    if (descriptor_ >= 0) ::close(descriptor_);  // closing lets go of the lock
}

}  // namespace kitra::backoffice
