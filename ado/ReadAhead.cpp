#include "ado/ReadAhead.h"

#include <algorithm>
#include <utility>

#include "ado/Connection.h"
#include "ado/ThreadPriority.h"

namespace kitra::ado {

ReadAheadRunner::ReadAheadRunner(Link link, std::size_t count, StatementAt statementAt,
                                 std::size_t connections, std::size_t window)
    : link_(std::move(link)),
      count_(count),
      statementAt_(std::move(statementAt)),
      slots_(std::max<std::size_t>(window, 1)),
      wakeRoom_(std::max<std::size_t>(slots_.size() / 4, 1)),
      working_(connections) {
    workers_.reserve(connections);
    for (std::size_t i = 0; i < connections; ++i) workers_.emplace_back([this] { Work(); });
}

ReadAheadRunner::~ReadAheadRunner() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    claimable_.notify_all();
    finished_.notify_all();
    for (std::thread& worker : workers_) worker.join();
}

// With the lock held: whether a worker may claim the next statement now.
bool ReadAheadRunner::CanClaim() {
    next_ = std::max(next_, cursor_);
    return next_ < count_ && next_ < cursor_ + slots_.size() && !SlotOf(next_).running;
}

// With the lock held: wakes the waiting workers when `room` statements can be claimed.
void ReadAheadRunner::WakeWorkers(std::size_t room) {
    if (idle_ > 0 && room > 0) {
        if (room >= idle_) {
            claimable_.notify_all();
        } else {
            claimable_.notify_one();
        }
    }
}

void ReadAheadRunner::Work() {
    // The caller saves what these statements read; a worker only has to stay ahead of it. On a
    // machine whose processors are all busy (the server, the saving and the reading share
    // them), the saving must not wait behind a worker that is ahead already.
    RunBelowOtherThreads();
    const auto leave = [this] {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            --working_;
        }
        // The caller may be waiting for a statement that no worker will run now.
        finished_.notify_all();
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
            if (!stopping_ && !CanClaim() && next_ < count_) {
                ++idle_;
                claimable_.wait(lock, [this] { return stopping_ || next_ >= count_ || CanClaim(); });
                --idle_;
            }
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
        bool wakeCaller = false;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            Slot& slot = SlotOf(index);
            slot.running = false;
            if (index >= cursor_) {
                slot.outcome = std::move(outcome);
                slot.done = true;
                wakeCaller = awaited_ == index;
            } else {
                slot = Slot{};  // passed over meanwhile: the result is not kept
                // Its place may be what another worker waits for.
                if (CanClaim()) WakeWorkers(1);
            }
        }
        if (wakeCaller) finished_.notify_one();
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
    const auto ready = [&] {
        const Slot& slot = SlotOf(found);
        const bool claimed = slot.index == found;
        return (claimed && slot.done) || (!claimed && (working_ == 0 || stopping_));
    };
    if (!ready()) {
        // Not run yet: a worker that waits for room must not wait for a whole batch now.
        if (CanClaim()) WakeWorkers(count_ - next_);
        awaited_ = found;
        finished_.wait(lock, ready);
        awaited_ = kNone;
    }
    cursor_ = found + 1;
    std::optional<Outcome> taken;
    Slot& slot = SlotOf(found);
    if (slot.index == found) {
        taken = std::move(slot.outcome);
        slot = Slot{};
    }
    // Otherwise no worker is left to run it: it is the caller's (cursor_ is past it already).
    if (CanClaim()) {
        const std::size_t room = std::min(count_, cursor_ + slots_.size()) - next_;
        if (room >= wakeRoom_ || room == count_ - next_) WakeWorkers(room);
    }
    return taken;
}

}  // namespace kitra::ado
