#pragma once
// A set of record keys held as bits, in pages of 4,096 keys. The back office's keys are given
// one after another, so the keys a whole import step saves (a million documents for a
// restaurant's first import) take a bit each, not a tree node of tens of bytes each.
#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace kitra::backoffice {

class KeySet {
public:
    void insert(std::int32_t key) {
        Page& page = pages_[PageOf(key)];
        std::uint64_t& word = page[WordOf(key)];
        const std::uint64_t bit = BitOf(key);
        if ((word & bit) == 0) {
            word |= bit;
            ++size_;
        }
    }

    bool contains(std::int32_t key) const {
        const auto found = pages_.find(PageOf(key));
        return found != pages_.end() && (found->second[WordOf(key)] & BitOf(key)) != 0;
    }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    void clear() {
        pages_.clear();
        size_ = 0;
    }

private:
    static constexpr int kKeysPerPage = 4096;
    using Page = std::array<std::uint64_t, kKeysPerPage / 64>;

    // Floor division, so that negative keys have pages of their own too.
    static std::int32_t PageOf(std::int32_t key) {
        return key >= 0 ? key / kKeysPerPage : -((-(key + 1)) / kKeysPerPage) - 1;
    }
    static std::size_t Offset(std::int32_t key) {
        return static_cast<std::size_t>(static_cast<std::int64_t>(key) -
                                        static_cast<std::int64_t>(PageOf(key)) * kKeysPerPage);
    }
    static std::size_t WordOf(std::int32_t key) { return Offset(key) / 64; }
    static std::uint64_t BitOf(std::int32_t key) { return std::uint64_t{1} << (Offset(key) % 64); }

    std::unordered_map<std::int32_t, Page> pages_;
    std::size_t size_ = 0;
};

}  // namespace kitra::backoffice
