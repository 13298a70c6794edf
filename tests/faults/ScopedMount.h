#pragma once
// A small tmpfs mounted by a test over one of its folders, for faults of the file system itself:
// a read-only folder (the tests run as root, whom file modes do not stop) and a full disk.
// Mounting needs the right to mount (CAP_SYS_ADMIN); where it is missing the test is skipped,
// saying why. The mount goes when the object does.
#include <filesystem>
#include <string>

namespace kitra::test {

class ScopedMount {
public:
    // Mounts a tmpfs of `kilobytes` over `folder` (made when missing), read-only if asked.
    // Mounted() says whether it worked; Why() what stood in the way when it did not.
    ScopedMount(std::filesystem::path folder, long kilobytes, bool readOnly = false);
    ~ScopedMount();
    ScopedMount(const ScopedMount&) = delete;
    ScopedMount& operator=(const ScopedMount&) = delete;

    bool Mounted() const { return mounted_; }
    const std::string& Why() const { return why_; }

    // Fills what is left of the tmpfs with a file of its own (named `name` in its folder), so
    // that the next write that needs room fails; Empty removes it.
    void Fill(const std::string& name = "enchimento");
    void Empty();

private:
    std::filesystem::path folder_;
    std::filesystem::path filler_;
    bool mounted_ = false;
    std::string why_;
};

}  // namespace kitra::test
