#include "tests/faults/ScopedMount.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace kitra::test {

ScopedMount::ScopedMount(std::filesystem::path folder, long kilobytes, bool readOnly)
    : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    const std::string options = "size=" + std::to_string(kilobytes) + "k,mode=0755";
    if (::mount("tmpfs", folder_.c_str(), "tmpfs", readOnly ? MS_RDONLY : 0, options.c_str()) != 0) {
        why_ = "cannot mount a tmpfs over " + folder_.string() + " (" + std::strerror(errno) +
               "): the test needs the right to mount (root with CAP_SYS_ADMIN)";
        return;
    }
    mounted_ = true;
}

ScopedMount::~ScopedMount() {
    if (!mounted_) return;
    Empty();
    if (::umount(folder_.c_str()) != 0) ::umount2(folder_.c_str(), MNT_DETACH);
}

void ScopedMount::Fill(const std::string& name) {
    filler_ = folder_ / name;
    const int descriptor = ::open(filler_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) throw std::runtime_error("cannot create " + filler_.string());
    // Large writes first, then single bytes, until not one more fits.
    const std::vector<char> block(64 * 1024, 'x');
    for (std::size_t size = block.size(); size > 0; size /= 2) {
        while (::write(descriptor, block.data(), size) == static_cast<ssize_t>(size)) {
        }
    }
    ::close(descriptor);
}

void ScopedMount::Empty() {
    if (filler_.empty()) return;
    std::error_code ignored;
    std::filesystem::remove(filler_, ignored);
    filler_.clear();
}

}  // namespace kitra::test
