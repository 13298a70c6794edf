#include "ado/ReadAhead.h"

#include <algorithm>
#include <utility>

#include "ado/Connection.h"

namespace kitra::ado {

ReadAheadRunner::ReadAheadRunner(Link link, std::size_t count, StatementAt statementAt,
                                 std::size_t connections, std::size_t window)
    : link_(std::move(link)),
      count_(count),
      statementAt_(std::move(statementAt)),
      slots_(std::max<std::size_t>(window, 1)),
      working_(connections) {
    workers_.reserve(connections);
    for (std::size_t i = 0; i < connections; ++i) workers_.emplace_back([this] { Work(); });
}

ReadAheadRunner::~ReadAheadRunner() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    for (std::thread& worker : workers_) worker.join();
}

void ReadAheadRunner::Work() {
    const auto leave = [this] {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            --working_;
        }
        changed_.notify_all();
    };
    Connection connection(link_.connectionString);
    try {
        connection.SetConnectionTimeout(link_.connectionTimeout);
        connection.SetCommandTimeout(link_.commandTimeout);
        connection.Open();
    } catch (...) {
        // A connection that cannot be had (the server's limit, a server going away) only means
        // that fewer statements are run ahead; the caller runs the others itself.
        leave();
        return;
    }
    for (;;) {
        std::size_t index = 0;
        std::string statement;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] {
                next_ = std::max(next_, cursor_);
                return stopping_ || next_ >= count_ ||
                       (next_ < cursor_ + slots_.size() && !SlotOf(next_).running);
            });
            if (stopping_ || next_ >= count_) break;
            index = next_++;
            Slot& slot = SlotOf(index);
            slot = Slot{};
            slot.index = index;
            slot.running = true;
            slot.statement = statementAt_(index);
            statement = slot.statement;
        }
        Outcome outcome;
        try {
            outcome.rows = connection.ReadAll(statement);
        } catch (const odbc::LinkFailure&) {
            outcome.error = std::current_exception();
            outcome.linkLost = true;
        } catch (...) {
            outcome.error = std::current_exception();
        }
        const bool linkLost = outcome.linkLost;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            Slot& slot = SlotOf(index);
            slot.running = false;
            if (index >= cursor_) {
                slot.outcome = std::move(outcome);
                slot.done = true;
            } else {
                slot = Slot{};  // passed over meanwhile: the result is not kept
            }
        }
        changed_.notify_all();
        if (linkLost) break;  // this connection is closed now; the others go on
    }
    leave();
}

std::optional<ReadAheadRunner::Outcome> ReadAheadRunner::Take(const std::string& statement) {
    std::unique_lock<std::mutex> lock(mutex_);
    const std::size_t end = std::min(count_, cursor_ + slots_.size());
    std::size_t found = cursor_;
    for (; found < end; ++found) {
        const Slot& slot = SlotOf(found);
        const bool matches = slot.index == found ? slot.statement == statement
                                                 : statementAt_(found) == statement;
        if (matches) break;
    }
    if (found == end) return std::nullopt;

    // Statements expected before this one were never asked for: their results go.
    for (std::size_t passed = cursor_; passed < found; ++passed) {
        Slot& slot = SlotOf(passed);
        if (slot.index == passed && !slot.running) slot = Slot{};
    }
    cursor_ = found;
    changed_.notify_all();
    changed_.wait(lock, [&] {
        const Slot& slot = SlotOf(found);
        const bool claimed = slot.index == found;
        return (claimed && slot.done) || (!claimed && (working_ == 0 || stopping_));
    });
    cursor_ = found + 1;
    std::optional<Outcome> taken;
    Slot& slot = SlotOf(found);
    if (slot.index == found) {
        taken = std::move(slot.outcome);
        slot = Slot{};
    }
    // Otherwise no worker is left to run it: it is the caller's (cursor_ is past it already).
    lock.unlock();
    changed_.notify_all();
    return taken;
}

}  // namespace kitra::ado
