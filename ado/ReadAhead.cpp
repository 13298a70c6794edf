#include "ado/ReadAhead.h"

#include <algorithm>
#include <utility>

#include "ado/Connection.h"

namespace kitra::ado {

ReadAheadRunner::ReadAheadRunner(Link link, std::vector<std::string> statements, std::size_t connections,
                     std::size_t window)
    : link_(std::move(link)),
      statements_(std::move(statements)),
      window_(std::max<std::size_t>(window, 1)),
      slots_(statements_.size()),
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
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] {
                next_ = std::max(next_, cursor_);
                return stopping_ || next_ >= statements_.size() || next_ < cursor_ + window_;
            });
            if (stopping_ || next_ >= statements_.size()) break;
            index = next_++;
            slots_[index].claimed = true;
        }
        Outcome outcome;
        try {
            outcome.rows = connection.ReadAll(statements_[index]);
        } catch (const odbc::LinkFailure&) {
            outcome.error = std::current_exception();
            outcome.linkLost = true;
        } catch (...) {
            outcome.error = std::current_exception();
        }
        const bool linkLost = outcome.linkLost;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            // A result the caller has passed over already is not kept.
            if (index >= cursor_) slots_[index].outcome = std::move(outcome);
            slots_[index].done = true;
        }
        changed_.notify_all();
        if (linkLost) break;  // this connection is closed now; the others go on
    }
    leave();
}

std::optional<ReadAheadRunner::Outcome> ReadAheadRunner::Take(const std::string& statement) {
    std::unique_lock<std::mutex> lock(mutex_);
    const std::size_t end = std::min(statements_.size(), cursor_ + window_);
    std::size_t found = cursor_;
    while (found < end && statements_[found] != statement) ++found;
    if (found == end) return std::nullopt;

    // Statements expected before this one were never asked for: their results go.
    for (std::size_t passed = cursor_; passed < found; ++passed) slots_[passed].outcome = Outcome{};
    cursor_ = found;
    changed_.notify_all();
    Slot& slot = slots_[found];
    changed_.wait(lock, [&] { return slot.done || (!slot.claimed && (working_ == 0 || stopping_)); });
    cursor_ = found + 1;
    std::optional<Outcome> taken;
    if (slot.done) {
        taken = std::move(slot.outcome);
        slot.outcome = Outcome{};
    } else {
        // No worker is left to run it: it is the caller's, and no worker may take it later.
        slot.claimed = true;
        next_ = std::max(next_, cursor_);
    }
    lock.unlock();
    changed_.notify_all();
    return taken;
}

}  // namespace kitra::ado
